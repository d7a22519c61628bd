#include "CanSettings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace {

constexpr std::int64_t thousand = 1000;
constexpr std::int64_t samplesForPoint = 4; ///< a bit; with fewer a sample point says nothing
constexpr std::int64_t enoughSamples = 8;   ///< a bit; with these one way to look at it is enough
constexpr double leastSamplePoint = 50.0;
constexpr double mostSamplePoint = 95.0;

} // namespace

CanSettings::CanSettings()
    : rx(*this, "can_rx", "CAN", "The line to decode: RXD of a transceiver, or CAN L"),
      baudrate(*this, "baudrate", "Bit rate (bits/s)", "0 finds the rate from the edges of the capture",
               {.least = 0, .most = highestRate}, 0),
      dataBaudrate(*this, "data_baudrate", "Data bit rate (bits/s)",
                   "Of CAN FD frames that switch the bit rate; 0 finds it from the capture",
                   {.least = 0, .most = highestRate}, 0),
      samplePoint(*this, "sample_point", "Sample point (%)", "Where a bit is looked at, 50 to 95", "75"),
      invert(*this, "invert", "Polarity", "Inverted", "A dominant bit is high, as on CAN H")
{
    addExport(CandumpLog, "Frames as a candump log", "Log file", "log");
    addExport(Pcap, "Frames for a packet analyzer", "Packet capture", "pcap");
}

std::int64_t CanSettings::samplePointThousandths() const
{
    std::string_view text = samplePoint.value();
    const bool hasSign = !text.empty() && text.back() == '%';
    text.remove_suffix(hasSign ? 1 : 0);
    double percent = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), percent);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (!hasSign && percent < 1.0) {
        percent *= 100.0; // "0.875"
    }
    if (!isNumber || !(percent >= leastSamplePoint && percent <= mostSamplePoint)) {
        return 0;
    }
    return std::llround(percent * 10.0);
}

CanBitTimes CanSettings::bitTimes(const CanRates &rates) const
{
    const std::int64_t point = samplePointThousandths();
    const std::int64_t jump = thousand - point; // as much as phase segment 2 is long (11.3.1.3)
    return {.nominal = CanTiming(rates.sample, rates.nominal, point, jump, point),
            .data = CanTiming(rates.sample, rates.data, point, jump, point),
            .dominantHigh = invert};
}

/// With few samples a bit an edge is seen up to half a bit late, and each synchronisation brings that error anew. So
/// bits are looked at half a sample before and behind their middles, with all edges and with that of SOF alone: what
/// the clocks differ by is less within a frame. The check proves which of them tells the bits; with the fewest samples
/// a fit through the edges of these then tells where the acknowledgement and the end of the frame are, which no check
/// proves: so the order in which they are tried does not matter.
std::vector<CanBitTimes> CanSettings::lookTimes(const CanRates &rates) const
{
    std::vector<CanBitTimes> times;
    const std::int64_t fastest = std::max(rates.nominal, rates.data);
    const bool isCoarse = rates.sample < samplesForPoint * fastest;
    if (!isCoarse) {
        times.push_back(bitTimes(rates));
    }
    if (rates.sample >= enoughSamples * fastest) {
        return times;
    }
    for (const std::int64_t jump : {thousand / 2, std::int64_t(0)}) {
        for (const std::int64_t side : {-1, 1}) {
            const auto timing = [&](std::int64_t rate) {
                const std::int64_t halfSample = thousand / 2 * rate / rates.sample;
                return CanTiming(rates.sample, rate, thousand / 2 + side * halfSample, jump, samplePointThousandths());
            };
            times.push_back({.nominal = timing(rates.nominal), .data = timing(rates.data), .dominantHigh = invert});
            if (isCoarse) {
                times.back().fitted = CanTiming(rates.sample, rates.nominal, thousand / 2, thousand / 2, thousand / 2);
            }
        }
    }
    return times;
}

std::string CanSettings::check() const
{
    if (samplePointThousandths() == 0) {
        return "The sample point is a number from 50 to 95";
    }
    if (baudrate.value() != 0 && dataBaudrate.value() != 0 && dataBaudrate.value() < baudrate.value()) {
        return "The data bit rate must not be lower than the bit rate";
    }
    return {};
}
