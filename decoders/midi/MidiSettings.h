#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// The settings of a MIDI line.
class MidiSettings final : public lux::Settings {
public:
    static constexpr std::int32_t standardRate = 31250; ///< bits/s
    static constexpr std::int32_t highestRate = 4000000;
    enum Export : std::uint32_t { StandardMidiFile = 1 };

    MidiSettings();

    lux::ChannelSetting rx;
    lux::IntegerSetting baudrate; ///< bits/s, 0 to find it
    lux::BoolSetting invert;
};
