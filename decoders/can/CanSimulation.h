#pragma once

#include "CanFrame.h"

#include <cstdint>

/// What goes wrong with a frame of the simulation.
enum class CanMishap : std::uint8_t {
    None,
    WrongCrc,
    NoAcknowledge,
    StuffError,
    FixedStuffError, ///< of CAN FD
    WrongStuffCount, ///< of CAN FD, with a check that is right
    CrcDelimiter,
    AckDelimiter,
    FormError, ///< in the end of frame
    Overload,
};

/// One frame of the simulation: all kinds in turn, with identifiers and data that change.
struct CanSimulated {
    CanFrame frame;
    CanMishap mishap = CanMishap::None;

    /// @param number  from 0 in the order of time
    [[nodiscard]] static CanSimulated of(std::uint32_t number, bool maySwitchRate);
};
