#pragma once

#include <array>
#include <cstdint>

/// The vendor requests of the instruments: request numbers and values on the control pipe. All multi-byte values in
/// their data are little-endian; the index is 0 in all but the writes to the controller's RAM.
namespace devRequest {

// The USB controller.
constexpr std::uint8_t ram = 0xA0;    ///< value and index: address, low and high 16 bits
constexpr std::uint8_t eeprom = 0xA2; ///< from the device; value: address

// The upload of the FPGA, and its switch.
constexpr std::uint8_t fpgaLoad = 0x50; ///< out: announces the image's size; in: the status byte that ends the upload
constexpr std::uint8_t fpgaSwitch = 0x10;
constexpr std::uint16_t fpgaOff = 0;
constexpr std::uint16_t fpgaOn = 1;

// The FPGA's registers, by value.
constexpr std::uint8_t fpga = 0x20;
constexpr std::uint16_t statusOrRun = 0x0000;     ///< in: the status word; out: 3 runs, 0 stops
constexpr std::uint16_t pwmEnable = 0x0002;       ///< bit 0 output 0, bit 1 output 1
constexpr std::uint16_t windowOrCapture = 0x0010; ///< out: the part of the memory to send; in: what a capture left
constexpr std::uint16_t smpConfig = 0x0020;
constexpr std::uint16_t trigConfig = 0x0030;
/// Of threshold 1 or 2.
[[nodiscard]] constexpr std::uint16_t vth(int index)
{
    return std::uint16_t((index + 17) * 4);
}
/// Of output 0 or 1.
[[nodiscard]] constexpr std::uint16_t pwm(int output)
{
    return std::uint16_t((output + 14) * 8);
}

// The bulk pipe.
constexpr std::uint8_t bulkStart = 0x30;
constexpr std::uint8_t bulkStop = 0x38; ///< also the last request of a bring-up

constexpr std::uint8_t uid = 0x60; ///< out: the question; in, a little later: the answer
constexpr std::array<std::uint8_t, 3> uidQuestion{0xA3, 0x01, 0xCA};
constexpr int uidDelayMs = 50;
constexpr int uidAnswerSize = 12;
constexpr int uidAt = 2; ///< in the answer

} // namespace devRequest
