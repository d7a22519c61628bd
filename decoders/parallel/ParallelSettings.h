#pragma once

#include "common/BusLines.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>
#include <vector>

/// At which edges of the clock words are taken.
enum class ClockEdge : std::uint8_t { Rising, Falling, Either };

/// The level at which words count.
enum class EnableLevel : std::uint8_t { Low, High };

/// The settings of a bus of up to 32 lines, with a clock or without.
class ParallelSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Words = 1 };

    ParallelSettings();

    lux::ChannelSetting clk;
    lux::ChannelSetting enable;
    lux::BusLineSettings data;
    lux::ChoiceSetting<ClockEdge> clockEdge;
    lux::ChoiceSetting<EnableLevel> enableLevel;
    lux::IntegerSetting settleTime; ///< ns, without a clock
    lux::TextSetting addressLines;  ///< "8+9+10", the lowest bit first

    /// The channels of the address lines; those that are no number are left out.
    [[nodiscard]] std::vector<Channel> address() const;

protected:
    [[nodiscard]] std::string check() const override;
};
