#pragma once

#include <string>
#include <vector>

struct libusb_context;
struct libusb_device;

/// The instruments that are present when it is made. Each holds its device until it goes. Any thread; one at a time.
class LibusbDevices {
public:
    explicit LibusbDevices(libusb_context *context);
    ~LibusbDevices();
    LibusbDevices(const LibusbDevices &) = delete;
    LibusbDevices &operator=(const LibusbDevices &) = delete;

    [[nodiscard]] int count() const { return int(m_devices.size()); }
    /// @param index  0 to count() - 1
    [[nodiscard]] libusb_device *at(int index) const { return m_devices[std::size_t(index)]; }
    /// @return null for a path of no instrument that is present
    [[nodiscard]] libusb_device *find(const char *path) const;

    /// "usb:bus:address", decimal. The system does not give an address anew before it has been through all others.
    [[nodiscard]] static std::string pathOf(libusb_device *device);

private:
    std::vector<libusb_device *> m_devices;
};
