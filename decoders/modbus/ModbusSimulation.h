#pragma once

#include <cstdint>
#include <vector>

/// One frame of the simulation: requests and responses by turns, all functions, now and then an error.
struct ModbusSimulated {
    std::vector<std::uint8_t> bytes; ///< address, function, data
    bool isResponse = false;
    bool isCheckWrong = false;

    /// @param number  from 0 in the order of time
    [[nodiscard]] static ModbusSimulated of(std::uint32_t number);
};
