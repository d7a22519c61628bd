#pragma once

#include "Hidden.h"
#include "corvanlux/analyzer/SimulationChannelDescriptor.h"

#include <vector>

struct LUX_HIDDEN SimulationChannelDescriptor::Private {
    Channel channel;
    bool initialLevel = false;
    bool currentLevel = false;
    std::vector<std::uint32_t> widths;
    SimulationData data; ///< the bounds of `widths`
};
