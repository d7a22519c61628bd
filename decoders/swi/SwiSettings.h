#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// The settings of an Atmel single-wire interface.
class SwiSettings final : public lux::Settings {
public:
    static constexpr std::int32_t usualRate = 230400; ///< bits/s of the serial port that can make the pulses
    enum Export : std::uint32_t { Blocks = 1 };

    SwiSettings();

    lux::ChannelSetting line;
    lux::IntegerSetting bitRate; ///< bits/s; the shortest pulse is one of these bits
};
