#pragma once

#include "LinSettings.h"

#include <cstdint>

/// What goes wrong with an element of the simulation.
enum class LinMishap : std::uint8_t {
    None,
    NoAnswer,
    WrongChecksum,
    WrongParity,
    NoIdentifier,
    WakeUp,
    FramingError, ///< the byte behind those of the frame has no stop bit
    NoSync,
    OneByte, ///< of an answer
};

/// One element of the simulation: identifiers and data that change, and now and then an error.
struct LinSimulated {
    LinFrame frame;
    LinMishap mishap = LinMishap::None;

    /// @param number  from 0 in the order of time
    [[nodiscard]] static LinSimulated of(std::uint32_t number, const LinSettings &settings);
};
