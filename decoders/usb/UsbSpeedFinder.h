#pragma once

#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>

/// What the bus tells of its speed: the level to which it comes back behind each end of packet.
class UsbSpeedFinder {
public:
    enum class Found : std::uint8_t { Nothing, Low, Full };

    /// Looks at the first thousands of changes. Cost: well below a millisecond.
    [[nodiscard]] static Found find(const lux::ChannelReader &dp, const lux::ChannelReader &dm);
};
