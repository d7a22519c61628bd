#include "acquisition/SmpDevice.h"

int statusError(std::uint16_t status)
{
    const int run = status & smpStatus::runMask;
    if (run == 0 || run == smpStatus::runMask) {
        if (status == 0xFFFF) {
            return smpError::noBus;
        }
        return status == 0 ? smpError::allZero : smpError::notRunning;
    }
    if ((status & smpStatus::sound) != smpStatus::sound) {
        return smpError::unsound;
    }
    return (status & smpStatus::fault) != 0 ? smpError::fault : smpError::none;
}
