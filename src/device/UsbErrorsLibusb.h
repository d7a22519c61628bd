#pragma once

#include "device/UsbPlatform.h"

/// What an answer of libusb's functions (a LIBUSB_ERROR, or 0 and above) means. Pure.
[[nodiscard]] UsbResult usbResultOfLibusb(int code);
/// What the end of a transfer (a LIBUSB_TRANSFER status) means. Pure.
[[nodiscard]] UsbResult usbResultOfTransfer(int status);
