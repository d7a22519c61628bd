#pragma once

#include "UsbTypes.h"

#include <array>

namespace emulator {

/// The registers that drive the pins: the input thresholds and the PWM outputs.
class Outputs {
public:
    struct Threshold {
        std::int16_t code = 0;   ///< of the converter: 3.3 mV a step
        std::uint16_t range = 0; ///< 0, 242 or 727
        bool set = false;

        /// The voltage at the inputs that this stands for.
        [[nodiscard]] double volts() const;
    };
    struct Pwm {
        std::uint32_t period = 0; ///< clocks
        std::uint32_t high = 0;   ///< clocks of them
        bool enabled = false;
        bool set = false;
    };

    void powerOn();
    /// @param index  0 and 1 for the first and second group of channels
    /// @return false for a range that there is not
    bool setThreshold(std::size_t index, std::span<const std::uint8_t> payload);
    /// @return false for a period of 0 or a high time above the period
    bool setPwm(std::size_t output, std::span<const std::uint8_t> payload);
    void enablePwm(std::uint8_t bits);

    [[nodiscard]] const Threshold &threshold(std::size_t index) const { return m_thresholds.at(index); }
    [[nodiscard]] const Pwm &pwm(std::size_t output) const { return m_pwms.at(output); }

private:
    std::array<Threshold, 2> m_thresholds;
    std::array<Pwm, 2> m_pwms;
};

} // namespace emulator
