#pragma once

#include <cstdint>

/// The answer of a target: ARM IHI 0031 (ADIv5.2), B4.2.2.
enum class SwdAck : std::uint8_t { Ok, Wait, Fault, NoReply, Error };

/// What SELECT chose: banks of registers and the access port (B2.2.11).
struct SwdSelect {
    std::uint8_t dpBank = 0;
    std::uint8_t apBank = 0;
    std::uint8_t ap = 0;
    bool isKnown = false;
};

/// @param address  0, 4, 8 or 12 @return the register's name, null for one of an access port that has none
[[nodiscard]] const char *swdRegister(bool isAp, bool isRead, unsigned address, const SwdSelect &select);
