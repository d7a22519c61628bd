#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// The settings of a DMX512-A line.
class DmxSettings final : public lux::Settings {
public:
    static constexpr std::int32_t standardRate = 250000; ///< bits/s
    static constexpr std::int32_t highestRate = 4000000;
    enum Export : std::uint32_t { Packets = 1 };

    DmxSettings();

    lux::ChannelSetting rx;
    lux::IntegerSetting baudrate; ///< bits/s, 0 to find it
    lux::BoolSetting invert;
};
