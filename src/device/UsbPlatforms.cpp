#include "device/UsbPlatforms.h"

#include "device/UsbPlatformNone.h"

#if defined(LUX_WINUSB)
#include "device/UsbPlatformWinUsb.h"
#elif defined(LUX_LIBUSB)
#include "device/UsbPlatformLibusb.h"
#endif

std::unique_ptr<UsbPlatform> makeUsbPlatform()
{
    std::unique_ptr<UsbPlatform> platform;
#if defined(LUX_WINUSB)
    platform = makeUsbPlatformWinUsb();
#elif defined(LUX_LIBUSB)
    platform = makeUsbPlatformLibusb();
#endif
    if (!platform) {
        platform = std::make_unique<UsbPlatformNone>();
    }
    return platform;
}
