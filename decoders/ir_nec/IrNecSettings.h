#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// The level of the line while light is received.
enum class IrPolarity : std::uint8_t { Auto, Low, High };

/// Whether the light's carrier is on the line, or a receiver has taken it away.
enum class IrCarrier : std::uint8_t { Auto, Off, On };

/// The settings of an infrared receiver's line.
class IrNecSettings final : public lux::Settings {
public:
    IrNecSettings();

    lux::ChannelSetting ir;
    lux::ChoiceSetting<IrPolarity> polarity;
    lux::ChoiceSetting<IrCarrier> carrier;
    lux::IntegerSetting tolerance; ///< %
};
