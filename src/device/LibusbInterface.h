#pragma once

#include "device/UsbPlatform.h"

#include <array>
#include <atomic>
#include <memory>
#include <vector>

struct libusb_device_handle;
struct LibusbSlot;

/// The claimed interface of an open device: its pipes, their time-outs, and the reads that are queued on it.
struct LibusbInterface {
    /// Claims it, with patience: a system may announce a device some ms before it has configured it. Blocks up to 1 s.
    /// @param handle  not owned; open as long as what is made lives
    [[nodiscard]] static UsbResult claim(libusb_device_handle *handle, std::unique_ptr<LibusbInterface> &claimed);
    /// Gives it back. No read may be queued.
    ~LibusbInterface();
    LibusbInterface(const LibusbInterface &) = delete;
    LibusbInterface &operator=(const LibusbInterface &) = delete;

    /// ms of the transfers of a pipe; 0 for no limit. Any thread.
    [[nodiscard]] std::atomic<std::uint32_t> &timeout(std::uint8_t pipe)
    {
        return m_timeouts[(pipe & 0x80) != 0 ? 1 : 0][pipe & 0x0F];
    }
    [[nodiscard]] bool hasPipe(std::uint8_t pipe) const;
    /// The device's own descriptor, as the system read it when the device came; it cannot have changed since.
    [[nodiscard]] UsbResult deviceDescriptor(std::span<std::uint8_t> room, std::uint32_t &moved) const;
    /// Makes alternate setting 0 the present one.
    [[nodiscard]] UsbResult selectSetting() const;

    [[nodiscard]] UsbResult control(const UsbSetup &setup, std::uint8_t *data, std::uint32_t &moved);
    [[nodiscard]] UsbResult write(std::uint8_t pipe, std::span<const std::uint8_t> data, std::uint32_t &moved);
    [[nodiscard]] UsbResult clearHalt(std::uint8_t pipe) const;

    libusb_device_handle *const handle;
    std::vector<UsbPipe> pipes;       ///< of alternate setting 0
    UsbResult settings;               ///< whether they could be read
    std::vector<LibusbSlot *> queued; ///< in order; of LibusbReads, under its mutex

private:
    explicit LibusbInterface(libusb_device_handle *claimed) : handle(claimed) {}
    void readSettings();

    static constexpr std::uint8_t endpointNumbers = 16;
    /// By end point number, OUT and IN.
    std::array<std::array<std::atomic<std::uint32_t>, endpointNumbers>, 2> m_timeouts{};
};
