#pragma once

#include "AnalogInput.h"

namespace emulator {

/// A generated analog signal, as a function generator makes it. All begin at the middle or the bottom of their swing.
class AnalogWave : public AnalogInput {
public:
    enum class Kind {
        Flat,
        Sine,
        Square, ///< half of each period high; its edges are those of a low-pass, a hundredth of the period long
        Ramp,   ///< nine tenths of the period straight up, a tenth straight down
        Noise   ///< nothing but noise, of `peakToPeak`
    };

    struct Settings {
        Kind kind = Kind::Flat;
        double frequency = 100e3; ///< Hz
        double peakToPeak = 3;    ///< volts
        double offset = 0;        ///< volts, of the middle
        double noise = 0;         ///< volts from peak to peak, added
    };

    explicit AnalogWave(const Settings &settings, std::uint32_t seed = 1);

    [[nodiscard]] double voltsAt(const SampleMoment &moment) override;

private:
    Settings m_settings;
    Noise m_noise;
};

} // namespace emulator
