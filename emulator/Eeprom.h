#pragma once

#include "ModelFacts.h"

#include <array>
#include <cstdint>
#include <span>

namespace emulator {

/// The identity EEPROM: 256 bytes, 0xFF where nothing was written.
///
/// | Address | Content |
/// |---|---|
/// | 0x08 | identity byte and its complement |
/// | 0x0A | variant byte and its complement |
/// | 0x0C | the identity pair again |
/// | 0x0E | the variant pair again |
/// | 0x10 | identity block: six characters of name, clock in MHz (8 bits), spare, clock and PWM clock in MHz (16 bits)
/// | | 0x20 | hardware version (16 bits) and its complement |
class Eeprom {
public:
    static constexpr std::size_t size = 256;
    static constexpr std::uint8_t identityAt = 0x08;
    static constexpr std::uint8_t blockAt = 0x10;
    static constexpr std::uint8_t versionAt = 0x20;

    Eeprom(const ModelFacts &model, std::uint16_t hardwareVersion);

    /// Both copies of the identity, sound.
    void setIdentity(std::uint8_t identity, std::uint8_t variant);
    void setHardwareVersion(std::uint16_t version);
    /// Makes the first copy of the identity byte disagree with its complement.
    void damageFirstCopy() { m_bytes[identityAt] ^= 0x5A; }
    void damageSecondCopy() { m_bytes[identityAt + 4] ^= 0x5A; }
    /// Every byte random, the same for the same seed.
    void fillWithNoise(std::uint32_t seed);
    [[nodiscard]] std::array<std::uint8_t, size> &bytes() { return m_bytes; }

    /// Bytes from `address` on; behind the last comes the first.
    void read(std::uint16_t address, std::span<std::uint8_t> out) const;

private:
    void setPair(std::size_t at, std::uint8_t value);

    std::array<std::uint8_t, size> m_bytes;
};

} // namespace emulator
