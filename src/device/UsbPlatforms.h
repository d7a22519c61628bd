#pragma once

#include "device/UsbPlatform.h"

#include <memory>

/// The platform of this system: WinUSB, libusb, or, where neither can be had, one on which there are no devices. Never
/// null. Main thread; may block for some ms.
[[nodiscard]] std::unique_ptr<UsbPlatform> makeUsbPlatform();
