#pragma once

#include "UsbTypes.h"

namespace emulator {

/// The sample block: 16 bytes.
struct SampleConfig {
    static constexpr std::size_t size = 16;

    std::int64_t depth = 0;         ///< samples of the whole capture
    std::int64_t preTrigger = 0;    ///< samples of it before the trigger
    std::uint32_t preMemory = 0;    ///< bytes of memory for them
    std::uint16_t clockDivider = 1; ///< sample rate = clock / divider

    [[nodiscard]] static SampleConfig parse(std::span<const std::uint8_t, size> block);
};

/// The trigger block: four masks of 32 bits, bit i for channel i.
struct TriggerConfig {
    static constexpr std::size_t size = 16;

    std::uint32_t enabled = 0;   ///< channels that are captured
    std::uint32_t takesPart = 0; ///< channels that the trigger looks at
    std::uint32_t level = 0;     ///< of those: by level; the others by edge
    std::uint32_t polarity = 0;  ///< high level, falling edge

    [[nodiscard]] static TriggerConfig parse(std::span<const std::uint8_t, size> block);
    [[nodiscard]] bool none() const { return takesPart == 0; }
    [[nodiscard]] std::uint32_t levelChannels() const { return takesPart & level; }
    [[nodiscard]] std::uint32_t edgeChannels() const { return takesPart & ~level; }
};

} // namespace emulator
