#include "ParallelSettings.h"

#include <charconv>
#include <string_view>

using lux::Presence;

namespace {

constexpr std::size_t mostAddressLines = 64;

/// The numbers of a list "8+9+10". @return false for anything else
bool readList(std::string_view text, std::vector<Channel> &channels)
{
    while (!text.empty()) {
        std::uint32_t number = 0;
        const char *end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || (stop != end && (*stop != '+' || stop + 1 == end)) ||
            channels.size() == mostAddressLines) {
            return false;
        }
        channels.emplace_back(0, number);
        text.remove_prefix(std::size_t(stop - text.data()) + (stop == end ? 0 : 1));
    }
    return true;
}

} // namespace

ParallelSettings::ParallelSettings()
    : clk(*this, "clk", "Clock", "The line at whose edges words are taken; without it each change is a word",
          Presence::Optional),
      enable(*this, "enable", "Enable", "Words count while this line is active", Presence::Optional),
      data(*this, lux::BusLineSettings::most),
      clockEdge(*this, "clock_edge", "Clock edge", "The edge of the clock at which a word is taken",
                {{int(ClockEdge::Rising), "rising", "Rising"},
                 {int(ClockEdge::Falling), "falling", "Falling"},
                 {int(ClockEdge::Either), "either", "Either", "Double data rate"}},
                ClockEdge::Rising),
      enableLevel(*this, "enable_polarity", "Enable is active", "The level of the enable line at which words count",
                  {{int(EnableLevel::Low), "low", "Low"}, {int(EnableLevel::High), "high", "High"}}, EnableLevel::Low),
      settleTime(*this, "settle_time", "Settling time (ns)",
                 "Without a clock: a word counts when no line has changed for so long; 0 for every change", {}, 0),
      addressLines(*this, "a", "Address lines",
                   "Channels with an address that belongs to each word, from the lowest bit: 8+9+10")
{
    addExport(Words, "Words", "Binary file", "bin");
}

std::vector<Channel> ParallelSettings::address() const
{
    std::vector<Channel> channels;
    if (!readList(addressLines.value(), channels)) {
        channels.clear();
    }
    return channels;
}

std::string ParallelSettings::check() const
{
    if (data.width() == 0) {
        return "Choose a channel for one data line at least";
    }
    std::vector<Channel> channels;
    if (!readList(addressLines.value(), channels)) {
        return "Address lines are channel numbers with + between them, such as 8+9+10";
    }
    return {};
}
