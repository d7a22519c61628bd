// "luxcli capture" on all models over the real libusb, from the look at the bus to the file.

#include "device/DevModels.h"
#include "device/DeviceSurvey.h"
#include "device/UsbPlatformLibusb.h"
#include "emulator/CaptureCommandDesk.h"
#include "support/UmockdevBus.h"

namespace {

class UmockdevRoad final : public InstrumentRoad {
public:
    InstrumentBus &bus() override { return m_bus; }
    std::unique_ptr<UsbPlatform> makePlatform() override { return makeUsbPlatformLibusb(); }

private:
    UmockdevBus m_bus;
};

} // namespace

class TstCaptureCommandUmockdev : public QObject {
    Q_OBJECT
private slots:
    void everyModelIsFoundAndCapturesIntoAFile_data();
    void everyModelIsFoundAndCapturesIntoAFile();
    void anInstrumentIsSentItsFirmware();
    void anUnpluggedInstrumentLeavesNoFile();
};

void TstCaptureCommandUmockdev::everyModelIsFoundAndCapturesIntoAFile_data()
{
    QTest::addColumn<int>("model");
    for (const int code : {1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97}) {
        QTest::addRow("model %d", code) << code;
    }
}

namespace {

/// One look at the bus, as "luxcli devices" takes it.
FoundInstrument foundOn(InstrumentRoad &road)
{
    const std::unique_ptr<UsbPlatform> platform = road.makePlatform();
    const std::vector<FoundInstrument> found = surveyInstruments(*platform);
    return found.size() == 1 ? found.front() : FoundInstrument{};
}

} // namespace

void TstCaptureCommandUmockdev::everyModelIsFoundAndCapturesIntoAFile()
{
    QFETCH(int, model);
    CaptureCommandDesk desk(std::make_unique<UmockdevRoad>());
    QVERIFY(desk.add(model));
    const FoundInstrument found = foundOn(*desk.road);
    QCOMPARE(int(found.state), int(FoundInstrument::State::Ready));
    QCOMPARE(found.model, model);
    QCOMPARE(found.uid, QByteArray::fromHex("1032547698BADCFE"));
    const std::int64_t depth = createDevice(model)->smpDepths.first();
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --model %1 --depth %2 --trigger 1:rising --position 20 --timeout 20s")
                              .arg(model)
                              .arg(depth)),
             0);
    const CaptureSource source = CaptureSource::open(desk.path());
    QCOMPARE(source.error, QString());
    QCOMPARE(source.model, model);
    const SmpData &data = *source.data;
    QCOMPARE(data.smpCount(), depth);
    // The model with analog channels does not tell where its trigger is; one that streams finds it in words.
    const std::int64_t before = model == 97 ? depth / 5 : data.trgPos();
    QVERIFY(before >= depth / 5 && before < depth / 5 + 16);
    QCOMPARE(differenceOf(data, *CaptureCommandDesk::makeSignal(), CaptureCommandDesk::triggerAt - before), QString());
}

void TstCaptureCommandUmockdev::anInstrumentIsSentItsFirmware()
{
    CaptureCommandDesk desk(std::make_unique<UmockdevRoad>());
    QVERIFY(desk.add(8, false));
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k --repeat 2")), 0);
    QVERIFY(!desk.hasFile());
    for (const char *name : {"out-1.cxdat", "out-2.cxdat"}) {
        const CaptureSource source = CaptureSource::open(desk.path(QString::fromLatin1(name)));
        QVERIFY2(source.data != nullptr, qPrintable(source.error));
        QCOMPARE(source.data->smpCount(), std::int64_t(20000));
    }
}

void TstCaptureCommandUmockdev::anUnpluggedInstrumentLeavesNoFile()
{
    for (const int model : {5, 8}) {
        CaptureCommandDesk desk(std::make_unique<UmockdevRoad>());
        QVERIFY(desk.add(model));
        desk.made = [&desk](Session &) {
            desk.road->bus().with([](emulator::Instrument &instrument) {
                instrument.faults().atInByte(100, emulator::Fault{emulator::FaultAction::Unplug});
            });
        };
        QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k")), 1);
        QVERIFY(!desk.hasFile());
        QCOMPARE(QDir(QFileInfo(desk.path()).path()).entryList(QDir::Files), QStringList());
    }
}

int main(int argc, char **argv)
{
    if (!UmockdevBus::enter(argv)) {
        return 1;
    }
    QCoreApplication app(argc, argv);
    TstCaptureCommandUmockdev test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_CaptureCommandUmockdev.moc"
