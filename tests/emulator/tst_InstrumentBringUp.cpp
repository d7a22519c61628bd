// The instrument from the plug to the point where it takes captures.

#include "emulator/Bench.h"

#include <QtTest>

using namespace bench;
using emulator::Speed;

namespace {

InstrumentOptions options(int model)
{
    InstrumentOptions o;
    o.model = model;
    return o;
}

InstrumentOptions readyOptions(int model)
{
    InstrumentOptions o = options(model);
    o.firmwareInside = true;
    return o;
}

} // namespace

class TstInstrumentBringUp : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyModelComesUp_data();
    void everyModelComesUp();
    void withoutFirmwareTheInterfaceHasNoEndPoints();
    void endPointsFollowTheProductAndTheSpeed_data();
    void endPointsFollowTheProductAndTheSpeed();
    void aBareControllerKnowsOnlyRamRequests();
    void theFirmwareMakesItLeaveTheBusAndComeBackAsAnotherDevice();
    void aHexFirmwareIsRefusedWhenTheProcessorWasNotStopped();
    void aHexFirmwareOutsideTheRamIsRefused();
    void anEmptyFirmwareDoesNotStart();
    void aFirmwareOtherThanTheExpectedOneDoesNotStart();
    void anImageIsRefusedBeforeItsLoadWasOpened();
    void anImageWriteOfMoreThan1024BytesIsRefused();
    void anImageThatStartsOutsideWhatWasLoadedDoesNotStart();
    void theEepromTellsTheModelTwiceAndTheVersion();
    void aDamagedFirstCopyLeavesTheSecond();
    void theFpgaTakesOnlyWholeAndSoundUploads_data();
    void theFpgaTakesOnlyWholeAndSoundUploads();
    void anUploadInUnevenPiecesIsAsGood();
    void theStatusTellsHowFarTheFpgaIs();
    void theIdentityIsToldOnlyAfterItsQuestion();
    void thresholdsStandForTheirVoltages_data();
    void thresholdsStandForTheirVoltages();
    void pwmOutputsTakeTheirCounts();
    void registersStallUntilTheFpgaRuns();
    void requestsOfAWrongLengthStall();
    void answersAreAsLongAsThereIsSomethingToTell();
    void pullingThePlugForgetsFirmwareAndFpga();
    void requestsAfterThePlugWasPulledAreCounted();
    void allVendorRequestsAreRecorded();
};

void TstInstrumentBringUp::everyModelComesUp_data()
{
    QTest::addColumn<int>("model");
    for (const int model : {1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97}) {
        QTest::addRow("model %d", model) << model;
    }
}

void TstInstrumentBringUp::everyModelComesUp()
{
    QFETCH(int, model);
    Instrument device(options(model));
    QVERIFY(bringUp(device));
    const bool streams = model == 1 || model == 5;
    QCOMPARE((status(device) & 0x8F00) == 0x8500, !streams);
    QCOMPARE(status(device) & 0x00D0, 0x00C0);
    QVERIFY(sent(device, 0x38, 0)); // the last request of a bring-up
    QVERIFY(device.firmware().complaints().empty());
}

void TstInstrumentBringUp::withoutFirmwareTheInterfaceHasNoEndPoints()
{
    Instrument device(options(8));
    device.attach();
    const Bytes configuration = device.configurationDescriptor();
    QCOMPARE(configuration.size(), std::size_t(18));
    QCOMPARE(int(configuration[9 + 4]), 0);
    Bytes buffer(512);
    QCOMPARE(device.bulkIn(0x86, buffer).outcome, Outcome::Stalled);
    QCOMPARE(device.bulkOut(0x02, buffer).outcome, Outcome::Stalled);
}

void TstInstrumentBringUp::endPointsFollowTheProductAndTheSpeed_data()
{
    QTest::addColumn<int>("product");
    QTest::addColumn<bool>("full");
    QTest::addColumn<QByteArray>("endpoints");
    QTest::addRow("high speed") << 0x01A2 << false << QByteArray::fromHex("07050202000200 07058602000200");
    QTest::addRow("full speed") << 0x01A2 << true << QByteArray::fromHex("07050202400000 07058602400000");
    QTest::addRow("without bulk OUT") << 0x01A3 << false << QByteArray::fromHex("07058202000200");
}

void TstInstrumentBringUp::endPointsFollowTheProductAndTheSpeed()
{
    QFETCH(int, product);
    QFETCH(bool, full);
    QFETCH(QByteArray, endpoints);
    InstrumentOptions o = readyOptions(1);
    o.product = std::uint16_t(product);
    o.speed = full ? Speed::Full : Speed::High;
    Instrument device(o);
    device.attach();
    const Bytes d = device.deviceDescriptor();
    QCOMPARE(d.size(), std::size_t(18));
    QCOMPARE(number(d, 8, 2), std::uint64_t(0x77A1));
    QCOMPARE(int(number(d, 10, 2)), product);
    const Bytes c = device.configurationDescriptor();
    QCOMPARE(number(c, 2, 2), std::uint64_t(c.size()));
    QCOMPARE(int(c[13]), endpoints.size() / 7);
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(c.data()) + 18, int(c.size()) - 18), endpoints);
}

void TstInstrumentBringUp::aBareControllerKnowsOnlyRamRequests()
{
    Instrument device(options(8));
    device.attach();
    QCOMPARE(ask(device, 0xA2, 0x08, 8).size(), std::size_t(0));
    QCOMPARE(ask(device, 0x20, 0, 2).size(), std::size_t(0));
    QVERIFY(!sent(device, 0x38, 0));
    QVERIFY(sent(device, 0xA0, 0xE600, {1}));
}

void TstInstrumentBringUp::theFirmwareMakesItLeaveTheBusAndComeBackAsAnotherDevice()
{
    Instrument device(options(8));
    device.attach();
    const unsigned first = device.generation();
    QVERIFY(sendHexFirmware(device));
    QVERIFY(device.attached());
    device.tick(19 * millisecond);
    QVERIFY(device.attached());
    device.tick(1 * millisecond);
    QVERIFY(!device.attached());
    QCOMPARE(send(device, 0x38, 0).outcome, Outcome::Gone);
    device.tick(149 * millisecond);
    QVERIFY(!device.attached());
    device.tick(1 * millisecond);
    QVERIFY(device.attached());
    QVERIFY(device.generation() != first);
    QCOMPARE(int(device.configurationDescriptor()[13]), 2);
}

void TstInstrumentBringUp::aHexFirmwareIsRefusedWhenTheProcessorWasNotStopped()
{
    Instrument device(options(8));
    device.attach();
    QVERIFY(!sent(device, 0xA0, 0, {1, 2, 3}));
    QVERIFY(sent(device, 0xA0, 0xE600, {0}));
    device.tick(1000 * millisecond);
    QVERIFY(!device.firmwareRuns());
    QCOMPARE(device.firmware().complaints().size(), std::size_t(1));
}

void TstInstrumentBringUp::aHexFirmwareOutsideTheRamIsRefused()
{
    Instrument device(options(8));
    device.attach();
    QVERIFY(sent(device, 0xA0, 0xE600, {1}));
    QVERIFY(sent(device, 0xA0, 0xE1FF, {1}));
    QVERIFY(!sent(device, 0xA0, 0xE1FF, {1, 2}));
    QVERIFY(!sent(device, 0xA0, 0x0000, {1}, 1));
}

void TstInstrumentBringUp::anEmptyFirmwareDoesNotStart()
{
    Instrument device(options(8));
    device.attach();
    QVERIFY(sent(device, 0xA0, 0xE600, {1}) && sent(device, 0xA0, 0xE600, {0}));
    device.tick(1000 * millisecond);
    QVERIFY(device.attached());
    QVERIFY(!device.firmwareRuns());
}

void TstInstrumentBringUp::aFirmwareOtherThanTheExpectedOneDoesNotStart()
{
    Instrument device(options(8));
    device.firmware().expect({{0, 0x02}, {1, 0x00}, {2, 0x04}});
    device.attach();
    QVERIFY(sendHexFirmware(device));
    device.tick(1000 * millisecond);
    QVERIFY(!device.firmwareRuns());
    device.firmware().expect({{0, 0x02}, {1, 0x00}, {2, 0x03}});
    QVERIFY(sendHexFirmware(device));
    device.tick(1000 * millisecond);
    QVERIFY(device.firmwareRuns());
}

void TstInstrumentBringUp::anImageIsRefusedBeforeItsLoadWasOpened()
{
    Instrument device(options(65));
    device.attach();
    QVERIFY(!sent(device, 0xA0, 0, {1, 2, 3, 4}, 0x4000));
    QVERIFY(sendImageFirmware(device));
    device.tick(1000 * millisecond);
    QVERIFY(device.firmwareRuns());
}

void TstInstrumentBringUp::anImageWriteOfMoreThan1024BytesIsRefused()
{
    Instrument device(options(65));
    device.attach();
    QCOMPARE(ask(device, 0xA0, 0, 1).size(), std::size_t(1));
    QVERIFY(!sent(device, 0xA0, 0, Bytes(1025), 0x4000));
    QVERIFY(sent(device, 0xA0, 0, Bytes(1024), 0x4000));
}

void TstInstrumentBringUp::anImageThatStartsOutsideWhatWasLoadedDoesNotStart()
{
    Instrument device(options(65));
    device.attach();
    QCOMPARE(ask(device, 0xA0, 0, 1).size(), std::size_t(1));
    QVERIFY(sent(device, 0xA0, 0x0100, {1, 2, 3, 4}, 0x4000));
    QVERIFY(!sent(device, 0xA0, 0x0104, {}, 0x4000));
    device.tick(1000 * millisecond);
    QVERIFY(!device.firmwareRuns());
    QVERIFY(sent(device, 0xA0, 0x0103, {}, 0x4000));
    QCOMPARE(device.firmware().entry(), 0x40000103U);
}

void TstInstrumentBringUp::theEepromTellsTheModelTwiceAndTheVersion()
{
    InstrumentOptions o = readyOptions(9);
    o.hardwareVersion = 0x1234;
    Instrument device(o);
    device.eeprom().setIdentity(2, 1);
    device.attach();
    QCOMPARE(ask(device, 0xA2, 0x08, 8), (Bytes{2, 0xFD, 1, 0xFE, 2, 0xFD, 1, 0xFE}));
    QCOMPARE(ask(device, 0xA2, 0x20, 4), (Bytes{0x34, 0x12, 0xCB, 0xED}));
    QCOMPARE(ask(device, 0xA2, 0x10, 12), (Bytes{'R', 'V', '2', '5', '4', '0', 0xFF, 0, 0xE8, 3, 200, 0}));
}

void TstInstrumentBringUp::aDamagedFirstCopyLeavesTheSecond()
{
    Instrument device(readyOptions(8));
    device.eeprom().damageFirstCopy();
    device.attach();
    const Bytes id = ask(device, 0xA2, 0x08, 8);
    QVERIFY(id[0] != std::uint8_t(~id[1]));
    QCOMPARE(int(id[4]), 5);
    QCOMPARE(id[5], std::uint8_t(~5));
}

void TstInstrumentBringUp::theFpgaTakesOnlyWholeAndSoundUploads_data()
{
    QTest::addColumn<int>("announced");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("status");
    const QByteArray image(5000, 'x');
    QTest::addRow("sound") << 5000 << image + QByteArray(2 * 4096 - 5000, 0) << 0;
    QTest::addRow("not announced") << -1 << image + QByteArray(2 * 4096 - 5000, 0) << 0x11;
    QTest::addRow("a byte short") << 5000 << image + QByteArray(2 * 4096 - 5001, 0) << 0x12;
    QTest::addRow("a byte more") << 5000 << image + QByteArray(2 * 4096 - 4999, 0) << 0x13;
    QTest::addRow("filled with ones") << 5000 << image + QByteArray(2 * 4096 - 5000, 1) << 0x14;
    QTest::addRow("another image") << 5000 << QByteArray(5000, 'y') + QByteArray(2 * 4096 - 5000, 0) << 0x15;
    QTest::addRow("half a block and a byte more") << 2049 + 4096 << QByteArray(3 * 4096, 'x') << 0x14;
    QTest::addRow("half a block") << 2048 << QByteArray(2048, 'x') + QByteArray(2048, 0) << 0x15;
}

void TstInstrumentBringUp::theFpgaTakesOnlyWholeAndSoundUploads()
{
    QFETCH(int, announced);
    QFETCH(QByteArray, bytes);
    QFETCH(int, status);
    Instrument device(readyOptions(8));
    device.fpga().expect(Bytes(5000, 'x'));
    device.attach();
    if (announced >= 0) {
        QVERIFY(sent(device, 0x50, 0, little(std::uint64_t(announced), 4)));
    }
    const Bytes data(bytes.begin(), bytes.end());
    for (std::size_t at = 0; at < data.size(); at += 4096) {
        const std::size_t piece = std::min<std::size_t>(4096, data.size() - at);
        QCOMPARE(device.bulkOut(0x02, std::span(data).subspan(at, piece)).bytes, piece);
    }
    QCOMPARE(ask(device, 0x50, 0, 1), Bytes{std::uint8_t(status)});
    QCOMPARE(device.fpga().loaded(), status == 0);
}

void TstInstrumentBringUp::anUploadInUnevenPiecesIsAsGood()
{
    Instrument device(readyOptions(8));
    device.attach();
    QVERIFY(sent(device, 0x50, 0, little(3000, 4)));
    const Bytes first(1000, 'a');
    Bytes rest(2 * 4096 - 1000);
    std::fill_n(rest.begin(), 2000, 'a');
    QCOMPARE(device.bulkOut(0x02, first).bytes, first.size());
    QCOMPARE(device.bulkOut(0x02, rest).bytes, rest.size());
    QCOMPARE(ask(device, 0x50, 0, 1), Bytes{0});
    QCOMPARE(device.fpga().writes(), (std::vector<std::size_t>{1000, 2 * 4096 - 1000}));
}

void TstInstrumentBringUp::theStatusTellsHowFarTheFpgaIs()
{
    Instrument device(readyOptions(8));
    device.attach();
    QCOMPARE(int(status(device)), 0xFFFF);
    QVERIFY(sent(device, 0x10, 1)); // before the image: in vain
    QCOMPARE(int(status(device)), 0xFFFF);
    QCOMPARE(uploadFpga(device, 4096), 0);
    QCOMPARE(int(status(device)), 0);
    QVERIFY(sent(device, 0x10, 1));
    QCOMPARE(int(status(device)), 0x85C1);
    QVERIFY(sent(device, 0x10, 0));
    QCOMPARE(int(status(device)), 0);
}

void TstInstrumentBringUp::theIdentityIsToldOnlyAfterItsQuestion()
{
    InstrumentOptions o = readyOptions(8);
    o.uid = {1, 2, 3, 4, 5, 6, 7, 8};
    o.uidDelay = 40 * millisecond;
    Instrument device(o);
    device.attach();
    QCOMPARE(ask(device, 0x60, 0, 12), Bytes(12, 0));
    QVERIFY(!sent(device, 0x60, 0, {0xA3, 0x01, 0xCB}));
    QVERIFY(sent(device, 0x60, 0, {0xA3, 0x01, 0xCA}));
    device.tick(39 * millisecond);
    QCOMPARE(ask(device, 0x60, 0, 12), Bytes(12, 0));
    device.tick(1 * millisecond);
    QCOMPARE(ask(device, 0x60, 0, 12), (Bytes{0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 0, 0}));
}

void TstInstrumentBringUp::thresholdsStandForTheirVoltages_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("range");
    QTest::addColumn<double>("volts");
    QTest::addRow("4.0") << 848 << 0 << 4.0;
    QTest::addRow("2.8") << 969 << 242 << 2.8;
    QTest::addRow("1.65") << 621 << 242 << 1.65;
    QTest::addRow("-4.0") << 0xFF87 << 727 << -4.0;
    QTest::addRow("-1.0") << 787 << 727 << -1.0;
}

void TstInstrumentBringUp::thresholdsStandForTheirVoltages()
{
    QFETCH(int, code);
    QFETCH(int, range);
    QFETCH(double, volts);
    Instrument device(options(9));
    QVERIFY(bringUp(device));
    const Bytes payload = little(std::uint64_t(code), 2) + little(std::uint64_t(range), 2);
    QVERIFY(!device.outputs().threshold(1).set);
    QVERIFY(sent(device, 0x20, 0x48, payload));
    QVERIFY(sent(device, 0x20, 0x4C, payload));
    for (const std::size_t index : {0, 1}) {
        QVERIFY(device.outputs().threshold(index).set);
        QVERIFY(std::abs(device.outputs().threshold(index).volts() - volts) < 0.005);
    }
    QVERIFY(!sent(device, 0x20, 0x48, little(100, 2) + little(500, 2)));
}

void TstInstrumentBringUp::pwmOutputsTakeTheirCounts()
{
    Instrument device(options(8));
    QVERIFY(bringUp(device));
    QVERIFY(sent(device, 0x20, 0x70, little(200000, 4) + little(100000, 4)));
    QVERIFY(sent(device, 0x20, 0x78, little(2000, 4) + little(2000, 4)));
    QVERIFY(sent(device, 0x20, 0x02, {2}));
    QCOMPARE(device.outputs().pwm(0).period, 200000U);
    QCOMPARE(device.outputs().pwm(0).high, 100000U);
    QCOMPARE(device.outputs().pwm(1).high, 2000U);
    QVERIFY(!device.outputs().pwm(0).enabled);
    QVERIFY(device.outputs().pwm(1).enabled);
    QVERIFY(!sent(device, 0x20, 0x70, little(0, 4) + little(0, 4)));
    QVERIFY(!sent(device, 0x20, 0x70, little(10, 4) + little(11, 4)));
}

void TstInstrumentBringUp::registersStallUntilTheFpgaRuns()
{
    Instrument device(readyOptions(8));
    device.attach();
    QVERIFY(!run(device));
    QVERIFY(!configure(device, {}));
    QVERIFY(!sent(device, 0x20, 0x02, {3}));
    QCOMPARE(ask(device, 0x20, 0x10, 12).size(), std::size_t(0));
    QCOMPARE(uploadFpga(device, 100), 0);
    QVERIFY(!run(device));
    QVERIFY(sent(device, 0x10, 1));
    QVERIFY(configure(device, {}));
    QVERIFY(run(device));
}

void TstInstrumentBringUp::requestsOfAWrongLengthStall()
{
    Instrument device(options(8));
    QVERIFY(bringUp(device));
    QVERIFY(!sent(device, 0x20, 0x20, Bytes(15)));
    QVERIFY(!sent(device, 0x20, 0x30, Bytes(17)));
    QVERIFY(!sent(device, 0x20, 0x00, {}));
    QVERIFY(!sent(device, 0x20, 0x00, {1}));
    QVERIFY(!sent(device, 0x20, 0x48, Bytes(3)));
    QVERIFY(!sent(device, 0x77, 0));
}

void TstInstrumentBringUp::answersAreAsLongAsThereIsSomethingToTell()
{
    Instrument device(options(8));
    QVERIFY(bringUp(device));
    QCOMPARE(ask(device, 0x20, 0x00, 64), (Bytes{0xC1, 0x85}));
    QCOMPARE(ask(device, 0x20, 0x00, 1), Bytes{0xC1});
    QCOMPARE(ask(device, 0x20, 0x10, 64).size(), std::size_t(12));
    QCOMPARE(ask(device, 0xEE, 0x00, 4).size(), std::size_t(0));
}

void TstInstrumentBringUp::pullingThePlugForgetsFirmwareAndFpga()
{
    Instrument device(options(8));
    QVERIFY(bringUp(device));
    device.detach();
    QCOMPARE(ask(device, 0x20, 0, 2).size(), std::size_t(0));
    device.attach();
    QVERIFY(!device.firmwareRuns());
    QVERIFY(bringUp(device));
    // Also in the midst of the return from a firmware start.
    device.detach();
    device.attach();
    QVERIFY(sendHexFirmware(device));
    device.tick(50 * millisecond);
    device.detach();
    device.tick(1000 * millisecond);
    QVERIFY(!device.attached());
}

void TstInstrumentBringUp::requestsAfterThePlugWasPulledAreCounted()
{
    Instrument device(readyOptions(8));
    device.attach();
    device.detach();
    QCOMPARE(send(device, 0x38, 0).outcome, Outcome::Gone);
    Bytes buffer(512);
    QCOMPARE(device.bulkIn(0x86, buffer).outcome, Outcome::Gone);
    QCOMPARE(device.bulkOut(0x02, buffer).outcome, Outcome::Gone);
    QCOMPARE(device.log().afterUnplug(), std::size_t(3));
}

void TstInstrumentBringUp::allVendorRequestsAreRecorded()
{
    Instrument device(readyOptions(8));
    device.attach();
    QVERIFY(sent(device, 0x50, 0, little(100, 4)));
    const Bytes block(4096);
    device.bulkOut(0x02, block);
    QVERIFY(!sent(device, 0x99, 7));
    const auto &entries = device.log().entries();
    QCOMPARE(entries.size(), std::size_t(3));
    QCOMPARE(entries[0].data, little(100, 4));
    QCOMPARE(entries[1].kind, emulator::TransferLog::Kind::BulkOut);
    QCOMPARE(entries[1].length, std::size_t(4096));
    QCOMPARE(int(entries[2].setup.request), 0x99);
    QCOMPARE(entries[2].outcome, Outcome::Stalled);
}

QTEST_GUILESS_MAIN(TstInstrumentBringUp)
#include "tst_InstrumentBringUp.moc"
