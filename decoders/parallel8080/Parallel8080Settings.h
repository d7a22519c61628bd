#pragma once

#include "common/StrobedBus.h"

#include <string>

/// The settings of a bus with a strobe for writing and one for reading.
class Parallel8080Settings final : public lux::Settings {
public:
    static constexpr unsigned mostLines = 16;

    Parallel8080Settings();

    lux::ChannelSetting cs;
    lux::ChannelSetting rs;
    lux::ChannelSetting wr;
    lux::ChannelSetting rd;
    lux::BusLineSettings data;
    lux::NumberListSetting width; ///< bits, 0 for those that are there
    lux::ChoiceSetting<lux::ActiveLevel> csPolarity;
    lux::ChoiceSetting<lux::ActiveLevel> strobePolarity;

    /// The bits of a word.
    [[nodiscard]] unsigned bits() const;

protected:
    [[nodiscard]] std::string check() const override;
};
