#pragma once

#include <cstdint>

/// One packet of the simulation: start codes and numbers of slots that change, and now and then an error.
struct DmxSimulated {
    static constexpr std::uint32_t noSlot = 0xffffffff;

    std::uint8_t startCode = 0;
    std::uint32_t slotCount = 0;
    std::uint32_t wrongSlot = noSlot; ///< the slot without stop bits
    bool shortMark = false;

    /// @param number  from 0 in the order of time
    [[nodiscard]] static DmxSimulated of(std::uint32_t number);
    /// @param slot  from 1
    [[nodiscard]] static std::uint8_t valueOf(std::uint32_t number, std::uint32_t slot);
};
