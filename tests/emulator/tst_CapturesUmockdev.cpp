// Bring-up and captures of all models over the real libusb.

#include "device/UsbPlatformLibusb.h"
#include "emulator/InstrumentCaptures.h"
#include "support/UmockdevBus.h"

namespace {

class UmockdevRoad final : public InstrumentRoad {
public:
    UmockdevRoad()
    {
        m_bus.refuseClaims(2);
        m_bus.announceTwice();
    }
    InstrumentBus &bus() override { return m_bus; }
    std::unique_ptr<UsbPlatform> makePlatform() override { return makeUsbPlatformLibusb(); }

private:
    UmockdevBus m_bus;
};

} // namespace

class TstCapturesUmockdev final : public InstrumentCaptures {
    Q_OBJECT
    std::unique_ptr<InstrumentRoad> makeRoad() override { return std::make_unique<UmockdevRoad>(); }
};

int main(int argc, char **argv)
{
    if (!UmockdevBus::enter(argv)) {
        return 1;
    }
    QCoreApplication app(argc, argv);
    TstCapturesUmockdev test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_CapturesUmockdev.moc"
