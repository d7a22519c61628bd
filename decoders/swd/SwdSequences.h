#pragma once

#include "SwdBits.h"

#include <cstdint>

/// Where a switch sequence leads.
enum class SwdTarget : std::uint8_t { None, Swd, Jtag, Dormant };

/// A sequence that changes the protocol of the wires: ARM IHI 0031 (ADIv5.2), B5.2 and B5.3.
struct SwdSequence {
    SwdTarget target = SwdTarget::None;
    unsigned bits = 0;      ///< with what belongs to it
    unsigned onesAtEnd = 0; ///< they may be the first of a line reset
};

/// The sequence that stands at the next bit. @param ones  how many ones came right before
[[nodiscard]] SwdSequence sequenceAt(SwdBits &bits, std::int64_t ones);
