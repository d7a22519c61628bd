#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// The settings of a UNI/O bus.
class UnioSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Messages = 1 };

    UnioSettings();

    lux::ChannelSetting line;
};
