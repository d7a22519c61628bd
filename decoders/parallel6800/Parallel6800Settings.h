#pragma once

#include "common/StrobedBus.h"

#include <string>

/// The settings of a bus with a clock of accesses and a line for their direction.
class Parallel6800Settings final : public lux::Settings {
public:
    static constexpr unsigned mostLines = 16;

    Parallel6800Settings();

    lux::ChannelSetting cs;
    lux::ChannelSetting rs;
    lux::ChannelSetting rw;
    lux::ChannelSetting e;
    lux::BusLineSettings data;
    lux::NumberListSetting width; ///< bits, 0 for those that are there
    lux::ChoiceSetting<lux::ActiveLevel> csPolarity;
    lux::ChoiceSetting<lux::ActiveLevel> enablePolarity;

    /// The bits of a word.
    [[nodiscard]] unsigned bits() const;

protected:
    [[nodiscard]] std::string check() const override;
};
