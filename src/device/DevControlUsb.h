#pragma once

#include "device/DevControl.h"

#include <array>
#include <functional>
#include <mutex>
#include <span>

class UsbTransport;

/// The blocks of a capture's settings as they go over the wire, little-endian. Pure.
///
/// The first: enabled channels, those that take part in the trigger, those of them tested by level, and the polarity,
/// 32 bits each. The second: depth and samples before the trigger, 40 bits each, the memory for these, 32 bits, and the
/// clock divider, 16 bits.
[[nodiscard]] std::array<std::uint8_t, 16> trigConfigBlock(const SmpConfig &config);
[[nodiscard]] std::array<std::uint8_t, 16> smpConfigBlock(const SmpConfig &config);

/// The instrument at the other end of the transport: each operation as requests on the control pipe.
///
/// One for the life of the process; outlives every device object, and the transport outlives it. Any thread. An
/// operation of several requests is not interrupted by another one.
class DevControlUsb final : public DevControl {
public:
    explicit DevControlUsb(UsbTransport &usb);

    /// How readUid() waits for the instrument's answer, in milliseconds; a test does not wait.
    std::function<void(int ms)> sleep;

    SmpTransport *transport() override;
    int startDevice() override;
    int stopDevice() override;
    int bulkStart() override;
    int bulkStop() override;
    int readStatus(std::uint16_t &status) override;
    int readCaptureInfo(SmpCaptureInfo &info) override;
    int setReadWindow(std::uint32_t address, std::uint32_t size) override;
    int readUid(QByteArray &devUid) override;
    unsigned timeOuts() const override;
    int sendSmpConfig(const SmpConfig &config) override;
    void tuneChunkSize(std::int64_t bitsPerSecond) override;
    int sendPwm(int output, std::uint32_t period, std::uint32_t high) override;
    int sendPwmEnable(std::uint8_t mask) override;
    int sendVth(int index, const VthCodes &codes) override;
    int powerOff() override;

private:
    using Bytes = std::span<const std::uint8_t>;
    /// A request without data.
    int order(std::uint8_t request, std::uint16_t value = 0);
    /// Writes a register of the FPGA.
    int write(std::uint16_t address, Bytes data);

    UsbTransport &m_usb;
    std::mutex m_mutex; ///< held for a whole operation
};
