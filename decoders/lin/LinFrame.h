#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// Over which bytes a checksum is (LIN 2.2A, 2.3.1.5).
enum class LinChecksum : std::uint8_t { Classic, Enhanced };

/// A header with the answer to it, as it came.
struct LinFrame {
    static constexpr std::size_t mostData = 8;
    static constexpr std::uint8_t masterRequest = 0x3c;
    static constexpr std::uint8_t slaveResponse = 0x3d;

    std::uint8_t pid = 0; ///< the protected identifier: six bits and two of parity
    std::array<std::uint8_t, mostData + 1> bytes{};
    std::size_t count = 0; ///< of the answer, the checksum included
    bool framingError = false;

    [[nodiscard]] std::uint8_t id() const { return pid & 0x3fU; }
    [[nodiscard]] bool isParityRight() const { return pid == protectedId(id()); }
    /// The last byte is a checksum.
    [[nodiscard]] bool hasChecksum() const { return count >= 2; }
    [[nodiscard]] std::span<const std::uint8_t> data() const
    {
        return {bytes.data(), hasChecksum() ? count - 1 : count};
    }
    [[nodiscard]] std::uint8_t checksum() const { return hasChecksum() ? bytes[count - 1] : std::uint8_t(0); }
    [[nodiscard]] bool isRight(LinChecksum kind) const
    {
        return hasChecksum() && checksum() == checksumOf(kind, pid, data());
    }

    /// An identifier with its parity bits (LIN 2.2A, 2.3.1.3).
    [[nodiscard]] static constexpr std::uint8_t protectedId(std::uint8_t id)
    {
        const unsigned p0 = unsigned(id) ^ unsigned(id) >> 1 ^ unsigned(id) >> 2 ^ unsigned(id) >> 4;
        const unsigned p1 = ~(unsigned(id) >> 1 ^ unsigned(id) >> 3 ^ unsigned(id) >> 4 ^ unsigned(id) >> 5);
        return std::uint8_t(id | (p0 & 1U) << 6 | (p1 & 1U) << 7);
    }
    /// The inverted sum with the carries added, over the data, and over the protected identifier if it is enhanced.
    [[nodiscard]] static constexpr std::uint8_t checksumOf(LinChecksum kind, std::uint8_t pid,
                                                           std::span<const std::uint8_t> data)
    {
        unsigned sum = kind == LinChecksum::Enhanced ? pid : 0U;
        for (const std::uint8_t byte : data) {
            sum += byte;
            sum = sum > 0xffU ? sum - 0xffU : sum;
        }
        return std::uint8_t(~sum);
    }
};
