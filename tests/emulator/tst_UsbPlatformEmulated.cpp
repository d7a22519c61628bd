#include "emulator/InstrumentFace.h"
#include "platform/UsbPlatformEmulated.h"
#include "support/UsbPlatformContract.h"

#include <QtTest>

namespace {

/// An emulated instrument on a bus in this process.
class EmulatedFace final : public InstrumentFace {
public:
    std::unique_ptr<UsbPlatform> makePlatform() override { return std::make_unique<UsbPlatformEmulated>(m_bus); }

private:
    InstrumentBus &bus() const override { return m_bus; }

    mutable EmulatedBus m_bus;
};

} // namespace

class TstUsbPlatformEmulated final : public UsbPlatformContract {
    Q_OBJECT
    std::unique_ptr<UsbFace> makeFace() override { return std::make_unique<EmulatedFace>(); }
};

QTEST_GUILESS_MAIN(TstUsbPlatformEmulated)
#include "tst_UsbPlatformEmulated.moc"
