// Bring-up with everything that goes wrong on the wire, at every transfer.

#include "BringUpDesk.h"
#include "device/DeviceGlobals.h"
#include "support/WrongTransfer.h"

using emulator::Fault;
using emulator::FaultAction;
using Entry = emulator::TransferLog::Entry;

namespace {

/// What a bring-up is expected to come to.
struct Outcome {
    Report error{0, 0};   ///< the first error
    bool connects = true; ///< all the same
};

const Outcome sound;

/// The transfers of a sound bring-up from the bare controller.
std::vector<Entry> soundTransfers(int model)
{
    BringUpDesk desk;
    desk.add(instrumentOf(model));
    desk.bus->plug();
    const bool ended = QTest::qWaitFor([&desk] { return desk.has(6); });
    return ended ? desk.bus->with([](emulator::Instrument &i) { return i.log().entries(); }) : std::vector<Entry>();
}

/// What the failure of one of these transfers comes to.
Outcome outcomeOfFailure(const std::vector<Entry> &transfers, std::size_t number)
{
    const Entry &entry = transfers.at(number);
    const emulator::SetupPacket &setup = entry.setup;
    if (entry.kind == emulator::TransferLog::Kind::BulkOut) {
        return {{4, 3}, false};
    }
    switch (setup.request) {
    case 0xA0:
        return {{1, 2}, false};
    case 0xA2:
        return {{3, 2}, setup.value == 0x20}; // an instrument needs no version
    case 0x50:
    case 0x10:
        return {{4, 2}, false};
    case 0x20: {
        // The first status is that of the bring-up, the second that of the device object.
        const auto isStatus = [](const Entry &e) { return e.setup.request == 0x20 && e.setup.toHost(); };
        if (!isStatus(entry)) {
            return sound; // what the outputs are told is not missed
        }
        const bool isFirst = std::find_if(transfers.begin(), transfers.end(), isStatus) == transfers.begin() + number;
        return {{isFirst ? 4 : 5, 2}, false};
    }
    default:
        return sound; // the identity and the last request are not missed
    }
}

} // namespace

class TstBringUpFaults : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void everyTransferThatGoesWrongIsToldAndTheNextAttachWorks_data();
    void everyTransferThatGoesWrongIsToldAndTheNextAttachWorks();
    void aPlugPulledAtAnyTransferIsToldAndTheNextAttachWorks();
    void aPlugPulledAtAnyTransferAndPutBackAtOnceComesUp();
    void theCoordinatorMayGoDuringAnyTransfer();
    void aDeviceThatFallsSilentIsToldAfterTheTimeOut_data();
    void aDeviceThatFallsSilentIsToldAfterTheTimeOut();

private:
    static constexpr int model = 2;
    std::vector<Entry> m_transfers;
};

void TstBringUpFaults::initTestCase()
{
    m_transfers = soundTransfers(model);
    // 22 of the firmware, three EEPROM reads, three of the upload, the switch, two times the status, two of the
    // identity, the threshold, four of the outputs, and the last.
    QCOMPARE(m_transfers.size(), std::size_t(22 + 3 + 3 + 1 + 2 + 2 + 1 + 4 + 1));
}

void TstBringUpFaults::everyTransferThatGoesWrongIsToldAndTheNextAttachWorks_data()
{
    QTest::addColumn<Wrong>("wrong");
    QTest::newRow("stalled") << Wrong::Stalled;
    QTest::newRow("failed") << Wrong::Failed;
    QTest::newRow("a byte short") << Wrong::Short;
    QTest::newRow("nothing moved") << Wrong::Nothing;
}

void TstBringUpFaults::everyTransferThatGoesWrongIsToldAndTheNextAttachWorks()
{
    QFETCH(Wrong, wrong);
    for (std::size_t k = 0; k < m_transfers.size(); ++k) {
        const Entry &entry = m_transfers.at(k);
        const bool isBulk = entry.kind == emulator::TransferLog::Kind::BulkOut;
        Outcome expected = outcomeOfFailure(m_transfers, k);
        const bool isCut = wrong == Wrong::Short || wrong == Wrong::Nothing;
        if (isCut && entry.length == 0) {
            continue; // what has no data cannot be short
        }
        if (wrong == Wrong::Short && isBulk) {
            expected = sound; // the rest follows
        }
        BringUpDesk desk;
        desk.add(instrumentOf(model));
        desk.bus->with([&](emulator::Instrument &i) { i.faults().atTransfer(k, faultOf(wrong, entry.length)); });
        desk.bus->plug();
        QTRY_VERIFY(desk.hasEnded() && !desk.init->isWorking());
        QVERIFY2(desk.firstError() == expected.error, qPrintable(QStringLiteral("transfer %1").arg(k)));
        QTRY_COMPARE(gDev->connected, expected.connects);
        if (expected.connects) {
            continue;
        }
        QVERIFY(!desk.has(6));
        desk.bus->unplug();
        QTRY_VERIFY(!desk.transport->isOpen());
        desk.reports.clear();
        desk.bus->plug();
        QTRY_VERIFY(desk.hasEnded());
        QCOMPARE(desk.firstError(), (Report{0, 0}));
        QVERIFY(gDev->connected);
    }
}

void TstBringUpFaults::aPlugPulledAtAnyTransferIsToldAndTheNextAttachWorks()
{
    for (std::size_t k = 0; k < m_transfers.size(); ++k) {
        BringUpDesk desk;
        desk.add(instrumentOf(model));
        desk.bus->with([&](emulator::Instrument &i) { i.faults().atTransfer(k, {FaultAction::Unplug}); });
        desk.bus->plug();
        QTRY_VERIFY(desk.hasEnded() && !desk.init->isWorking() && !desk.transport->isOpen());
        QCoreApplication::processEvents(); // all that the threads have told: an error may follow the first
        const Outcome expected = outcomeOfFailure(m_transfers, k);
        if (expected.error == Report{0, 0}) {
            // It was connected, and is told to have gone, or its removal was known just before.
            QTRY_VERIFY(desk.has(7) || desk.firstError() == (Report{5, 1}));
        } else {
            const Report error = desk.firstError();
            QCOMPARE(error.at(0), expected.error.at(0));
            QCOMPARE(error.at(1), expected.error.at(1));
            QVERIFY(!desk.has(6) && !desk.has(7));
        }
        QVERIFY(!gDev->connected);
        desk.reports.clear();
        desk.bus->plug();
        QTRY_VERIFY(desk.hasEnded());
        QCOMPARE(desk.firstError(), (Report{0, 0}));
        QVERIFY(gDev->connected);
        QCOMPARE(desk.bus->with([](emulator::Instrument &i) { return i.log().afterUnplug(); }), std::size_t(0));
    }
}

void TstBringUpFaults::aPlugPulledAtAnyTransferAndPutBackAtOnceComesUp()
{
    for (std::size_t k = 0; k < m_transfers.size(); ++k) {
        BringUpDesk desk;
        desk.add(instrumentOf(model));
        desk.bus->with([&](emulator::Instrument &i) { i.faults().atTransfer(k, {FaultAction::Unplug}); });
        desk.bus->plug();
        const auto isPulled = [k](emulator::Instrument &i) { return !i.attached() && i.faults().transfers() > k; };
        while (!desk.bus->with(isPulled)) {
            QCoreApplication::processEvents();
        }
        desk.bus->plug();
        QVERIFY2(QTest::qWaitFor([&] { return gDev->connected && !desk.init->isWorking(); }, BringUpDesk::longWait),
                 qPrintable(QStringLiteral("transfer %1").arg(k)));
        // The stage that was cut short may have told so; nothing of it comes behind the new beginning.
        const int begun = std::max(desk.reports.lastIndexOf({0, 0, 0}), 0);
        for (int i = begun; i < desk.reports.size(); ++i) {
            QCOMPARE(desk.reports.at(i).at(1), 0);
        }
        QCOMPARE(desk.reports.last(), (Report{6, 0, 0}));
    }
}

void TstBringUpFaults::theCoordinatorMayGoDuringAnyTransfer()
{
    for (std::size_t k = 0; k < m_transfers.size(); ++k) {
        BringUpDesk desk;
        desk.add(instrumentOf(model));
        constexpr std::uint64_t delay = 2 * emulator::nanosecondsPerSecond; // 100 ms of real time
        desk.bus->with([&](emulator::Instrument &i) { i.faults().atTransfer(k, {FaultAction::Delay, delay}); });
        desk.bus->plug();
        const auto count = [&desk] {
            return desk.bus->with([](emulator::Instrument &i) { return i.faults().transfers(); });
        };
        QTRY_VERIFY(count() > k);
        desk.session.reset();
        const std::uint64_t seen = count();
        QCoreApplication::processEvents();
        QCOMPARE(count(), seen);
    }
}

void TstBringUpFaults::aDeviceThatFallsSilentIsToldAfterTheTimeOut_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("request");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("sta");
    QTest::newRow("at its identity") << 0xC0 << 0xA2 << 0x08 << 3;
    QTest::newRow("at its number") << 0x40 << 0x60 << 0 << 5;
    QTest::newRow("at a threshold") << 0x40 << 0x20 << 0x48 << 5;
    QTest::newRow("at an output") << 0x40 << 0x20 << 0x78 << 5;
    QTest::newRow("at the last request") << 0x40 << 0x38 << 0 << 5;
}

void TstBringUpFaults::aDeviceThatFallsSilentIsToldAfterTheTimeOut()
{
    QFETCH(int, type);
    QFETCH(int, request);
    QFETCH(int, value);
    QFETCH(int, sta);
    BringUpDesk desk;
    desk.add(runningInstrument(model));
    desk.bus->with([=](emulator::Instrument &i) {
        i.faults().atRequest({std::uint8_t(type), std::uint8_t(request), std::uint16_t(value)}, 0,
                             {FaultAction::Silence});
    });
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.reports.last(), (Report{sta, 2, 0}));
    QVERIFY(!desk.has(6) && !gDev->connected);
    // The first time-out was the end.
    const auto seen = desk.bus->with([](emulator::Instrument &i) { return i.log().entries().back().setup; });
    QCOMPARE(int(seen.request), request);
    QCOMPARE(int(seen.value), value);
}

QTEST_GUILESS_MAIN(TstBringUpFaults)
#include "tst_BringUpFaults.moc"
