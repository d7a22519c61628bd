// Captures whose data go wrong, at every read, over the bus in the process.

#include "device/DeviceGlobals.h"
#include "emulator/CaptureFaults.h"
#include "platform/UsbPlatformEmulated.h"

using emulator::Fault;
using emulator::FaultAction;
using emulator::Instrument;

Q_DECLARE_METATYPE(FaultAction)

namespace {

constexpr int noMemory = 4;
constexpr int endedEarly = 14;

class EmulatedRoad final : public InstrumentRoad {
public:
    InstrumentBus &bus() override { return m_bus; }
    std::unique_ptr<UsbPlatform> makePlatform() override { return std::make_unique<UsbPlatformEmulated>(m_bus); }

private:
    EmulatedBus m_bus;
};

/// One model for each way in which data come.
void addModels()
{
    QTest::addColumn<int>("model");
    QTest::newRow("records of 16 channels") << 8;
    QTest::newRow("records of 32 channels") << 9;
    QTest::newRow("mixed signals") << 97;
    QTest::newRow("slices") << 5;
    QTest::newRow("bytes") << 1;
}

} // namespace

class TstCaptureReadFaults : public QObject {
    Q_OBJECT
private slots:
    void everyReadThatFailsIsToldAndTheNextCaptureWorks_data();
    void everyReadThatFailsIsToldAndTheNextCaptureWorks();
    void aPlugPulledAtAnyReadIsToldAndTheNextAttachWorks_data();
    void aPlugPulledAtAnyReadIsToldAndTheNextAttachWorks();
    void dataThatEndEarlyAreToldAndTheNextCaptureWorks_data();
    void dataThatEndEarlyAreToldAndTheNextCaptureWorks();
    void dataThatFallSilentAreToldAfterTheTimeOut_data();
    void dataThatFallSilentAreToldAfterTheTimeOut();
    void aBudgetSpentAtAnyMomentIsToldAndTheNextCaptureWorks_data();
    void aBudgetSpentAtAnyMomentIsToldAndTheNextCaptureWorks();
    void malformedRecordsAreToldAndTheCaptureIsKept_data();
    void malformedRecordsAreToldAndTheCaptureIsKept();
};

void TstCaptureReadFaults::everyReadThatFailsIsToldAndTheNextCaptureWorks_data()
{
    addModels();
}

void TstCaptureReadFaults::everyReadThatFailsIsToldAndTheNextCaptureWorks()
{
    QFETCH(int, model);
    CaptureFaultDesk faults(std::make_unique<EmulatedRoad>(), model);
    QVERIFY(faults.isGood());
    QVERIFY(faults.readBytes() > 2 * CaptureFaultDesk::readSize);
    for (std::uint64_t offset = 0; offset < faults.readBytes(); offset += CaptureFaultDesk::readSize / 2) {
        for (const FaultAction action : {FaultAction::Stall, FaultAction::Fail}) {
            const QByteArray place = placeOf("byte", offset);
            QVERIFY2(faults.captureWithRead(offset, action), place);
            QVERIFY2(faults.desk->lastError() == CaptureFaultDesk::readFailed, place);
            // The reads before were whole, and what they brought is kept.
            QVERIFY2(faults.keepsWhatCameBefore(offset), place);
            QVERIFY2(faults.leavesNothing(), place);
        }
    }
    QCOMPARE(faults.soundCapture(), QString());
    QCOMPARE(faults.soundCaptureAfterReplug(), QString());
    QVERIFY(faults.leavesNothing());
}

void TstCaptureReadFaults::aPlugPulledAtAnyReadIsToldAndTheNextAttachWorks_data()
{
    addModels();
}

void TstCaptureReadFaults::aPlugPulledAtAnyReadIsToldAndTheNextAttachWorks()
{
    QFETCH(int, model);
    CaptureFaultDesk faults(std::make_unique<EmulatedRoad>(), model);
    QVERIFY(faults.isGood());
    for (std::uint64_t offset = 0; offset < faults.readBytes(); offset += CaptureFaultDesk::readSize / 2) {
        const QByteArray place = placeOf("byte", offset);
        QVERIFY2(faults.captureWithRead(offset, FaultAction::Unplug), place);
        QVERIFY2(faults.desk->lastError() == CaptureFaultDesk::readFailed, place);
        QVERIFY2(faults.keepsWhatCameBefore(offset), place);
        QVERIFY2(faults.leavesNothing(), place);
        QCOMPARE(faults.soundCaptureAfterReplug(), QString());
    }
    QVERIFY(faults.leavesNothing());
}

void TstCaptureReadFaults::dataThatEndEarlyAreToldAndTheNextCaptureWorks_data()
{
    addModels();
}

void TstCaptureReadFaults::dataThatEndEarlyAreToldAndTheNextCaptureWorks()
{
    QFETCH(int, model);
    CaptureFaultDesk faults(std::make_unique<EmulatedRoad>(), model);
    QVERIFY(faults.isGood());
    // A memory that ends in the midst of a read is waited for: one such case will do.
    const std::uint64_t step = CaptureFaultDesk::readSize / (faults.streams() ? 2 : 1);
    for (std::uint64_t offset = 0; offset < faults.readBytes(); offset += step) {
        const QByteArray place = placeOf("byte", offset);
        const bool isShort = offset % CaptureFaultDesk::readSize != 0;
        QVERIFY2(faults.captureWithRead(offset, FaultAction::End), place);
        QVERIFY2(faults.desk->lastError() == (isShort ? endedEarly : CaptureFaultDesk::readFailed), place);
        QVERIFY2(faults.keepsWhatCameBefore(isShort ? offset + step : offset), place);
        QVERIFY2(faults.leavesNothing(), place);
    }
    QCOMPARE(faults.soundCapture(), QString());
    QCOMPARE(faults.soundCaptureAfterReplug(), QString());
    QVERIFY(faults.leavesNothing());
}

void TstCaptureReadFaults::dataThatFallSilentAreToldAfterTheTimeOut_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<FaultAction>("action");
    QTest::newRow("storage, silent") << 8 << FaultAction::Silence;
    QTest::newRow("storage, ended in the midst of a read") << 8 << FaultAction::End;
    QTest::newRow("streaming, silent") << 5 << FaultAction::Silence;
}

void TstCaptureReadFaults::dataThatFallSilentAreToldAfterTheTimeOut()
{
    QFETCH(int, model);
    QFETCH(FaultAction, action);
    CaptureFaultDesk faults(std::make_unique<EmulatedRoad>(), model);
    QVERIFY(faults.isGood());
    constexpr std::uint64_t offset = CaptureFaultDesk::readSize * 3 / 2;
    QVERIFY(faults.captureWithRead(offset, action));
    QCOMPARE(faults.desk->lastError(), CaptureFaultDesk::readFailed);
    QVERIFY(faults.keepsWhatCameBefore(offset));
    QVERIFY(faults.leavesNothing());
    QCOMPARE(faults.soundCapture(), QString());
}

void TstCaptureReadFaults::aBudgetSpentAtAnyMomentIsToldAndTheNextCaptureWorks_data()
{
    addModels();
}

void TstCaptureReadFaults::aBudgetSpentAtAnyMomentIsToldAndTheNextCaptureWorks()
{
    QFETCH(int, model);
    CaptureFaultDesk faults(std::make_unique<EmulatedRoad>(), model);
    QVERIFY(faults.isGood());
    const auto begun =
        std::int64_t(gDev->chnEnable.size() * sizeof(SmpEdgeRoot) + gDev->aChnEnable.size() * sizeof(SmpAChnBuffer));
    // None; enough to begin; for one read, so that the second is refused; for two; for three at the most.
    std::vector<std::int64_t> budgets{0, begun, begun + 1};
    if (gDev->aChnEnable.isEmpty()) {
        // Mixed signals take nothing more until all have come, so that one read's memory is as soon the next one's.
        budgets.insert(budgets.end(),
                       {begun + 1 + CaptureFaultDesk::readSize, begun + 1 + 2 * CaptureFaultDesk::readSize});
    }
    for (const std::int64_t budget : budgets) {
        const QByteArray place = placeOf("budget", std::uint64_t(budget));
        gDev->smpData->clear();
        memBudget = budget;
        QVERIFY2(faults.captureWith([](Instrument &) {}), place);
        QVERIFY2(faults.desk->lastError() == noMemory, place);
        QVERIFY2(faults.keepsWhatCameBefore(budget > begun + 1 ? CaptureFaultDesk::readSize : 0), place);
        QVERIFY2(faults.leavesNothing(budget), place);
        memBudget = InstrumentDesk::budget;
        QCOMPARE(faults.soundCapture(), QString());
    }
    QCOMPARE(faults.soundCaptureAfterReplug(), QString());
    QVERIFY(faults.leavesNothing());
}

void TstCaptureReadFaults::malformedRecordsAreToldAndTheCaptureIsKept_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<bool>("isCheck");
    QTest::newRow("a record of no samples, 16 channels") << 8 << false;
    QTest::newRow("a record of no samples, 32 channels") << 9 << false;
    QTest::newRow("wrong check bytes") << 9 << true;
}

void TstCaptureReadFaults::malformedRecordsAreToldAndTheCaptureIsKept()
{
    QFETCH(int, model);
    QFETCH(bool, isCheck);
    CaptureFaultDesk faults(std::make_unique<EmulatedRoad>(), model);
    QVERIFY(faults.isGood());
    QVERIFY(faults.captureWith([&](Instrument &instrument) {
        constexpr std::uint64_t group = 300;
        const auto format = model == 9 ? emulator::RecordFormat::Rle32 : emulator::RecordFormat::Rle16;
        if (isCheck) {
            instrument.faults().wrongCheckAt(group);
        } else {
            instrument.faults().zeroCountAt(format, group * 5);
        }
    }));
    QTRY_COMPARE(faults.desk->lastError(), 0); // the note comes before the end
    constexpr int malformed = 32;
    QVERIFY(faults.desk->states.contains({4, malformed}));
    QTRY_COMPARE(faults.desk->published, 1);
    QVERIFY(gDev->smpData->smpCount() > gDev->smpDepth() / 2);
    QVERIFY(faults.leavesNothing());
    QCOMPARE(faults.soundCapture(), QString());
    QVERIFY(!faults.desk->states.contains({4, malformed}));
}

QTEST_GUILESS_MAIN(TstCaptureReadFaults)
#include "tst_CaptureReadFaults.moc"
