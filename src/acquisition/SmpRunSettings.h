#pragma once

#include <cstdint>
#include <vector>

/// The settings of one capture of an instrument, taken when it starts: what its threads read while the user may already
/// be changing the next ones.
struct SmpRunSettings {
    bool bytes8 = false;              ///< streams one byte a sample; else words of 16 samples of the channels in turn
    std::int64_t frequency = 0;       ///< Hz
    std::int64_t depth = 0;           ///< samples
    std::int64_t preTrig = 0;         ///< samples to keep before the trigger
    int trgPosition = 0;              ///< percent of the depth before the trigger
    std::int32_t memSize = 0;         ///< bytes of the device's memory, 0 for a device that streams
    std::vector<std::uint8_t> enable; ///< one flag per digital channel
    std::vector<std::int32_t> trig;   ///< smpTrigCode of each digital channel
};
