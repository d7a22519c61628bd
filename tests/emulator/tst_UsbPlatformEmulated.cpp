#include "device/UsbLook.h"
#include "emulator/InstrumentFace.h"
#include "platform/UsbPlatformEmulated.h"
#include "support/UsbPlatformContract.h"

#include <QtTest>

#include <array>
#include <atomic>
#include <chrono>
#include <thread>

using namespace std::chrono_literals;

namespace {

/// An emulated instrument on a bus in this process.
class EmulatedFace final : public InstrumentFace {
public:
    std::unique_ptr<UsbPlatform> makePlatform() override { return std::make_unique<UsbPlatformEmulated>(m_bus); }
    InstrumentBus &bus() const override { return m_bus; }

private:
    mutable EmulatedBus m_bus;
};

} // namespace

class TstUsbPlatformEmulated final : public UsbPlatformContract {
    Q_OBJECT
    std::unique_ptr<UsbFace> makeFace() override { return std::make_unique<EmulatedFace>(); }
};

class TstStandingStill final : public QObject {
    Q_OBJECT
private slots:
    void aWaitLastsLongerWhereTheBusStandsStill();
};

void TstStandingStill::aWaitLastsLongerWhereTheBusStandsStill()
{
    using bench::operator+;
    constexpr int patience = 2000; // ms
    EmulatedFace face;
    const std::unique_ptr<UsbPlatform> usb = face.makePlatform();
    face.plug(0x01A4, true);
    std::array<char, 260> path{};
    const UsbList list = usb->openList();
    QCOMPARE(usbFetchPath(*usb, list, 0, path), std::uint32_t(usbPathFits));
    usb->freeList(list);
    UsbFile file = UsbFile::None;
    UsbInterface opened = UsbInterface::None;
    QVERIFY(usb->openFile(path.data(), file).ok());
    QVERIFY(usb->initInterface(file, opened).ok());
    QVERIFY(usb->setPipePolicy(opened, 0x86, UsbPolicy::TransferTimeout, patience).ok());
    std::vector<std::uint8_t> buffer(10);
    const std::unique_ptr<UsbReadSlot> slot = usb->makeReadSlot();
    QVERIFY(usb->queueRead(opened, 0x86, buffer.data(), std::uint32_t(buffer.size()), *slot).ok());
    std::atomic<bool> begins{false};
    bool hasCome = false;
    std::thread reader([&] {
        begins = true;
        hasCome = usb->waitRead(*slot, patience);
    });
    while (!begins) {
        std::this_thread::yield();
    }
    const auto now = [&face] { return face.bus().with([](emulator::Instrument &device) { return device.now(); }); };
    const std::uint64_t before = face.bus().with([](emulator::Instrument &device) {
        std::this_thread::sleep_for(2200ms);
        return device.now();
    });
    while (now() < before + 300 * emulator::nanosecondsPerMillisecond) {
        std::this_thread::yield(); // until the reader has looked as well
    }
    face.bus().with([](emulator::Instrument &device) {
        QVERIFY(bench::sent(device, 0x38, 0));
        QVERIFY(bench::sent(device, 0x20, 0x10, bench::little(0, 4) + bench::little(10, 4)));
        QVERIFY(bench::sent(device, 0x30, 0));
    });
    reader.join();
    QVERIFY(hasCome);
    std::uint32_t moved = 0;
    QVERIFY(usb->readResult(opened, *slot, moved).ok());
    QCOMPARE(moved, 10U);
    usb->freeInterface(opened);
    usb->closeFile(file);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    TstUsbPlatformEmulated test;
    TstStandingStill still;
    return QTest::qExec(&test, argc, argv) + QTest::qExec(&still, argc, argv);
}

#include "tst_UsbPlatformEmulated.moc"
