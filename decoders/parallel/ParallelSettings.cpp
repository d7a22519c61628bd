#include "ParallelSettings.h"

#include "common/ChannelList.h"

using lux::Presence;

namespace {

constexpr std::size_t mostAddressLines = 64;

} // namespace

ParallelSettings::ParallelSettings()
    : clk(*this, "clk", "Clock", "The line at whose edges words are taken; without it each change is a word",
          Presence::Optional),
      enable(*this, "enable", "Enable", "Words count while this line is active", Presence::Optional),
      data(*this, lux::BusLineSettings::most),
      clockEdge(*this, "clock_edge", "Clock edge", "The edge of the clock at which a word is taken",
                {{int(ClockEdge::Rising), "rising", "Rising"},
                 {int(ClockEdge::Falling), "falling", "Falling"},
                 {int(ClockEdge::Either), "either|both", "Either", "Double data rate"}},
                ClockEdge::Rising),
      enableLevel(
          *this, "enable_polarity", "Enable is active", "The level of the enable line at which words count",
          {{int(EnableLevel::Low), "low|active-low|0", "Low"}, {int(EnableLevel::High), "high|active-high|1", "High"}},
          EnableLevel::Low),
      settleTime(*this, "settle_time", "Settling time (ns)",
                 "Without a clock: a word counts when no line has changed for so long; 0 for every change", {}, 0),
      addressLines(*this, "a", "Address lines",
                   "Channels with an address that belongs to each word, from the lowest bit: 8+9+10 or 8-15")
{
    addExport(Words, "Words", "Binary file", "bin");
}

std::vector<Channel> ParallelSettings::address() const
{
    return lux::channelList(addressLines.value()).value_or(std::vector<Channel>());
}

std::string ParallelSettings::check() const
{
    if (data.width() == 0) {
        return "Choose a channel for one data line at least";
    }
    const auto channels = lux::channelList(addressLines.value());
    if (!channels || channels->size() > mostAddressLines) {
        return "Address lines are channel numbers, such as 8+9+10 or 8-15";
    }
    return {};
}
