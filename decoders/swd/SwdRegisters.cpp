#include "SwdRegisters.h"

namespace {

/// B2.2, table B2-4.
const char *debugPort(bool isRead, unsigned address, const SwdSelect &select)
{
    static constexpr const char *banks[] = {"CTRL/STAT", "DLCR", "TARGETID", "DLPIDR", "EVENTSTAT"};
    switch (address) {
    case 0x0:
        return isRead ? "DPIDR" : "ABORT";
    case 0x4:
        return select.dpBank < 5 ? banks[select.dpBank] : "DP 4";
    case 0x8:
        return isRead ? "RESEND" : "SELECT";
    default:
        return isRead ? "RDBUFF" : "TARGETSEL";
    }
}

/// C2.6: those of a memory access port; IDR is the same for all kinds.
const char *accessPort(unsigned address)
{
    switch (address) {
    case 0x00:
        return "CSW";
    case 0x04:
        return "TAR";
    case 0x08:
        return "TAR (high)";
    case 0x0c:
        return "DRW";
    case 0x10:
        return "BD0";
    case 0x14:
        return "BD1";
    case 0x18:
        return "BD2";
    case 0x1c:
        return "BD3";
    case 0x20:
        return "MBT";
    case 0xf0:
        return "BASE (high)";
    case 0xf4:
        return "CFG";
    case 0xf8:
        return "BASE";
    case 0xfc:
        return "IDR";
    default:
        return nullptr;
    }
}

} // namespace

const char *swdRegister(bool isAp, bool isRead, unsigned address, const SwdSelect &select)
{
    if (!isAp) {
        return debugPort(isRead, address, select);
    }
    return select.isKnown ? accessPort(unsigned(select.apBank) << 4 | address) : nullptr;
}
