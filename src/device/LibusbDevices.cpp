#include "device/LibusbDevices.h"

#include "device/UsbIds.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <libusb.h>

namespace {

bool isInstrument(libusb_device *device)
{
    libusb_device_descriptor descriptor{};
    return libusb_get_device_descriptor(device, &descriptor) == 0 &&
           isUsbInstrument(descriptor.idVendor, descriptor.idProduct);
}

} // namespace

LibusbDevices::LibusbDevices(libusb_context *context)
{
    libusb_device **all = nullptr;
    const ssize_t count = libusb_get_device_list(context, &all);
    for (ssize_t i = 0; i < count; ++i) {
        if (isInstrument(all[i])) {
            m_devices.push_back(libusb_ref_device(all[i]));
        }
    }
    if (count >= 0) {
        libusb_free_device_list(all, 1);
    }
}

LibusbDevices::~LibusbDevices()
{
    std::for_each(m_devices.begin(), m_devices.end(), libusb_unref_device);
}

libusb_device *LibusbDevices::find(const char *path) const
{
    const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                    [path](libusb_device *device) { return pathOf(device) == path; });
    return found == m_devices.end() ? nullptr : *found;
}

std::string LibusbDevices::pathOf(libusb_device *device)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "usb:%03d:%03d", int(libusb_get_bus_number(device)),
                  int(libusb_get_device_address(device)));
    return text.data();
}
