#pragma once

#include <cstdint>

/// One element of the simulation: a key that is pressed, then held, now and then one that breaks off.
struct IrNecSimulated {
    static constexpr unsigned frameBits = 32;

    bool isRepeat = false;
    std::uint32_t bits = 0;    ///< the first in the lowest
    unsigned sent = frameBits; ///< so many of them are sent

    /// @param number  from 0 in the order of time
    [[nodiscard]] static IrNecSimulated of(std::uint32_t number);
};
