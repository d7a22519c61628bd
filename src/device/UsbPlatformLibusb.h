#pragma once

#include "device/UsbPlatform.h"

#include <memory>

/// The instruments as libusb 1.0 shows them, with a thread that carries on its transfers and tells arrivals.
///
/// A device is ours by its vendor and product id, and its path is made of bus number and address, which are new each
/// time that a device comes. Of the pipe policies only the time-outs mean anything here. Of one read the system takes
/// what fits its limit for transfers under way (usually 16 MB together); a longer one answers NoMemory.
/// @return null when libusb does not start
[[nodiscard]] std::unique_ptr<UsbPlatform> makeUsbPlatformLibusb();
