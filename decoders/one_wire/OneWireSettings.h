#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// Which speeds a bus may have.
enum class OneWireSpeed : std::uint8_t {
    Auto,      ///< standard until a command or the traffic itself tells otherwise
    Standard,  ///< never overdrive, whatever is sent
    Overdrive, ///< in overdrive from the capture's start until a reset at standard speed
};

/// The settings of a 1-Wire bus.
class OneWireSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Messages = 1 };

    OneWireSettings();

    lux::ChannelSetting line;
    lux::ChoiceSetting<OneWireSpeed> speed;
};
