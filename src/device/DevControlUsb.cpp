#include "device/DevControlUsb.h"

#include "device/DevRequests.h"
#include "device/UsbTransport.h"

#include <chrono>
#include <cstddef>
#include <thread>

namespace {

constexpr std::array<std::uint8_t, 1> runOn{3};
constexpr std::array<std::uint8_t, 1> runOff{0};

/// Puts numbers behind each other, little-endian.
template<std::size_t size>
class Block {
public:
    Block &put(std::uint64_t value, std::size_t bytes)
    {
        for (std::size_t i = 0; i < bytes; ++i) {
            m_bytes[m_used++] = std::uint8_t(value >> (8 * i));
        }
        return *this;
    }
    [[nodiscard]] const std::array<std::uint8_t, size> &bytes() const { return m_bytes; }

private:
    std::array<std::uint8_t, size> m_bytes{};
    std::size_t m_used = 0;
};

std::uint32_t numberAt(std::span<const std::uint8_t> bytes, std::size_t at)
{
    std::uint32_t value = 0;
    for (std::size_t i = 4; i > 0; --i) {
        value = value << 8 | bytes[at + i - 1];
    }
    return value;
}

} // namespace

std::array<std::uint8_t, 16> trigConfigBlock(const SmpConfig &config)
{
    return Block<16>()
        .put(config.enabled, 4)
        .put(config.trigger, 4)
        .put(config.level, 4)
        .put(config.polarity, 4)
        .bytes();
}

std::array<std::uint8_t, 16> smpConfigBlock(const SmpConfig &config)
{
    return Block<16>()
        .put(std::uint64_t(config.depth), 5)
        .put(std::uint64_t(config.preTrig), 5)
        .put(config.preTrigMemory, 4)
        .put(config.divider, 2)
        .bytes();
}

DevControlUsb::DevControlUsb(UsbTransport &usb)
    : sleep([](int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }), m_usb(usb)
{}

SmpTransport *DevControlUsb::transport()
{
    return &m_usb;
}

int DevControlUsb::order(std::uint8_t request, std::uint16_t value)
{
    return m_usb.controlOut(request, value, 0, {});
}

int DevControlUsb::write(std::uint16_t address, Bytes data)
{
    return m_usb.controlOut(devRequest::fpga, address, 0, data);
}

int DevControlUsb::startDevice()
{
    const std::lock_guard lock(m_mutex);
    return write(devRequest::statusOrRun, runOn);
}

int DevControlUsb::stopDevice()
{
    const std::lock_guard lock(m_mutex);
    const int result = write(devRequest::statusOrRun, runOff);
    order(devRequest::bulkStop);
    return result;
}

int DevControlUsb::bulkStart()
{
    const std::lock_guard lock(m_mutex);
    return order(devRequest::bulkStart);
}

int DevControlUsb::bulkStop()
{
    const std::lock_guard lock(m_mutex);
    return order(devRequest::bulkStop);
}

int DevControlUsb::readStatus(std::uint16_t &status)
{
    const std::lock_guard lock(m_mutex);
    std::array<std::uint8_t, 2> bytes{};
    const int result = m_usb.controlIn(devRequest::fpga, devRequest::statusOrRun, 0, bytes);
    status = result == done ? std::uint16_t(bytes[0] | bytes[1] << 8) : std::uint16_t(0);
    return result;
}

int DevControlUsb::readCaptureInfo(SmpCaptureInfo &info)
{
    const std::lock_guard lock(m_mutex);
    std::array<std::uint8_t, 12> bytes{};
    const int result = m_usb.controlIn(devRequest::fpga, devRequest::windowOrCapture, 0, bytes);
    if (result == done) {
        info = {numberAt(bytes, 0), numberAt(bytes, 4), numberAt(bytes, 8)};
    }
    return result;
}

int DevControlUsb::setReadWindow(std::uint32_t address, std::uint32_t size)
{
    const std::lock_guard lock(m_mutex);
    order(devRequest::bulkStop);
    if (const int error = write(devRequest::windowOrCapture, Block<8>().put(address, 4).put(size, 4).bytes());
        error != done) {
        return error;
    }
    return order(devRequest::bulkStart);
}

int DevControlUsb::readUid(QByteArray &devUid)
{
    const std::lock_guard lock(m_mutex);
    if (const int error = m_usb.controlOut(devRequest::uid, 0, 0, devRequest::uidQuestion); error != done) {
        return error;
    }
    sleep(devRequest::uidDelayMs);
    std::array<std::uint8_t, devRequest::uidAnswerSize> answer{};
    const int result = m_usb.controlIn(devRequest::uid, 0, 0, answer);
    if (result == done) {
        devUid = QByteArray(reinterpret_cast<const char *>(&answer[devRequest::uidAt]), uidSize);
    }
    return result;
}

unsigned DevControlUsb::timeOuts() const
{
    return m_usb.timeOuts.load(std::memory_order_acquire);
}

int DevControlUsb::sendSmpConfig(const SmpConfig &config)
{
    const std::lock_guard lock(m_mutex);
    if (const int error = write(devRequest::trigConfig, trigConfigBlock(config)); error != done) {
        return error;
    }
    return write(devRequest::smpConfig, smpConfigBlock(config));
}

void DevControlUsb::tuneChunkSize(std::int64_t bitsPerSecond)
{
    m_usb.tuneChunkSize(bitsPerSecond);
}

int DevControlUsb::sendPwm(int output, std::uint32_t period, std::uint32_t high)
{
    const std::lock_guard lock(m_mutex);
    return write(devRequest::pwm(output), Block<8>().put(period, 4).put(high, 4).bytes());
}

int DevControlUsb::sendPwmEnable(std::uint8_t mask)
{
    const std::lock_guard lock(m_mutex);
    return write(devRequest::pwmEnable, std::array<std::uint8_t, 1>{mask});
}

int DevControlUsb::sendVth(int index, const VthCodes &codes)
{
    const std::lock_guard lock(m_mutex);
    return write(devRequest::vth(index), Block<4>().put(codes.threshold, 2).put(codes.range, 2).bytes());
}

int DevControlUsb::powerOff()
{
    const std::lock_guard lock(m_mutex);
    return order(devRequest::fpgaSwitch, devRequest::fpgaOff);
}
