#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// The settings of an HDMI CEC line.
class CecSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Messages = 1 };

    CecSettings();

    lux::ChannelSetting line;
};
