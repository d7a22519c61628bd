#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// What breaks a frame (ISO 11898-1:2015, 10.11), or keeps it from being one.
enum class CanFault : std::uint8_t {
    None,
    Stuff,             ///< six equal bits where the sixth must be another
    FixedStuff,        ///< a fixed stuff bit of a CAN FD check that equals the bit before it
    CrcDelimiter,      ///< dominant
    AckDelimiter,      ///< dominant
    EndOfFrame,        ///< dominant within the first six bits
    ProtocolException, ///< the bit reserved for later formats is recessive (10.9.6)
    Glitch,            ///< SOF is recessive at its sample point
    CaptureEnd,
};

/// A data or remote frame (ISO 11898-1:2015, 10.4).
struct CanFrame {
    static constexpr std::size_t mostBytes = 64;
    static constexpr std::array<std::uint8_t, 16> lengths = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};

    std::uint32_t id = 0;  ///< 11 or 29 bits
    std::uint32_t crc = 0; ///< as received: 15, 17 or 21 bits
    std::uint8_t dlc = 0;
    bool hasId = false; ///< the arbitration field is whole
    bool extended = false;
    bool remote = false;
    bool fd = false;
    bool rateSwitch = false;
    bool errorPassive = false; ///< ESI
    bool crcRight = false;
    bool stuffCountRight = true;
    bool acknowledged = false;
    bool isWhole = false;    ///< up to and with the CRC delimiter
    std::uint8_t length = 0; ///< bytes of data
    std::array<std::uint8_t, mostBytes> data{};

    /// The bytes that a data length code stands for (10.4.2.4, table 5).
    [[nodiscard]] static std::uint8_t lengthOf(std::uint8_t code, bool isFd)
    {
        return isFd ? lengths[code & 15U] : std::uint8_t(code < 8 ? code : 8);
    }
};
