#pragma once

#include <cstdint>
#include <vector>

/// One run of the simulation: a preamble and bytes that change, the highest bit first, and now and then a pulse behind
/// them that violates the code; or a frame of an RC-6 remote control.
struct ManchesterSimulated {
    std::vector<bool> bits;
    bool hasViolation = false; ///< where a bit has samples enough for it
    bool isRemote = false;     ///< there is a leader before the bits, and the fifth is twice as long

    /// @param number  from 0 in the order of time @param hasRemotes  some of the runs are frames of remote controls
    [[nodiscard]] static ManchesterSimulated of(std::uint32_t number, bool hasRemotes);
};
