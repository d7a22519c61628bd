#pragma once

#include <common/Crc.h>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// What the bytes of a transaction mean (SMBus 3.1, 6.5).
namespace smbus {

/// The bytes of a transaction with addresses, and where the second address stands.
struct Transaction {
    std::span<const std::uint8_t> bytes;
    std::size_t secondAddress = 0; ///< behind a repeated start; 0 for none
    bool hasPec = false;           ///< the last byte is a right packet error code
};

/// The bus protocol; "Write", "Read" or "Write then read" where no other fits.
struct Protocol {
    std::string_view name;
    bool hasCommand = false; ///< the byte behind the first address is a command code
};
[[nodiscard]] Protocol protocolOf(const Transaction &transaction);

/// The fixed use of an address (SMBus 3.1, appendix C, table 18); empty for none.
[[nodiscard]] std::string_view addressName(unsigned address);

/// SMBus 3.1, 5.4.1: x^8 + x^2 + x + 1 over all bytes with addresses; 0 with a right code behind them.
using Pec = lux::Crc<lux::CrcModel{.width = 8, .polynomial = 0x07}>;

inline constexpr unsigned hostAddress = 0x08;
inline constexpr unsigned alertAddress = 0x0c;

} // namespace smbus
