// The program's platform over the real libusb, on a bus that umockdev shows it.

#include "device/UsbLook.h"
#include "device/UsbPlatformLibusb.h"
#include "emulator/InstrumentFace.h"
#include "support/UmockdevBus.h"
#include "support/UsbPlatformContract.h"

#include <QtTest>

#include <array>
#include <chrono>

namespace {

class UmockdevFace final : public InstrumentFace {
public:
    explicit UmockdevFace(std::chrono::milliseconds refusal = {}) { m_bus.refuseClaims(2, refusal); }
    std::unique_ptr<UsbPlatform> makePlatform() override { return makeUsbPlatformLibusb(); }

private:
    InstrumentBus &bus() const override { return m_bus; }

    mutable UmockdevBus m_bus;
};

} // namespace

class TstUsbPlatformUmockdev final : public UsbPlatformContract {
    Q_OBJECT
    std::unique_ptr<UsbFace> makeFace() override { return std::make_unique<UmockdevFace>(); }
};

class TstClaimUmockdev final : public QObject {
    Q_OBJECT
private slots:
    void aClaimThatASlowSystemRefusesIsMadeAgain();
};

void TstClaimUmockdev::aClaimThatASlowSystemRefusesIsMadeAgain()
{
    UmockdevFace face(std::chrono::milliseconds(600));
    const std::unique_ptr<UsbPlatform> platform = face.makePlatform();
    face.plug(0x03A1, true);
    std::array<char, 260> path{};
    const auto isThere = [&] {
        const UsbList list = platform->openList();
        const bool isFetched = usbFetchPath(*platform, list, 0, path) == usbPathFits;
        platform->freeList(list);
        return isFetched;
    };
    QTRY_VERIFY(isThere());
    UsbFile file = UsbFile::None;
    UsbInterface opened = UsbInterface::None;
    QVERIFY(platform->openFile(path.data(), file).ok());
    QVERIFY(platform->initInterface(file, opened).ok());
    platform->freeInterface(opened);
    platform->closeFile(file);
}

int main(int argc, char **argv)
{
    if (!UmockdevBus::enter(argv)) {
        return 1;
    }
    QCoreApplication app(argc, argv);
    TstUsbPlatformUmockdev test;
    TstClaimUmockdev claim;
    return QTest::qExec(&test, argc, argv) + QTest::qExec(&claim, argc, argv);
}

#include "tst_UsbPlatformUmockdev.moc"
