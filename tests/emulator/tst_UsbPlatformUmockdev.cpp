// The program's platform over the real libusb, on a bus that umockdev shows it.

#include "device/UsbPlatformLibusb.h"
#include "emulator/InstrumentFace.h"
#include "support/UmockdevBus.h"
#include "support/UsbPlatformContract.h"

#include <QtTest>

namespace {

class UmockdevFace final : public InstrumentFace {
public:
    UmockdevFace() { m_bus.refuseClaims(2); }
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

int main(int argc, char **argv)
{
    if (!UmockdevBus::enter(argv)) {
        return 1;
    }
    QCoreApplication app(argc, argv);
    TstUsbPlatformUmockdev test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_UsbPlatformUmockdev.moc"
