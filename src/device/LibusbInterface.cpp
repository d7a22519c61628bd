#include "device/LibusbInterface.h"

#include "device/UsbErrorsLibusb.h"

#include <algorithm>
#include <chrono>
#include <libusb.h>
#include <thread>

namespace {

constexpr int interfaceNumber = 0;

int claimWithPatience(libusb_device_handle *handle)
{
    using namespace std::chrono_literals;
    constexpr int tries = 200; // in a second; counted, lest a machine that stands still for so long uses up all of them
    int code = libusb_claim_interface(handle, interfaceNumber);
    for (int tried = 1; code == LIBUSB_ERROR_NOT_FOUND && tried < tries; ++tried) {
        std::this_thread::sleep_for(5ms);
        code = libusb_claim_interface(handle, interfaceNumber);
    }
    return code;
}

} // namespace

UsbResult LibusbInterface::claim(libusb_device_handle *handle, std::unique_ptr<LibusbInterface> &claimed)
{
    const int code = claimWithPatience(handle);
    if (code != 0) {
        return usbResultOfLibusb(code);
    }
    claimed.reset(new LibusbInterface(handle));
    claimed->readSettings();
    return {};
}

LibusbInterface::~LibusbInterface()
{
    libusb_release_interface(handle, interfaceNumber);
}

void LibusbInterface::readSettings()
{
    libusb_config_descriptor *config = nullptr;
    settings = usbResultOfLibusb(libusb_get_active_config_descriptor(libusb_get_device(handle), &config));
    if (!settings.ok()) {
        return;
    }
    if (config->bNumInterfaces > interfaceNumber && config->interface[interfaceNumber].num_altsetting > 0) {
        const libusb_interface_descriptor &setting = config->interface[interfaceNumber].altsetting[0];
        for (int i = 0; i < setting.bNumEndpoints; ++i) {
            pipes.push_back({setting.endpoint[i].bEndpointAddress, setting.endpoint[i].wMaxPacketSize});
        }
    } else {
        settings = {UsbError::NotFound};
    }
    libusb_free_config_descriptor(config);
}

bool LibusbInterface::hasPipe(std::uint8_t pipe) const
{
    return std::any_of(pipes.begin(), pipes.end(), [pipe](const UsbPipe &p) { return p.id == pipe; });
}

UsbResult LibusbInterface::deviceDescriptor(std::span<std::uint8_t> room, std::uint32_t &moved) const
{
    moved = 0;
    libusb_device_descriptor d{};
    const UsbResult result = usbResultOfLibusb(libusb_get_device_descriptor(libusb_get_device(handle), &d));
    if (!result.ok()) {
        return result;
    }
    const auto low = [](std::uint16_t v) { return std::uint8_t(v & 0xFF); };
    const auto high = [](std::uint16_t v) { return std::uint8_t(v >> 8); };
    const std::array<std::uint8_t, LIBUSB_DT_DEVICE_SIZE> bytes = {
        d.bLength,         d.bDescriptorType, low(d.bcdUSB),       high(d.bcdUSB),    d.bDeviceClass,
        d.bDeviceSubClass, d.bDeviceProtocol, d.bMaxPacketSize0,   low(d.idVendor),   high(d.idVendor),
        low(d.idProduct),  high(d.idProduct), low(d.bcdDevice),    high(d.bcdDevice), d.iManufacturer,
        d.iProduct,        d.iSerialNumber,   d.bNumConfigurations};
    moved = std::uint32_t(std::min(room.size(), bytes.size()));
    std::copy_n(bytes.begin(), moved, room.begin());
    return {};
}

UsbResult LibusbInterface::selectSetting() const
{
    return usbResultOfLibusb(libusb_set_interface_alt_setting(handle, interfaceNumber, 0));
}

UsbResult LibusbInterface::control(const UsbSetup &setup, std::uint8_t *data, std::uint32_t &moved)
{
    const std::uint8_t pipe = setup.isIn() ? LIBUSB_ENDPOINT_IN : LIBUSB_ENDPOINT_OUT;
    const int code = libusb_control_transfer(handle, setup.requestType, setup.request, setup.value, setup.index, data,
                                             setup.length, timeout(pipe).load(std::memory_order_relaxed));
    moved = std::uint32_t(std::max(code, 0));
    return usbResultOfLibusb(code);
}

UsbResult LibusbInterface::write(std::uint8_t pipe, std::span<const std::uint8_t> data, std::uint32_t &moved)
{
    moved = 0;
    if (!hasPipe(pipe)) {
        return {UsbError::NotFound};
    }
    int written = 0;
    // libusb takes one kind of pointer for both directions; from this one it only reads.
    const int code = libusb_bulk_transfer(handle, pipe, const_cast<std::uint8_t *>(data.data()), int(data.size()),
                                          &written, timeout(pipe).load(std::memory_order_relaxed));
    moved = std::uint32_t(std::max(written, 0));
    return usbResultOfLibusb(code);
}

UsbResult LibusbInterface::clearHalt(std::uint8_t pipe) const
{
    return hasPipe(pipe) ? usbResultOfLibusb(libusb_clear_halt(handle, pipe)) : UsbResult{UsbError::NotFound};
}
