#pragma once

#include "BitOrder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace lux {

/// What makes one cyclic redundancy check differ from another, in the terms of R. Williams' "A painless guide to CRC
/// error detection algorithms", section 16.
struct CrcModel {
    unsigned width;           ///< 5 to 32
    std::uint32_t polynomial; ///< without its highest bit
    std::uint32_t initial = 0;
    bool lsbFirst = false; ///< bytes are taken and the check is sent lowest bit first
    std::uint32_t finalXor = 0;
};

/// A cyclic redundancy check, by bytes through a table or bit by bit.
///
/// The register is kept at the end that bits leave from: at bit 31 for the highest bit first, else at bit 0.
template<CrcModel model>
class Crc {
    static_assert(model.width >= 5 && model.width <= 32);

public:
    constexpr void reset() { m_register = start(); }
    constexpr void addByte(std::uint8_t byte)
    {
        if constexpr (model.lsbFirst) {
            m_register = m_register >> 8 ^ table[std::uint8_t(m_register ^ byte)];
        } else {
            m_register = m_register << 8 ^ table[std::uint8_t(m_register >> 24 ^ byte)];
        }
    }
    constexpr void addBytes(std::span<const std::uint8_t> bytes)
    {
        for (const std::uint8_t byte : bytes) {
            addByte(byte);
        }
    }
    constexpr void addBit(bool bit)
    {
        if constexpr (model.lsbFirst) {
            const bool out = ((m_register ^ std::uint32_t(bit)) & 1U) != 0;
            m_register = m_register >> 1 ^ (out ? feedback() : 0U);
        } else {
            const bool out = ((m_register >> 31) != 0) != bit;
            m_register = m_register << 1 ^ (out ? feedback() : 0U);
        }
    }
    /// The check of what was added.
    [[nodiscard]] constexpr std::uint32_t value() const
    {
        return (model.lsbFirst ? m_register : m_register >> (32U - model.width)) ^ model.finalXor;
    }
    [[nodiscard]] static constexpr std::uint32_t of(std::span<const std::uint8_t> bytes)
    {
        Crc crc;
        crc.addBytes(bytes);
        return crc.value();
    }

private:
    static constexpr std::uint32_t feedback()
    {
        return model.lsbFirst ? std::uint32_t(reversed(model.polynomial, model.width))
                              : model.polynomial << (32U - model.width);
    }
    static constexpr std::uint32_t start()
    {
        return model.lsbFirst ? std::uint32_t(reversed(model.initial, model.width))
                              : model.initial << (32U - model.width);
    }
    static constexpr std::array<std::uint32_t, 256> makeTable()
    {
        std::array<std::uint32_t, 256> made{};
        for (std::uint32_t byte = 0; byte < made.size(); ++byte) {
            std::uint32_t rest = model.lsbFirst ? byte : byte << 24;
            for (int bit = 0; bit < 8; ++bit) {
                const bool out = model.lsbFirst ? (rest & 1U) != 0 : (rest >> 31) != 0;
                rest = (model.lsbFirst ? rest >> 1 : rest << 1) ^ (out ? feedback() : 0U);
            }
            made[byte] = rest;
        }
        return made;
    }
    static constexpr std::array<std::uint32_t, 256> table = makeTable();

    std::uint32_t m_register = start();
};

} // namespace lux
