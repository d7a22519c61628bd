#pragma once

#include "LcdInstructions.h"
#include "common/BusLines.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>
#include <vector>

/// The settings of a character or graphic display.
class LcdSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { ShownText = 1 };

    LcdSettings();

    lux::ChannelSetting rs;
    lux::ChannelSetting rw;
    lux::ChannelSetting e;
    lux::ChannelSetting row; ///< the first of data lines that lie in a row
    lux::BusLineSettings data;
    lux::ChannelSetting cs1;
    lux::ChannelSetting cs2;
    lux::ChoiceSetting<LcdController> controller;
    lux::NumberListSetting width; ///< lines, 0 for those that are there

    /// The lines of the bus, four or eight, the lowest first.
    [[nodiscard]] std::vector<Channel> bus() const;

protected:
    [[nodiscard]] std::string check() const override;
    [[nodiscard]] bool channelsMayBeShared() const override { return true; }

private:
    [[nodiscard]] unsigned lines() const;
};
