#include "support/FakeUsb.h"
#include "support/UsbPlatformContract.h"

#include <QtTest>

namespace {

/// The scripted bus that the other tests use: what they rely on is what every platform does.
class FakeFace final : public UsbFace {
public:
    std::unique_ptr<UsbPlatform> makePlatform() override
    {
        auto made = std::make_unique<FakeUsb>();
        m_usb = made.get();
        m_usb->holds = true;
        m_usb->onControl = [](const UsbSetup &setup, std::uint8_t *data, std::uint32_t &moved) -> UsbResult {
            if (setup.request == 0xEE) {
                return {UsbError::Halted, 31};
            }
            moved = setup.isIn() ? std::min<std::uint32_t>(setup.length, 2) : setup.length;
            std::fill_n(data, setup.isIn() ? moved : 0, std::uint8_t(0x85));
            return {};
        };
        return made;
    }
    void plug(std::uint16_t product, bool running) override
    {
        FakeUsbDevice device;
        device.path = "fake:" + std::to_string(++m_plugged);
        device.product = product;
        if (!running) {
            device.pipes.clear();
        }
        m_usb->plug(device);
    }
    void unplug() override { m_usb->unplug(); }
    bool takesTwo() const override { return true; }
    std::vector<std::uint8_t> send(std::size_t bytes) override
    {
        std::vector<std::uint8_t> sent(bytes);
        for (std::size_t i = 0; i < bytes; ++i) {
            sent[i] = std::uint8_t(m_usb->sent + i);
        }
        constexpr std::size_t read = 64 * 1024;
        for (; bytes >= read; bytes -= read) {
            m_usb->push(FakeRead::full());
        }
        m_usb->push(FakeRead::of(std::uint32_t(bytes)));
        return sent;
    }
    void halt() override { m_usb->halt(); }
    std::size_t written() const override
    {
        std::size_t sum = 0;
        for (const std::uint32_t size : m_usb->writeSizes) {
            sum += size;
        }
        return sum;
    }

private:
    FakeUsb *m_usb = nullptr;
    int m_plugged = 0;
};

} // namespace

class TstUsbPlatformFake final : public UsbPlatformContract {
    Q_OBJECT
    std::unique_ptr<UsbFace> makeFace() override { return std::make_unique<FakeFace>(); }
};

QTEST_GUILESS_MAIN(TstUsbPlatformFake)
#include "tst_UsbPlatformFake.moc"
