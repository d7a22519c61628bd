#include "AnalogWave.h"

#include <numbers>

namespace emulator {

namespace {

/// The level of a square wave at `phase`, 0 to 1: low first. -0.5 to 0.5.
double squareAt(double phase)
{
    constexpr double timeConstant = 1.0 / 200; // of the period: from 10 % to 90 % in 1.1 hundredths
    const bool high = phase >= 0.5;
    const double since = high ? phase - 0.5 : phase;
    const double left = std::exp(-since / timeConstant); // of the step
    return high ? 0.5 - left : left - 0.5;
}

double rampAt(double phase)
{
    constexpr double rising = 0.9;
    return phase < rising ? phase / rising - 0.5 : 0.5 - (phase - rising) / (1 - rising);
}

} // namespace

AnalogWave::AnalogWave(const Settings &settings, std::uint32_t seed)
    : m_settings(settings), m_noise(settings.kind == Kind::Noise ? settings.peakToPeak : settings.noise, seed)
{}

double AnalogWave::voltsAt(const SampleMoment &moment)
{
    const double periods = moment.seconds * m_settings.frequency;
    const double phase = periods - std::floor(periods);
    double swing = 0;
    switch (m_settings.kind) {
    case Kind::Flat:
    case Kind::Noise:
        break;
    case Kind::Sine:
        swing = 0.5 * std::sin(2 * std::numbers::pi * phase);
        break;
    case Kind::Square:
        swing = squareAt(phase);
        break;
    case Kind::Ramp:
        swing = rampAt(phase);
        break;
    }
    return m_settings.offset + m_settings.peakToPeak * swing + m_noise.next();
}

} // namespace emulator
