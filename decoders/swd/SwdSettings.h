#pragma once

#include <corvanlux/analyzer/Decoder.h>

/// The settings of a serial wire debug port: its two lines.
class SwdSettings final : public lux::Settings {
public:
    SwdSettings();

    lux::ChannelSetting swclk;
    lux::ChannelSetting swdio;
};
