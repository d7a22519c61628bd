#pragma once

#include "PulseResults.h"
#include "PulseSettings.h"

#include <corvanlux/analyzer/Decoder.h>

/// The pulses of one line with their widths: the smallest decoder that is complete.
class PulseAnalyzer final : public lux::Decoder<PulseSettings, PulseResults> {
public:
    static constexpr const char *name = "Pulse Widths";
    PulseAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;
};
