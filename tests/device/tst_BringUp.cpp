// Bring-up over a bus with emulated instruments: every model, and what users do with plugs.

#include "BringUpDesk.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"

#include <QSet>

namespace {

const QVector<int> modelCodes{1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97};

void addModels()
{
    QTest::addColumn<int>("model");
    for (const int code : modelCodes) {
        QTest::addRow("model %d", code) << code;
    }
}

/// One that is away for a second of real time when its firmware starts.
emulator::InstrumentOptions lateInstrument(int model)
{
    emulator::InstrumentOptions options = instrumentOf(model);
    options.returnAfter = 20 * 1000 * emulator::nanosecondsPerMillisecond;
    return options;
}

emulator::SetupPacket lastRequest(BringUpDesk &desk)
{
    return desk.bus->with([](emulator::Instrument &instrument) { return instrument.log().entries().back().setup; });
}

} // namespace

class TstBringUp : public QObject {
    Q_OBJECT
private slots:
    void everyModelComesUpFromTheBareController_data() { addModels(); }
    void everyModelComesUpFromTheBareController();
    void everyModelComesUpWithItsFirmwareRunning_data() { addModels(); }
    void everyModelComesUpWithItsFirmwareRunning();
    void theVariantOfTheStreamingModelTakesItsOwnImage();
    void earlierBuildsAreToldByTheVariantByte_data();
    void earlierBuildsAreToldByTheVariantByte();
    void theReportsComeInOrder();
    void theLastRequestIsTheEndOfTheBringUp();
    void aDeviceThatWasThereBeforeTheProgramIsFound();
    void aProductWithoutFirmwareStaysWhereItIs();
    void aProductWithoutFirmwareThatRunsOneComesUp();
    void unpluggingForgetsIdentityAndVersion();
    void theSameInstrumentKeepsTheDeviceObjectOverAReplug();
    void anotherModelGetsAnotherDeviceObject();
    void anArrivalThatIsToldTwiceIsOne();
    void aDeviceThatDoesNotComeBackIsToldAfterTenSeconds();
    void aDeviceThatComesBackLateIsBroughtUpAllTheSame();
    void aDamagedFirstCopyOfTheIdentityIsNoMatter();
    void twoDamagedCopiesOfTheIdentityAreAnError();
    void anEepromOfNoiseEndsWithACode_data();
    void anEepromOfNoiseEndsWithACode();
    void aNameOfAnotherModelIsRefused();
    void anFpgaThatTellsAnErrorIsTold();
    void aStatusAfterTheUploadIsJudged_data();
    void aStatusAfterTheUploadIsJudged();
    void aSecondInstrumentWaitsForTheFirstToGo();
    void aFullSpeedInstrumentComesUpAsWell();
    void theIdentityBlockIsKeptForTheDeviceObjectsToCome();
};

void TstBringUp::everyModelComesUpFromTheBareController()
{
    QFETCH(int, model);
    BringUpDesk desk;
    desk.add(instrumentOf(model));
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(desk.reports.first(), (Report{0, 0, 0}));
    QCOMPARE(gDev->model, model);
    QVERIFY(gDev->connected);
    QCOMPARE(gDev->devUid.toHex(), QByteArray("1032547698badcfe"));
    QCOMPARE(int(hardwareVersion.load()), 0x0102);
    const int clock = desk.bus->with([](emulator::Instrument &i) { return int(i.model().clockMhz); });
    QCOMPARE(gDev->clockFrequ, std::int64_t(clock) * 1000000);
    QVERIFY(desk.bus->with([](emulator::Instrument &i) { return i.firmware().complaints().empty(); }));
    QVERIFY(desk.bus->with([](emulator::Instrument &i) { return i.fpga().enabled(); }));
}

void TstBringUp::everyModelComesUpWithItsFirmwareRunning()
{
    QFETCH(int, model);
    BringUpDesk desk;
    desk.add(runningInstrument(model));
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(desk.reports.first(), (Report{2, 0, 0}));
    QCOMPARE(gDev->model, model);
    QVERIFY(gDev->connected);
    QVERIFY(!desk.has(0) && !desk.has(1));
}

void TstBringUp::theVariantOfTheStreamingModelTakesItsOwnImage()
{
    BringUpDesk desk;
    desk.add(runningInstrument(5));
    desk.bus->with([](emulator::Instrument &i) {
        i.eeprom().setIdentity(7, 0);
        i.fpga().expect(testImages::fpga("RV2310A_1"));
    });
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(gDev->model, 5);
}

void TstBringUp::earlierBuildsAreToldByTheVariantByte_data()
{
    QTest::addColumn<int>("hardware");
    QTest::addColumn<int>("id");
    QTest::addColumn<int>("variant");
    QTest::newRow("6 by identity 3") << 6 << 3 << 1;
    QTest::newRow("7 by identity 2") << 7 << 2 << 1;
    QTest::newRow("2 by identity 3") << 2 << 3 << 0;
    QTest::newRow("3 by identity 2") << 3 << 2 << 0;
}

void TstBringUp::earlierBuildsAreToldByTheVariantByte()
{
    QFETCH(int, hardware);
    QFETCH(int, id);
    QFETCH(int, variant);
    BringUpDesk desk;
    desk.add(runningInstrument(hardware));
    desk.bus->with([=](emulator::Instrument &i) { i.eeprom().setIdentity(std::uint8_t(id), std::uint8_t(variant)); });
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(gDev->model, hardware);
}

void TstBringUp::theReportsComeInOrder()
{
    BringUpDesk desk;
    desk.add(lateInstrument(8)); // one that is back before its thread tells of the sending ends that report
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QVector<int> states;
    int last = 0;
    for (const Report &report : desk.reports) {
        if (states.isEmpty() || states.last() != report.at(0)) {
            states.append(report.at(0));
            last = 0;
        }
        QVERIFY(report.at(2) >= last); // what a state tells never goes back
        last = report.at(2);
    }
    QCOMPARE(states, (QVector<int>{0, 1, 2, 4, 5, 6}));
}

void TstBringUp::theLastRequestIsTheEndOfTheBringUp()
{
    BringUpDesk desk;
    desk.add(runningInstrument(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    QCOMPARE(int(lastRequest(desk).request), 0x38);
    QCOMPARE(int(lastRequest(desk).requestType), 0x40);
}

void TstBringUp::aDeviceThatWasThereBeforeTheProgramIsFound()
{
    BringUpDesk desk(0, BringUpDesk::WithWindow); // nobody listens
    desk.add(runningInstrument(2));
    desk.bus->plug();
    QTRY_VERIFY(desk.bus->with([](emulator::Instrument &i) { return i.attached(); }));
    desk.session->lookForDevice();
    QVERIFY(desk.reports.isEmpty()); // it is looked for aside
    QTRY_VERIFY(desk.has(6));
    QCOMPARE(desk.reports.first(), (Report{2, 0, 0}));
}

void TstBringUp::aProductWithoutFirmwareStaysWhereItIs()
{
    emulator::InstrumentOptions options = instrumentOf(8);
    options.product = 0x02A1;
    BringUpDesk desk;
    desk.bus->add(options);
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.reports, (QVector<Report>{{0, 0, 0}, {0, 1, 0}}));
}

void TstBringUp::aProductWithoutFirmwareThatRunsOneComesUp()
{
    emulator::InstrumentOptions options = runningInstrument(8);
    options.product = 0x02A1;
    BringUpDesk desk;
    desk.bus->add(options);
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
}

void TstBringUp::unpluggingForgetsIdentityAndVersion()
{
    BringUpDesk desk;
    desk.add(runningInstrument(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    desk.bus->unplug();
    QTRY_VERIFY(desk.has(7));
    QCOMPARE(desk.reports.last(), (Report{7, 0, 0}));
    QVERIFY(!gDev->connected);
    QCOMPARE(gDev->devUid, QByteArray(8, '\0'));
    QCOMPARE(int(hardwareVersion.load()), 0);
    QVERIFY(!desk.transport->isOpen());
}

void TstBringUp::theSameInstrumentKeepsTheDeviceObjectOverAReplug()
{
    BringUpDesk desk;
    desk.add(instrumentOf(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    const DevBase *const device = gDev;
    for (int i = 0; i < 3; ++i) {
        desk.bus->unplug();
        QTRY_VERIFY(desk.has(7));
        desk.reports.clear();
        desk.bus->plug();
        QTRY_VERIFY(desk.has(6));
        QVERIFY(gDev == device);
        QVERIFY(gDev->connected);
    }
}

void TstBringUp::anotherModelGetsAnotherDeviceObject()
{
    BringUpDesk desk(8);
    desk.add(runningInstrument(9));
    desk.add(runningInstrument(97));
    desk.bus->plug(0);
    QTRY_VERIFY(desk.has(6));
    QCOMPARE(gDev->model, 9);
    desk.bus->unplug(0);
    QTRY_VERIFY(desk.has(7));
    desk.reports.clear();
    desk.bus->plug(1);
    QTRY_VERIFY(desk.has(6));
    QCOMPARE(gDev->model, 97);
    QCOMPARE(desk.asked, (QVector<int>{9, 97}));
}

void TstBringUp::anArrivalThatIsToldTwiceIsOne()
{
    BringUpDesk desk;
    desk.bus->announceTwice();
    desk.add(instrumentOf(3));
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(desk.reports.count({0, 0, 0}), 1);
    QCOMPARE(desk.reports.count({2, 0, 0}), 1);
    QCOMPARE(desk.asked.size(), 1);
}

void TstBringUp::aDeviceThatDoesNotComeBackIsToldAfterTenSeconds()
{
    BringUpDesk desk;
    desk.init->skipPause = [](int) { return true; };
    desk.add(instrumentOf(2));
    desk.bus->with([](emulator::Instrument &i) { i.faults().neverReturn(); });
    desk.bus->plug();
    QTRY_VERIFY(desk.has(1, 5));
    QVector<Report> expected{{0, 0, 0}, {1, 0, 0}};
    for (int elapsed = 200; elapsed <= 10000; elapsed += 200) {
        expected.append({1, 0, elapsed});
    }
    expected.append({1, 5, 0});
    QCOMPARE(desk.reports, expected);
}

void TstBringUp::aDeviceThatComesBackLateIsBroughtUpAllTheSame()
{
    BringUpDesk desk;
    desk.init->skipPause = [](int) { return true; }; // ten seconds are over before it is back
    desk.add(lateInstrument(2));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(1, 5));
    QTRY_VERIFY(desk.has(6));
    QVERIFY(gDev->connected);
}

void TstBringUp::aDamagedFirstCopyOfTheIdentityIsNoMatter()
{
    BringUpDesk desk;
    desk.add(runningInstrument(9));
    desk.bus->with([](emulator::Instrument &i) { i.eeprom().damageFirstCopy(); });
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    QCOMPARE(gDev->model, 9);
}

void TstBringUp::twoDamagedCopiesOfTheIdentityAreAnError()
{
    BringUpDesk desk;
    desk.add(runningInstrument(9));
    desk.bus->with([](emulator::Instrument &i) {
        i.eeprom().damageFirstCopy();
        i.eeprom().damageSecondCopy();
    });
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.firstError(), (Report{3, 1}));
}

void TstBringUp::anEepromOfNoiseEndsWithACode_data()
{
    QTest::addColumn<int>("model");
    for (const int code : modelCodes) {
        QTest::addRow("model %d", code) << code;
    }
}

void TstBringUp::anEepromOfNoiseEndsWithACode()
{
    QFETCH(int, model);
    BringUpDesk desk;
    desk.add(runningInstrument(model));
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        desk.bus->with([seed](emulator::Instrument &i) { i.eeprom().fillWithNoise(seed); });
        desk.reports.clear();
        desk.bus->plug();
        QTRY_VERIFY(desk.hasEnded());
        // One product has no identity to be wrong: there the name is.
        QCOMPARE(desk.firstError(), model == 4 ? (Report{5, 11}) : (Report{3, 1}));
        QVERIFY(!gDev->connected);
        desk.bus->unplug();
        QTRY_VERIFY(!desk.transport->isOpen());
    }
}

void TstBringUp::aNameOfAnotherModelIsRefused()
{
    BringUpDesk desk;
    desk.add(runningInstrument(8));
    desk.bus->with([](emulator::Instrument &i) { i.eeprom().bytes()[emulator::Eeprom::blockAt] = 'X'; });
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.reports.last(), (Report{5, 11, 0}));
    QCOMPARE(gDev->model, 8); // the object is that of the instrument, unconnected
    QVERIFY(!gDev->connected);
}

void TstBringUp::anFpgaThatTellsAnErrorIsTold()
{
    BringUpDesk desk;
    desk.add(runningInstrument(8));
    desk.bus->with([](emulator::Instrument &i) { i.fpga().expect(testImages::fpga("RV2320")); });
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.reports.last(), (Report{4, emulator::Fpga::WrongImage, 0}));
    QVERIFY(desk.asked.isEmpty());
}

void TstBringUp::aStatusAfterTheUploadIsJudged_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("error");
    QTest::newRow("no answer") << 8 << 0xFFFF << 4 << 7;
    QTest::newRow("all zero") << 8 << 0 << 4 << 8;
    QTest::newRow("low bits 3") << 8 << 0x85C3 << 4 << 9;
    QTest::newRow("low bits 0") << 8 << 0x85C0 << 4 << 9;
    QTest::newRow("a fault, found by the device object") << 8 << 0x85D1 << 5 << 13;
    QTest::newRow("memory not ready") << 8 << 0x81C1 << 5 << 12;
    QTest::newRow("not sound") << 97 << 0x8501 << 5 << 10;
    QTest::newRow("no answer, of the model without an image") << 1 << 0xFFFF << 4 << 7;
    QTest::newRow("memory not ready, of a model without any") << 5 << 0x81C1 << 6 << 0;
    QTest::newRow("a fault of a model without memory") << 1 << 0x0012 << 6 << 0;
}

void TstBringUp::aStatusAfterTheUploadIsJudged()
{
    QFETCH(int, model);
    QFETCH(int, status);
    QFETCH(int, state);
    QFETCH(int, error);
    BringUpDesk desk;
    desk.add(runningInstrument(model));
    desk.bus->with([status](emulator::Instrument &i) { i.faults().setStatus(std::uint16_t(status)); });
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.reports.last(), (Report{state, error, 0}));
    QCOMPARE(gDev->connected, state == 6);
}

void TstBringUp::aSecondInstrumentWaitsForTheFirstToGo()
{
    BringUpDesk desk;
    desk.add(runningInstrument(2));
    desk.add(runningInstrument(3));
    desk.add(runningInstrument(9));
    desk.bus->plug(0);
    QTRY_VERIFY(desk.has(6));
    desk.bus->plug(1);
    desk.bus->unplug(0);
    QTRY_VERIFY(desk.has(7));
    // The removal closes the first; the next message opens what is there.
    desk.init->slotDevChange();
    QTRY_VERIFY(desk.reports.count({6, 0, 0}) == 2);
    QCOMPARE(gDev->model, 3);
    const int count = desk.reports.size();
    desk.bus->plug(2);
    QTest::qWait(50);
    QCOMPARE(desk.reports.size(), count);
    QVERIFY(gDev->connected);
}

void TstBringUp::aFullSpeedInstrumentComesUpAsWell()
{
    emulator::InstrumentOptions options = instrumentOf(1);
    options.speed = emulator::Speed::Full;
    BringUpDesk desk;
    desk.add(options);
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(int(desk.transport->bcdUsb), 0x0110);
}

void TstBringUp::theIdentityBlockIsKeptForTheDeviceObjectsToCome()
{
    BringUpDesk desk;
    QVERIFY(desk.init->identity().isEmpty());
    desk.add(runningInstrument(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    QCOMPARE(desk.init->identity().size(), 12);
    QCOMPARE(desk.init->identity().left(6), QByteArray("RV2520"));
    const auto other = createDevice(8);
    QCOMPARE(other->initDevice(desk.init->identity()), 0);
    QVERIFY(other->connected);
}

QTEST_GUILESS_MAIN(TstBringUp)
#include "tst_BringUp.moc"
