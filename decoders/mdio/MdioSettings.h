#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// The settings of a management interface.
class MdioSettings final : public lux::Settings {
public:
    MdioSettings();

    lux::ChannelSetting clock;
    lux::ChannelSetting data;
};
