#pragma once

#include <cstdint>
#include <vector>

/// One run of the simulation: a preamble and bytes that change, the highest bit first.
struct ManchesterSimulated {
    std::vector<bool> bits;

    /// @param number  from 0 in the order of time
    [[nodiscard]] static ManchesterSimulated of(std::uint32_t number);
};
