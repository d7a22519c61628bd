#pragma once

#include <cstdint>

/// The times of a speed in nanoseconds (Maxim application note 126, table 2; DS18B20 and DS2431 data sheets).
struct OneWireTimes {
    std::int64_t mostOne;      ///< tRDV: at a 1 the line is high again when it is looked at
    std::int64_t slot;         ///< tSLOT, the shortest
    std::int64_t mostZero;     ///< tLOW0, the longest
    std::int64_t leastReset;   ///< tRSTL
    std::int64_t presenceLook; ///< from the end of a reset until a device must hold the line low
    std::int64_t mostPresence; ///< tPDL, the longest
};

namespace oneWire {

inline constexpr OneWireTimes standardTimes{.mostOne = 15000,
                                            .slot = 60000,
                                            .mostZero = 120000,
                                            .leastReset = 480000,
                                            .presenceLook = 70000,
                                            .mostPresence = 240000};
inline constexpr OneWireTimes overdriveTimes{
    .mostOne = 2000, .slot = 6000, .mostZero = 16000, .leastReset = 48000, .presenceLook = 8500, .mostPresence = 24000};
/// Shorter pulses are glitches: the shortest of the protocol is 1 us long.
inline constexpr std::int64_t glitch = 500;
/// A 1 must have three samples at least.
inline constexpr std::int64_t leastSampleRate = 200000; // Hz

enum RomCommand : std::uint8_t {
    ReadRom = 0x33,
    MatchRom = 0x55,
    SkipRom = 0xcc,
    SearchRom = 0xf0,
    AlarmSearch = 0xec,
    OverdriveSkipRom = 0x3c,
    OverdriveMatchRom = 0x69,
    Resume = 0xa5,
};

} // namespace oneWire
