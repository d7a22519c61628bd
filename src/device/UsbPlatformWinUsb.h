#pragma once

#include "device/UsbPlatform.h"

#include <memory>

/// The instruments as Windows' WinUSB driver shows them, found by their device interface class.
///
/// Arrivals and removals go to the window as messages (WM_DEVICECHANGE); what is given to be called is not.
/// @return null when the system has no such driver. Windows only.
[[nodiscard]] std::unique_ptr<UsbPlatform> makeUsbPlatformWinUsb();
