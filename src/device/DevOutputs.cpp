#include "device/DevOutputs.h"

#include <cmath>

PwmCounts DevOutputs::takePwm(int output, double frequ, double duty, std::int64_t clock)
{
    const auto index = std::size_t(output);
    // fmax and fmin, unlike clamp, turn what is no number into a limit.
    pwmFrequ[index] = std::fmin(std::fmax(frequ, 0.1), 2e7);
    pwmDuty[index] = std::fmin(std::fmax(duty, 0.0), 100.0);
    if (clock <= 0) {
        return {};
    }
    const PwmCounts counts = pwmCounts(clock, pwmFrequ[index], pwmDuty[index]);
    pwmFrequ[index] = counts.frequ;
    pwmDuty[index] = counts.duty;
    return counts;
}

std::vector<DevOrder> DevOutputs::takeStart(std::int64_t clock)
{
    const PwmCounts first = takePwm(0, 1000.0, 50.0, clock);
    const PwmCounts second = takePwm(1, 100000.0, 50.0, clock);
    pwmEnable = {true, true};
    return {DevOrder::enablePwm(false, false), DevOrder::setPwm(0, first), DevOrder::setPwm(1, second),
            DevOrder::enablePwm(true, true)};
}
