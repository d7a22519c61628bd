#pragma once

#include "LogicSignal.h"

#include <algorithm>
#include <cmath>

namespace emulator {

// The converter of the instruments with analog channels: byte -128 is -5 V, byte 127 is 5 V.
constexpr double lowestVolts = -5.0;
constexpr double highestVolts = 5.0;
constexpr double lowestByte = -128.0;
constexpr double highestByte = 127.0;

/// The converter's byte for `volts`; what lies outside its range, or is no number, is cut.
[[nodiscard]] inline std::int8_t convert(double volts)
{
    if (!(volts > lowestVolts)) {
        return std::int8_t(lowestByte);
    }
    // In the midst of two bytes, as 0 V is, the last digits of a sine must not decide.
    constexpr double roundUp = 0.5 + 1e-9;
    const double share = (std::min(volts, highestVolts) - lowestVolts) / (highestVolts - lowestVolts);
    return std::int8_t(std::floor(share * (highestByte - lowestByte) + lowestByte + roundUp));
}

/// What lies on one analog input. Not thread-safe: an instrument has its own.
class AnalogInput {
public:
    virtual ~AnalogInput() = default;
    AnalogInput() = default;
    AnalogInput(const AnalogInput &) = delete;
    AnalogInput &operator=(const AnalogInput &) = delete;

    [[nodiscard]] virtual double voltsAt(const SampleMoment &moment) = 0;
};

/// Noise of even distribution. Each value is a new one, also for the same moment: two captures are not alike.
class Noise {
public:
    /// @param peakToPeak  volts
    explicit Noise(double peakToPeak, std::uint32_t seed = 1) : m_peakToPeak(peakToPeak), m_state(seed == 0 ? 1 : seed)
    {}

    /// Volts about 0.
    [[nodiscard]] double next()
    {
        // xorshift32 (G. Marsaglia, "Xorshift RNGs", 2003)
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        constexpr double states = 4294967296.0;
        return m_peakToPeak * (double(m_state) / states - 0.5);
    }

private:
    double m_peakToPeak;
    std::uint32_t m_state;
};

} // namespace emulator
