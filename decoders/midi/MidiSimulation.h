#pragma once

#include <cstdint>
#include <vector>

/// One element of the simulation: each kind of message in turn, now and then a real-time byte within, or an error.
struct MidiSimulated {
    std::vector<std::uint8_t> bytes; ///< as they are sent; of an error those that make no message
    std::uint8_t realTime = 0;       ///< is sent before the last of the bytes; 0 for none
    bool isError = false;
    bool hasFramingError = false; ///< the error: the last byte has no stop bit

    /// @param number  from 0 in the order of time
    [[nodiscard]] static MidiSimulated of(std::uint32_t number);

private:
    void makeWrong(std::uint32_t round);
};
