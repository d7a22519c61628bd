#pragma once

#include "device/UsbPlatform.h"

#include <cstdint>

/// What a Windows error code of SetupAPI, files and WinUSB means for the transport. Pure, and the same on every system,
/// so that it can be tested anywhere.
[[nodiscard]] UsbResult usbResultOfWindows(std::uint32_t code);
