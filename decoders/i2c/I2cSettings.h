#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// How a device address is shown.
enum class I2cAddressFormat : std::uint8_t {
    SevenBits, ///< without the direction: 0x50
    EightBits, ///< as the byte on the wire: 0xA0, 0xA1
};

/// The settings of an I2C bus.
class I2cSettings final : public lux::Settings {
public:
    /// Spikes that a fast-mode input does not see (UM10204, table 10, t_SP), ns.
    static constexpr std::int32_t usualSpike = 50;
    enum Export : std::uint32_t { DataBytes = 1, Messages = 2 };

    I2cSettings();

    lux::ChannelSetting scl;
    lux::ChannelSetting sda;
    lux::ChoiceSetting<I2cAddressFormat> addressFormat;
    lux::IntegerSetting glitchFilter; ///< ns
};
