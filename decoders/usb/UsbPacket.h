#pragma once

#include "common/Crc.h"

#include <array>
#include <corvanlux/analyzer/ChannelReader.h>
#include <cstddef>
#include <cstdint>
#include <span>

// Packets of USB (Universal Serial Bus Specification 2.0, 8.3 and 8.4).

namespace usb {

// Packet identifiers (table 8-1): four bits and their complement.
inline constexpr std::uint8_t out = 0xe1;
inline constexpr std::uint8_t in = 0x69;
inline constexpr std::uint8_t startOfFrame = 0xa5;
inline constexpr std::uint8_t setup = 0x2d;
inline constexpr std::uint8_t data0 = 0xc3;
inline constexpr std::uint8_t data1 = 0x4b;
inline constexpr std::uint8_t data2 = 0x87;
inline constexpr std::uint8_t mdata = 0x0f;
inline constexpr std::uint8_t ack = 0xd2;
inline constexpr std::uint8_t nak = 0x5a;
inline constexpr std::uint8_t stall = 0x1e;
inline constexpr std::uint8_t nyet = 0x96;
inline constexpr std::uint8_t preamble = 0x3c;
inline constexpr std::uint8_t split = 0x78;
inline constexpr std::uint8_t ping = 0xb4;

inline constexpr std::uint8_t sync = 0x80; ///< KJKJKJKK, the first bit the lowest (7.1.10)

// The checks (8.3.5): sent highest bit first, of bits that come lowest first.
inline constexpr lux::CrcModel crc5 = {
    .width = 5, .polynomial = 0x05, .initial = 0x1f, .lsbFirst = true, .finalXor = 0x1f};
inline constexpr lux::CrcModel crc16 = {
    .width = 16, .polynomial = 0x8005, .initial = 0xffff, .lsbFirst = true, .finalXor = 0xffff};

/// The check of an address and endpoint, or of a frame number: 11 bits.
[[nodiscard]] inline std::uint32_t checkOfToken(std::uint32_t bits)
{
    lux::Crc<crc5> crc;
    for (unsigned i = 0; i < 11; ++i) {
        crc.addBit((bits >> i & 1U) != 0);
    }
    return crc.value();
}

enum class Kind : std::uint8_t { Unknown, Token, Frame, Data, Handshake, Preamble, Split };

/// The kind of a packet; unknown when the identifier's check bits are wrong.
[[nodiscard]] constexpr Kind kindOf(std::uint8_t pid)
{
    switch (pid) {
    case out:
    case in:
    case setup:
    case ping:
        return Kind::Token;
    case startOfFrame:
        return Kind::Frame;
    case data0:
    case data1:
    case data2:
    case mdata:
        return Kind::Data;
    case ack:
    case nak:
    case stall:
    case nyet:
        return Kind::Handshake;
    case preamble:
        return Kind::Preamble;
    case split:
        return Kind::Split;
    default:
        return Kind::Unknown;
    }
}

} // namespace usb

/// What ended a packet.
enum class UsbEnd : std::uint8_t {
    EndOfPacket,
    StuffError, ///< seven ones in a row (7.1.9)
    Babble,     ///< more bytes than any packet has
    Preamble,   ///< a PRE has no end of packet
    CaptureEnd,
};

/// A packet as it was received.
struct UsbPacket {
    static constexpr std::size_t mostData = 1023;
    static constexpr std::size_t mostBytes = 1 + mostData + 2;

    lux::Sample first = 0; ///< the edge to K
    lux::Sample last = 0;  ///< the last sample of the end of packet, or of what breaks the packet
    UsbEnd end = UsbEnd::EndOfPacket;
    bool isLowSpeed = false;
    bool hadSe1 = false;
    unsigned bits = 0;     ///< all of them, with those of the sync pattern and without stuff bits
    std::uint8_t sync = 0; ///< the first eight bits
    std::array<std::uint8_t, mostBytes> bytes{};

    /// Whole bytes behind the sync pattern.
    [[nodiscard]] std::size_t count() const { return bits < 16 ? 0 : bits / 8 - 1; }
    [[nodiscard]] std::uint8_t pid() const { return bytes[0]; }
    [[nodiscard]] usb::Kind kind() const { return count() == 0 ? usb::Kind::Unknown : usb::kindOf(pid()); }
    [[nodiscard]] std::uint32_t tokenBits() const { return std::uint32_t(bytes[1]) | std::uint32_t(bytes[2]) << 8; }
    [[nodiscard]] std::uint8_t address() const { return std::uint8_t(tokenBits() & 0x7fU); }
    [[nodiscard]] std::uint8_t endpoint() const { return std::uint8_t(tokenBits() >> 7 & 15U); }
    /// What a data packet carries.
    [[nodiscard]] std::span<const std::uint8_t> data() const
    {
        return count() < 3 ? std::span<const std::uint8_t>() : std::span(bytes.data() + 1, count() - 3);
    }
    /// Tokens have 5 bits of check, data has 16; a handshake has none (8.3.5).
    [[nodiscard]] bool isCheckRight() const
    {
        switch (kind()) {
        case usb::Kind::Token:
        case usb::Kind::Frame:
            return count() == 3 && usb::checkOfToken(tokenBits()) == tokenBits() >> 11;
        case usb::Kind::Data: {
            if (count() < 3) {
                return false;
            }
            const std::uint32_t sent = std::uint32_t(bytes[count() - 2]) | std::uint32_t(bytes[count() - 1]) << 8;
            return lux::Crc<usb::crc16>::of(data()) == sent;
        }
        default:
            return true;
        }
    }
    /// Nothing in it tells an error.
    [[nodiscard]] bool isRight() const
    {
        return (end == UsbEnd::EndOfPacket || end == UsbEnd::Preamble) && sync == usb::sync &&
               kind() != usb::Kind::Unknown && isCheckRight();
    }
};
