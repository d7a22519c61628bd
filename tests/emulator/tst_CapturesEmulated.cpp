// Bring-up and captures of all models over the bus in the process.

#include "emulator/InstrumentCaptures.h"
#include "platform/UsbPlatformEmulated.h"

namespace {

class EmulatedRoad final : public InstrumentRoad {
public:
    InstrumentBus &bus() override { return m_bus; }
    std::unique_ptr<UsbPlatform> makePlatform() override { return std::make_unique<UsbPlatformEmulated>(m_bus); }

private:
    EmulatedBus m_bus;
};

} // namespace

class TstCapturesEmulated final : public InstrumentCaptures {
    Q_OBJECT
    std::unique_ptr<InstrumentRoad> makeRoad() override { return std::make_unique<EmulatedRoad>(); }
};

QTEST_GUILESS_MAIN(TstCapturesEmulated)
#include "tst_CapturesEmulated.moc"
