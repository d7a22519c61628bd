#pragma once

#include "device/DevOrder.h"

#include <array>
#include <cstdint>
#include <vector>

/// The two PWM outputs as values: what was chosen, limited, and what an instrument really makes of it.
struct DevOutputs {
    std::array<bool, 2> pwmEnable{};
    std::array<double, 2> pwmFrequ{}; ///< Hz, as really produced
    std::array<double, 2> pwmDuty{};  ///< percent, as really produced

protected:
    /// Takes an output's frequency, limited to 0.1 to 2e7 Hz, and duty, limited to 0 to 100 percent; with a clock what
    /// it can produce of them.
    /// @param output  0 or 1
    /// @param clock  Hz; 0 when none is known
    /// @return the counts for an instrument; none without a clock
    PwmCounts takePwm(int output, double frequ, double duty, std::int64_t clock);
    /// Takes what both outputs start with: 1 kHz and 100 kHz, at half duty, running.
    /// @return what an instrument of that clock is told for it
    std::vector<DevOrder> takeStart(std::int64_t clock);
};
