#include "device/UsbErrorsLibusb.h"

#include <libusb.h>

UsbResult usbResultOfLibusb(int code)
{
    if (code >= 0) {
        return {};
    }
    const auto system = std::uint32_t(-code);
    switch (code) {
    case LIBUSB_ERROR_ACCESS:
    case LIBUSB_ERROR_BUSY:
        return {UsbError::Refused, system};
    case LIBUSB_ERROR_NO_DEVICE:
        return {UsbError::Gone, system};
    case LIBUSB_ERROR_NOT_FOUND:
        return {UsbError::NotFound, system};
    case LIBUSB_ERROR_TIMEOUT:
        return {UsbError::TimedOut, system};
    case LIBUSB_ERROR_PIPE:
        return {UsbError::Halted, system};
    case LIBUSB_ERROR_INTERRUPTED:
        return {UsbError::Aborted, system};
    case LIBUSB_ERROR_NO_MEM:
        return {UsbError::NoMemory, system};
    default:
        return {UsbError::Failed, system};
    }
}

UsbResult usbResultOfTransfer(int status)
{
    const auto system = std::uint32_t(status);
    switch (status) {
    case LIBUSB_TRANSFER_COMPLETED:
        return {};
    case LIBUSB_TRANSFER_TIMED_OUT:
        return {UsbError::TimedOut, system};
    case LIBUSB_TRANSFER_CANCELLED:
        return {UsbError::Aborted, system};
    case LIBUSB_TRANSFER_STALL:
        return {UsbError::Halted, system};
    case LIBUSB_TRANSFER_NO_DEVICE:
        return {UsbError::Gone, system};
    default: // LIBUSB_TRANSFER_ERROR, LIBUSB_TRANSFER_OVERFLOW
        return {UsbError::Failed, system};
    }
}
