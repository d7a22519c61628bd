// Captures whose requests and data go wrong, over the real libusb: each kind of capture once.

#include "device/UsbPlatformLibusb.h"
#include "emulator/CaptureFaults.h"
#include "support/UmockdevBus.h"

using emulator::FaultAction;

namespace {

class UmockdevRoad final : public InstrumentRoad {
public:
    InstrumentBus &bus() override { return m_bus; }
    std::unique_ptr<UsbPlatform> makePlatform() override { return makeUsbPlatformLibusb(); }

private:
    UmockdevBus m_bus;
};

void addKinds()
{
    QTest::addColumn<int>("model");
    QTest::newRow("storage") << 8;
    QTest::newRow("streaming") << 5;
}

} // namespace

class TstCaptureFaultsUmockdev : public QObject {
    Q_OBJECT
private slots:
    void everyRequestThatFailsIsToldAndTheNextCaptureWorks_data();
    void everyRequestThatFailsIsToldAndTheNextCaptureWorks();
    void everyReadThatFailsIsToldAndTheNextCaptureWorks_data();
    void everyReadThatFailsIsToldAndTheNextCaptureWorks();
    void aPlugPulledAtAnyReadIsToldAndTheNextAttachWorks_data();
    void aPlugPulledAtAnyReadIsToldAndTheNextAttachWorks();
};

void TstCaptureFaultsUmockdev::everyRequestThatFailsIsToldAndTheNextCaptureWorks_data()
{
    addKinds();
}

void TstCaptureFaultsUmockdev::everyRequestThatFailsIsToldAndTheNextCaptureWorks()
{
    QFETCH(int, model);
    CaptureFaultDesk faults(std::make_unique<UmockdevRoad>(), model);
    QVERIFY(faults.isGood());
    for (std::size_t k = 0; k < faults.requests().size(); ++k) {
        const QByteArray place = placeOf("request", k);
        QVERIFY2(faults.captureWithRequest(k, Wrong::Failed), place);
        QVERIFY2(faults.desk->lastError() == faults.errorOf(k), place);
        QVERIFY2(faults.leavesNothing(), place);
    }
    QCOMPARE(faults.soundCapture(), QString());
}

void TstCaptureFaultsUmockdev::everyReadThatFailsIsToldAndTheNextCaptureWorks_data()
{
    addKinds();
}

void TstCaptureFaultsUmockdev::everyReadThatFailsIsToldAndTheNextCaptureWorks()
{
    QFETCH(int, model);
    CaptureFaultDesk faults(std::make_unique<UmockdevRoad>(), model);
    QVERIFY(faults.isGood());
    for (std::uint64_t offset = 0; offset < faults.readBytes(); offset += CaptureFaultDesk::readSize) {
        const FaultAction action =
            offset / CaptureFaultDesk::readSize % 2 == 0 ? FaultAction::Stall : FaultAction::Fail;
        const QByteArray place = placeOf("byte", offset);
        QVERIFY2(faults.captureWithRead(offset, action), place);
        QVERIFY2(faults.desk->lastError() == CaptureFaultDesk::readFailed, place);
        QVERIFY2(faults.keepsWhatCameBefore(offset), place);
        QVERIFY2(faults.leavesNothing(), place);
    }
    QCOMPARE(faults.soundCapture(), QString());
}

void TstCaptureFaultsUmockdev::aPlugPulledAtAnyReadIsToldAndTheNextAttachWorks_data()
{
    addKinds();
}

void TstCaptureFaultsUmockdev::aPlugPulledAtAnyReadIsToldAndTheNextAttachWorks()
{
    QFETCH(int, model);
    CaptureFaultDesk faults(std::make_unique<UmockdevRoad>(), model);
    QVERIFY(faults.isGood());
    for (std::uint64_t offset = 0; offset < faults.readBytes(); offset += CaptureFaultDesk::readSize) {
        const QByteArray place = placeOf("byte", offset);
        QVERIFY2(faults.captureWithRead(offset, FaultAction::Unplug), place);
        QVERIFY2(faults.desk->lastError() == CaptureFaultDesk::readFailed, place);
        QVERIFY2(faults.keepsWhatCameBefore(offset), place);
        QVERIFY2(faults.leavesNothing(), place);
        QCOMPARE(faults.soundCaptureAfterReplug(), QString());
    }
}

int main(int argc, char **argv)
{
    if (!UmockdevBus::enter(argv)) {
        return 1;
    }
    QCoreApplication app(argc, argv);
    TstCaptureFaultsUmockdev test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_CaptureFaultsUmockdev.moc"
