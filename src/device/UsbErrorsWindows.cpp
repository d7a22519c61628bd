#include "device/UsbErrorsWindows.h"

// The numbers are Windows' own (winerror.h), which other systems do not have.
UsbResult usbResultOfWindows(std::uint32_t code)
{
    switch (code) {
    case 0: // ERROR_SUCCESS
        return {};
    case 2:    // ERROR_FILE_NOT_FOUND
    case 3:    // ERROR_PATH_NOT_FOUND
    case 87:   // ERROR_INVALID_PARAMETER: the driver's answer to a pipe that the device does not have
    case 123:  // ERROR_INVALID_NAME
    case 259:  // ERROR_NO_MORE_ITEMS
    case 1168: // ERROR_NOT_FOUND
        return {UsbError::NotFound, code};
    case 5:   // ERROR_ACCESS_DENIED
    case 32:  // ERROR_SHARING_VIOLATION
    case 170: // ERROR_BUSY
        return {UsbError::Refused, code};
    case 22:   // ERROR_BAD_COMMAND: the driver's answer after the device has been pulled out
    case 55:   // ERROR_DEV_NOT_EXIST
    case 433:  // ERROR_NO_SUCH_DEVICE
    case 1167: // ERROR_DEVICE_NOT_CONNECTED
    case 1617: // ERROR_DEVICE_REMOVED
        return {UsbError::Gone, code};
    case 121:  // ERROR_SEM_TIMEOUT
    case 1460: // ERROR_TIMEOUT
        return {UsbError::TimedOut, code};
    case 31: // ERROR_GEN_FAILURE: how the driver tells that the device has refused
        return {UsbError::Halted, code};
    case 995: // ERROR_OPERATION_ABORTED
        return {UsbError::Aborted, code};
    case 996: // ERROR_IO_INCOMPLETE
    case 997: // ERROR_IO_PENDING
        return {UsbError::Pending, code};
    case 8:    // ERROR_NOT_ENOUGH_MEMORY
    case 14:   // ERROR_OUTOFMEMORY
    case 1450: // ERROR_NO_SYSTEM_RESOURCES
        return {UsbError::NoMemory, code};
    case 122: // ERROR_INSUFFICIENT_BUFFER
        return {UsbError::TooSmall, code};
    default:
        return {UsbError::Failed, code};
    }
}
