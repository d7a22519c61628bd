#pragma once

#include "common/LinePair.h"

#include <cstdint>

/// What D+ and D- are together (Universal Serial Bus Specification 2.0, table 7-2).
enum class UsbState : std::uint8_t { Se0, J, K, Se1 };

/// Both lines of a bus: the first is the one that is high in J.
class UsbLine : public lux::LinePair {
public:
    /// @param fullSpeed  J is D+ high; at low speed it is D- high
    UsbLine(const lux::ChannelReader &dp, const lux::ChannelReader &dm, bool fullSpeed)
        : LinePair(fullSpeed ? dp : dm, fullSpeed ? dm : dp)
    {}

    [[nodiscard]] UsbState state() const { return UsbState(levels()); }
};
