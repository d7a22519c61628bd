#pragma once

#include "ModbusSettings.h"

#include <cstdint>
#include <vector>

/// What goes wrong with the characters of a frame.
enum class ModbusMishap : std::uint8_t {
    None,
    Parity,  ///< of the last one, where there is parity
    Framing, ///< of the last one
    Pause,   ///< behind the second one; RTU has it
    Cut,     ///< two bytes are all that comes
};

/// One frame of the simulation: requests and responses by turns, all functions, now and then an error.
struct ModbusSimulated {
    std::vector<std::uint8_t> bytes; ///< address, function, data
    ModbusMishap mishap = ModbusMishap::None;
    bool isResponse = false;
    bool isCheckWrong = false;

    /// The characters that are sent, with CRC or LRC.
    [[nodiscard]] std::vector<std::uint8_t> wire(ModbusMode mode) const;
    /// @param number  from 0 in the order of time
    [[nodiscard]] static ModbusSimulated of(std::uint32_t number);
};
