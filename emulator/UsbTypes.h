#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

/// The emulated instrument: what stands at the far end of the USB cable, without a cable.
namespace emulator {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;
constexpr std::uint64_t nanosecondsPerMillisecond = 1'000'000;

enum class Speed { Full, High };

/// The eight bytes that open a control transfer.
struct SetupPacket {
    std::uint8_t requestType = 0;
    std::uint8_t request = 0;
    std::uint16_t value = 0;
    std::uint16_t index = 0;
    std::uint16_t length = 0;

    [[nodiscard]] static SetupPacket fromBytes(std::span<const std::uint8_t, 8> b)
    {
        const auto word = [&b](std::size_t at) { return std::uint16_t(b[at] | b[at + 1] << 8); };
        return {b[0], b[1], word(2), word(4), word(6)};
    }
    [[nodiscard]] bool toHost() const { return (requestType & 0x80) != 0; }
    [[nodiscard]] bool isStandard() const { return (requestType & 0x60) == 0; }
    [[nodiscard]] bool isVendor() const { return (requestType & 0x60) == 0x40; }
    bool operator==(const SetupPacket &) const = default;
};

enum class Outcome {
    Done,    ///< `bytes` were moved
    NotYet,  ///< the end point answers NAK: for bulk reads, ask again later; elsewhere there will be no answer at all
    Stalled, ///< the end point answers STALL
    Failed,  ///< the bus transaction broke
    Gone     ///< no device is attached
};

/// What became of one request to the instrument.
struct Answer {
    Outcome outcome = Outcome::Done;
    std::size_t bytes = 0;
    /// Bulk reads: the host's transfer is complete, because its buffer is full or a short packet came (0 bytes with
    /// `ends` is a packet of length zero).
    bool ends = false;
    /// Nanoseconds for which the bus holds the answer back.
    std::uint64_t delay = 0;
};

// ---- little-endian numbers, as they stand in all payloads -----------------------------------------------------------

[[nodiscard]] inline std::uint64_t readLittle(std::span<const std::uint8_t> bytes)
{
    std::uint64_t value = 0;
    for (std::size_t i = bytes.size(); i > 0; --i) {
        value = value << 8 | bytes[i - 1];
    }
    return value;
}

inline void writeLittle(std::span<std::uint8_t> bytes, std::uint64_t value)
{
    for (std::uint8_t &byte : bytes) {
        byte = std::uint8_t(value);
        value >>= 8;
    }
}

} // namespace emulator
