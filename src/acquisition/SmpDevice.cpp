#include "acquisition/SmpDevice.h"

int statusError(std::uint16_t status)
{
    const int run = status & smpStatus::runMask;
    if (run == 0 || run == smpStatus::runMask) {
        if (status == 0xFFFF) {
            return 7;
        }
        return status == 0 ? 8 : 9;
    }
    if ((status & smpStatus::sound) != smpStatus::sound) {
        return 10;
    }
    return (status & smpStatus::fault) != 0 ? 13 : 0;
}
