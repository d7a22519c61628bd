#pragma once

#include <cstdint>
#include <vector>

/// One run of the simulation: a preamble and bytes that change, the highest bit first, and now and then a pulse behind
/// them that violates the code.
struct ManchesterSimulated {
    std::vector<bool> bits;
    bool hasViolation = false; ///< where a bit has samples enough for it

    /// @param number  from 0 in the order of time
    [[nodiscard]] static ManchesterSimulated of(std::uint32_t number);
};
