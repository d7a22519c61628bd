#pragma once

#include "Hidden.h"
#include "Run.h"
#include "corvanlux/analyzer/Analyzer.h"
#include "corvanlux/analyzer/ChannelReader.h"

#include <functional>
#include <map>
#include <memory>

struct LUX_HIDDEN Analyzer::Private {
    /// Runs `decode` with everything caught that may leave it, then ends the run. Once a run: the outer of two does
    /// nothing more.
    void runGuarded(const std::function<void()> &decode);

    DeviceCollection *device = nullptr;
    const std::int64_t *simulationRate = nullptr; ///< Hz; not null in a simulation
    AnalyzerSettings *settings = nullptr;
    std::unique_ptr<AnalyzerResults> results;
    lux::detail::Run run;
    std::map<std::uint32_t, std::unique_ptr<lux::ChannelReader>> readers; ///< by channel; the worker
    bool ended = false;                                                   ///< the worker

private:
    void guard(const std::function<void()> &decode);
    void end();
};
