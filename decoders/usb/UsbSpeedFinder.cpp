#include "UsbSpeedFinder.h"

#include "UsbLine.h"

#include <algorithm>

/// The J behind an SE0 that is longer than a skew tells the speed (7.1.5, 7.1.13.2); without any the level that lasts
/// longest does.
UsbSpeedFinder::Found UsbSpeedFinder::find(const lux::ChannelReader &dp, const lux::ChannelReader &dm)
{
    constexpr int mostChanges = 20000;
    constexpr lux::Sample leastSe0 = 2; // samples
    UsbLine line(dp, dm, true);
    std::int64_t full = 0;
    std::int64_t low = 0;
    lux::Sample longestFull = 0;
    lux::Sample longestLow = 0;
    for (int i = 0; i < mostChanges; ++i) {
        const UsbState before = line.state();
        const lux::Sample length = line.peekChange() - line.begin();
        if (before == UsbState::J) {
            longestFull = std::max(longestFull, length);
        } else if (before == UsbState::K) {
            longestLow = std::max(longestLow, length);
        }
        if (!line.hasChange()) {
            break;
        }
        line.next();
        if (before == UsbState::Se0 && length >= leastSe0) {
            full += line.state() == UsbState::J;
            low += line.state() == UsbState::K;
        }
    }
    if (full != low) {
        return full > low ? Found::Full : Found::Low;
    }
    if (longestFull != longestLow) {
        return longestFull > longestLow ? Found::Full : Found::Low;
    }
    return Found::Nothing;
}
