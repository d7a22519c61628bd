#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// Which codes a keyboard sends for its keys.
enum class Ps2CodeSet : std::uint8_t { One = 1, Two, Three };

/// The settings of a PS/2 port.
class Ps2Settings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Keys = 1 };

    Ps2Settings();

    lux::ChannelSetting clock;
    lux::ChannelSetting data;
    lux::ChoiceSetting<Ps2CodeSet> codeSet;
};
