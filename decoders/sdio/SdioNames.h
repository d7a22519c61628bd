#pragma once

#include <cstdint>
#include <string_view>

// The commands of SD and SDIO cards, as their standards number and name them.

namespace sdio {

inline constexpr std::uint8_t allSendCid = 2;
inline constexpr std::uint8_t sendOpCond = 41; ///< behind CMD55
inline constexpr std::uint8_t ioSendOpCond = 5;
inline constexpr std::uint8_t sendCsd = 9;
inline constexpr std::uint8_t sendCid = 10;
inline constexpr std::uint8_t stopTransmission = 12;
inline constexpr std::uint8_t setBlockLength = 16;
inline constexpr std::uint8_t readSingleBlock = 17;
inline constexpr std::uint8_t readMultipleBlock = 18;
inline constexpr std::uint8_t setBlockCount = 23;
inline constexpr std::uint8_t writeBlock = 24;
inline constexpr std::uint8_t writeMultipleBlock = 25;
inline constexpr std::uint8_t ioReadWriteDirect = 52;
inline constexpr std::uint8_t ioReadWriteExtended = 53;
inline constexpr std::uint8_t applicationCommand = 55;
inline constexpr std::uint8_t indexOfNone = 0x3f; ///< in R2 and R3

/// The responses (SD Physical Layer Simplified Specification 6.00, 4.9; SDIO Simplified Specification 3.00, 4.10).
enum class Response : std::uint8_t { None, R1, R1b, R2, R3, R4, R5, R6, R7 };

/// "READ_SINGLE_BLOCK"; empty for a number without a command. @param isApplication  behind CMD55
[[nodiscard]] std::string_view commandName(std::uint8_t index, bool isApplication);
[[nodiscard]] Response responseOf(std::uint8_t index, bool isApplication);
[[nodiscard]] std::string_view responseName(Response response);
/// The state of the card in a status word (4.10.1): "tran".
[[nodiscard]] std::string_view stateName(std::uint32_t status);
/// The first error in a status word (4.10.1); empty for none.
[[nodiscard]] std::string_view errorName(std::uint32_t status);
/// What a card says to a block that was written (4.3.4): 2 accepted, 5 CRC error, 6 not written.
[[nodiscard]] std::string_view blockStatusName(std::uint8_t status);

} // namespace sdio
