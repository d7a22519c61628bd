#include "Outputs.h"

namespace emulator {

namespace {

constexpr std::uint16_t highRange = 0;
constexpr std::uint16_t middleRange = 242;
constexpr std::uint16_t lowRange = 727;
constexpr double fullScale = 3.3; // volts at code 1000
constexpr double fullCode = 1000.0;

} // namespace

double Outputs::Threshold::volts() const
{
    const double converter = double(code) * fullScale / fullCode;
    switch (range) {
    case highRange:
        return converter + 1.2;
    case middleRange:
        return converter - 0.4;
    default:
        return converter - 3.6;
    }
}

void Outputs::powerOn()
{
    m_thresholds = {};
    m_pwms = {};
}

bool Outputs::setThreshold(std::size_t index, std::span<const std::uint8_t> payload)
{
    const auto range = std::uint16_t(readLittle(payload.subspan(2, 2)));
    if (range != highRange && range != middleRange && range != lowRange) {
        return false;
    }
    m_thresholds.at(index) = {std::int16_t(std::uint16_t(readLittle(payload.first(2)))), range, true};
    return true;
}

bool Outputs::setPwm(std::size_t output, std::span<const std::uint8_t> payload)
{
    const auto period = std::uint32_t(readLittle(payload.first(4)));
    const auto high = std::uint32_t(readLittle(payload.subspan(4, 4)));
    if (period == 0 || high > period) {
        return false;
    }
    Pwm &pwm = m_pwms.at(output);
    pwm.period = period;
    pwm.high = high;
    pwm.set = true;
    return true;
}

void Outputs::enablePwm(std::uint8_t bits)
{
    m_pwms[0].enabled = (bits & 1) != 0;
    m_pwms[1].enabled = (bits & 2) != 0;
}

} // namespace emulator
