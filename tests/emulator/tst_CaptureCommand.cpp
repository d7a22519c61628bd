// "luxcli capture" in process: what ends it early, and what keeps it from a capture.

#include "device/DevRequests.h"
#include "emulator/CaptureCommandDesk.h"
#include "platform/UsbPlatformEmulated.h"
#include "support/FakeUsb.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>

#include <cstdio>
#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

class EmulatedRoad final : public InstrumentRoad {
public:
    InstrumentBus &bus() override { return m_bus; }
    std::unique_ptr<UsbPlatform> makePlatform() override { return std::make_unique<UsbPlatformEmulated>(m_bus); }

private:
    EmulatedBus m_bus;
};

struct Desk : CaptureCommandDesk {
    Desk() : CaptureCommandDesk(std::make_unique<EmulatedRoad>()) {}

    [[nodiscard]] QStringList files() const { return QDir(QFileInfo(path()).path()).entryList(QDir::Files); }
};

/// Wants the end as soon as the instrument waits for its trigger.
bool isWaiting()
{
    constexpr int waiting = 2;
    return gDev != nullptr && gDev->isCapturing() && gDev->smpSta.load() == waiting;
}

/// The standard error goes into a file as long as this lives.
class ErrorFile {
public:
    ErrorFile() : m_good(m_file.open())
    {
#ifdef Q_OS_UNIX
        std::fflush(stderr);
        m_before = dup(STDERR_FILENO);
        m_good = m_good && dup2(m_file.handle(), STDERR_FILENO) >= 0;
#else
        m_good = false;
#endif
    }
    ~ErrorFile()
    {
#ifdef Q_OS_UNIX
        std::fflush(stderr);
        dup2(m_before, STDERR_FILENO);
        close(m_before);
#endif
    }
    ErrorFile(const ErrorFile &) = delete;
    ErrorFile &operator=(const ErrorFile &) = delete;

    [[nodiscard]] bool isGood() const
    {
        return m_good;
    }
    [[nodiscard]] QByteArray read()
    {
        std::fflush(stderr);
        m_file.seek(0);
        return m_file.readAll();
    }

private:
    QTemporaryFile m_file;
    bool m_good;
    [[maybe_unused]] int m_before = -1;
};

int captureOn(std::unique_ptr<UsbPlatform> platform, const QString &path)
{
    memBudget = std::int64_t(1) << 32;
    CaptureCommand::Host host;
    host.platform = [&platform] { return std::move(platform); };
    host.takeInterrupt = [] { return false; };
    return CaptureCommand::run({QStringLiteral("-o"), path}, host);
}

} // namespace

class TstCaptureCommand : public QObject {
    Q_OBJECT
private slots:
    void anInterruptKeepsWhatThereIs_data();
    void anInterruptKeepsWhatThereIs();
    void anInterruptBeforeTheCaptureLeavesNoFile();
    void aTriggerThatDoesNotComeLeavesNoFile_data();
    void aTriggerThatDoesNotComeLeavesNoFile();
    void settingsReachTheInstrumentAndTheFile();
    void theInstrumentIsSwitchedOffAtTheEnd();
    void anotherModelIsRefused();
    void whatTheModelHasNotIsWrongUsage_data();
    void whatTheModelHasNotIsWrongUsage();
    void aRateThatSoManyChannelsDoNotAllowIsWrongUsage();
    void anInstrumentThatFailsIsTold();
    void oneThatIsUnpluggedBetweenCapturesEndsTheRest();
    void anotherModelBetweenCapturesEndsTheRest();
    void noInstrumentIsTold();
    void oneThatCannotBeOpenedIsTold();
    void obstaclesAreNamed();
    void instrumentsAreListedWithWhatIsKnownOfThem();
    void pathsOfSeveralCapturesAreNumbered();
    void modelsAreNamedByNameOrCode();
};

void TstCaptureCommand::anInterruptKeepsWhatThereIs_data()
{
    QTest::addColumn<int>("model");
    QTest::newRow("memory") << 8;
    QTest::newRow("stream") << 5;
}

void TstCaptureCommand::anInterruptKeepsWhatThereIs()
{
    QFETCH(int, model);
    Desk desk;
    QVERIFY(desk.add(model));
    desk.wantsEnd = isWaiting;
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k --trigger 3:rising --repeat 1")), 130);
    const CaptureSource source = CaptureSource::open(desk.path());
    QVERIFY2(source.data != nullptr, qPrintable(source.error));
    QVERIFY(source.data->smpCount() > 0);
    QCOMPARE(desk.files(), QStringList{QStringLiteral("out.cxdat")});
}

void TstCaptureCommand::anInterruptBeforeTheCaptureLeavesNoFile()
{
    Desk desk;
    QVERIFY(desk.add(8));
    desk.wantsEnd = [] { return true; };
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --trigger 3:rising")), 130);
    QCOMPARE(desk.files(), QStringList());
}

void TstCaptureCommand::aTriggerThatDoesNotComeLeavesNoFile_data()
{
    anInterruptKeepsWhatThereIs_data();
}

void TstCaptureCommand::aTriggerThatDoesNotComeLeavesNoFile()
{
    QFETCH(int, model);
    Desk desk;
    QVERIFY(desk.add(model));
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k --trigger 3:rising --timeout 50ms")), 1);
    QCOMPARE(desk.files(), QStringList());
}

void TstCaptureCommand::settingsReachTheInstrumentAndTheFile()
{
    Desk desk;
    QVERIFY(desk.add(8));
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --rate 50M --depth 200k --channels 0-2,9 --threshold 0.9 "
                                         "--trigger 1:rising --position 30%")),
             0);
    const CaptureSource source = CaptureSource::open(desk.path());
    QVERIFY2(source.data != nullptr, qPrintable(source.error));
    QCOMPARE(source.data->smpFrequ(), std::int64_t(50'000'000));
    QCOMPARE(source.data->smpCount(), std::int64_t(200'000));
    QCOMPARE(source.data->trgPos(), std::int64_t(60'000));
    for (int chn = 0; chn < 16; ++chn) {
        QCOMPARE(source.data->lastPosition(chn) >= 0, chn <= 2 || chn == 9);
    }
    QCOMPARE(deviceGet(QStringLiteral("RV2520"), QStringLiteral("chnVth")), QStringLiteral("0.90"));
    const auto vth = vthCodes(0.9);
    const auto sent = desk.road->bus().with([](emulator::Instrument &i) { return i.log().entries(); });
    const bool isSent = std::any_of(sent.begin(), sent.end(), [&vth](const auto &entry) {
        return entry.setup.value == (1 + 17) * 4 && !entry.data.empty() &&
               entry.data.at(0) == std::uint8_t(vth.threshold & 0xFF);
    });
    QVERIFY(isSent);
}

void TstCaptureCommand::theInstrumentIsSwitchedOffAtTheEnd()
{
    Desk desk;
    QVERIFY(desk.add(8));
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k")), 0);
    const auto sent = desk.road->bus().with([](emulator::Instrument &i) { return i.log().entries(); });
    QVERIFY(!sent.empty());
    QCOMPARE(int(sent.back().setup.request), int(devRequest::fpgaSwitch));
    QCOMPARE(int(sent.back().setup.value), int(devRequest::fpgaOff));
}

void TstCaptureCommand::anotherModelIsRefused()
{
    Desk desk;
    QVERIFY(desk.add(8));
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k --model RV2540")), 1);
    QCOMPARE(desk.files(), QStringList());
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k --model rv2520")), 0);
}

void TstCaptureCommand::whatTheModelHasNotIsWrongUsage_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments : {"--rate 33M", "--depth 3M", "--channels 16", "--trigger 16:rising",
                                  "--channels 0-3 --trigger 4:rising", "--depth 1"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TstCaptureCommand::whatTheModelHasNotIsWrongUsage()
{
    QFETCH(QString, arguments);
    Desk desk;
    QVERIFY(desk.add(8));
    QCOMPARE(desk.capture(QStringLiteral("-o OUT ") + arguments), 2);
    QCOMPARE(desk.files(), QStringList());
}

void TstCaptureCommand::aRateThatSoManyChannelsDoNotAllowIsWrongUsage()
{
    Desk desk;
    QVERIFY(desk.add(5));
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k --rate 100M --channels 0-15")), 2);
    QCOMPARE(desk.files(), QStringList());
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k --rate 100M")), 0);
    const CaptureSource source = CaptureSource::open(desk.path());
    QCOMPARE(source.data->smpFrequ(), std::int64_t(100'000'000));
    QVERIFY(source.data->lastPosition(0) >= 0 && source.data->lastPosition(15) < 0);
}

void TstCaptureCommand::anInstrumentThatFailsIsTold()
{
    Desk desk;
    QVERIFY(desk.add(8));
    desk.made = [&desk](Session &) {
        desk.road->bus().with([](emulator::Instrument &instrument) {
            instrument.faults().atInByte(100, emulator::Fault{emulator::FaultAction::Stall});
        });
    };
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k")), 1);
    QCOMPARE(desk.files(), QStringList());
}

void TstCaptureCommand::oneThatIsUnpluggedBetweenCapturesEndsTheRest()
{
    Desk desk;
    QVERIFY(desk.add(8));
    desk.wantsEnd = [&desk] {
        if (QFileInfo::exists(desk.path(QStringLiteral("out-1.cxdat")))) {
            desk.road->bus().unplug();
        }
        return false;
    };
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k --repeat 3")), 1);
    QCOMPARE(desk.files(), QStringList{QStringLiteral("out-1.cxdat")});
}

void TstCaptureCommand::anotherModelBetweenCapturesEndsTheRest()
{
    Desk desk;
    QVERIFY(desk.add(5));
    desk.road->bus().unplug(0);
    QVERIFY(desk.add(8));
    bool isOther = false;
    desk.wantsEnd = [&] {
        if (!isOther && QFileInfo::exists(desk.path(QStringLiteral("out-1.cxdat")))) {
            isOther = true;
            desk.road->bus().unplug(1);
            desk.road->bus().plug(0);
            isOther = QTest::qWaitFor([] { return gDev->model == 5 && gDev->connected; });
        }
        return false;
    };
    QCOMPARE(desk.capture(QStringLiteral("-o OUT --depth 20k --repeat 3")), 1);
    QVERIFY(isOther);
    QCOMPARE(desk.files(), QStringList{QStringLiteral("out-1.cxdat")});
}

void TstCaptureCommand::noInstrumentIsTold()
{
    const FileFolder folder;
    QCOMPARE(captureOn(std::make_unique<FakeUsb>(), folder.path(QStringLiteral("out.cxdat"))), 1);
    QVERIFY(!QFileInfo::exists(folder.path(QStringLiteral("out.cxdat"))));
}

void TstCaptureCommand::oneThatCannotBeOpenedIsTold()
{
    const FileFolder folder;
    const QString path = folder.path(QStringLiteral("out.cxdat"));
    FakeUsb clean;
    clean.devices = {FakeUsbDevice{}};
    (void)surveyInstruments(clean);
    ErrorFile errors;
    for (int at = 1; at <= clean.operations; ++at) {
        auto usb = std::make_unique<FakeUsb>();
        usb->devices = {FakeUsbDevice{}};
        usb->devices[0].initialises = false;
        usb->failAt = at;
        usb->failWith = {UsbError::Refused, 3};
        QCOMPARE(captureOn(std::move(usb), path), 1);
        QVERIFY(!QFileInfo::exists(path));
    }
    if (errors.isGood()) {
        const QByteArray told = errors.read();
        QVERIFY2(told.contains(": no right to open it: the udev rule 60-corvanlux.rules"), told);
        QVERIFY2(told.contains(": another program uses it\n"), told);
    }
}

void TstCaptureCommand::obstaclesAreNamed()
{
    using State = FoundInstrument::State;
    const auto obstacle = [](State state) {
        FoundInstrument instrument;
        instrument.state = state;
        return obstacleOf(instrument);
    };
    QVERIFY(obstacle(State::Ready).isEmpty() && obstacle(State::NoFirmware).isEmpty());
    QVERIFY(obstacle(State::InUse).contains(QStringLiteral("another program")));
    QVERIFY(obstacle(State::NoRights).contains(QStringLiteral("60-corvanlux.rules")));
    QVERIFY(!obstacle(State::Unusable).isEmpty());
}

void TstCaptureCommand::instrumentsAreListedWithWhatIsKnownOfThem()
{
    using State = FoundInstrument::State;
    const FoundInstrument known{QStringLiteral("usb:003:007"), State::Ready, 0x01A2, 9,
                                QByteArray::fromHex("1032547698BADCFE")};
    const FoundInstrument unknown{QStringLiteral("usb:001:004"), State::NoRights, 0, 0, {}};
    const FileFolder folder;
    const auto written = [&](bool isJson) {
        Output out(folder.path(QStringLiteral("list")));
        writeInstruments(out, {known, unknown}, isJson);
        return out.finish(0) == 0 ? folder.read(QStringLiteral("list")).split('\n') : QList<QByteArray>();
    };
    const QList<QByteArray> text = written(false);
    QCOMPARE(text.size(), 3);
    QCOMPARE(text[0], QByteArray("RV2540\t1032547698BADCFE\tusb:003:007\tready"));
    QVERIFY2(text[1].startsWith("-\t-\tusb:001:004\tno-rights (") && text[1].contains("60-corvanlux.rules"), text[1]);
    const QList<QByteArray> lines = written(true);
    const QJsonObject first = QJsonDocument::fromJson(lines.value(0)).object();
    QCOMPARE(first, (QJsonObject{{QStringLiteral("model"), QStringLiteral("RV2540")},
                                 {QStringLiteral("code"), 9},
                                 {QStringLiteral("serial"), QStringLiteral("1032547698BADCFE")},
                                 {QStringLiteral("port"), QStringLiteral("usb:003:007")},
                                 {QStringLiteral("state"), QStringLiteral("ready")}}));
    const QJsonObject second = QJsonDocument::fromJson(lines.value(1)).object();
    for (const char *key : {"model", "code", "serial"}) {
        QVERIFY2(second.value(QLatin1String(key)).isNull(), key);
    }
}

void TstCaptureCommand::pathsOfSeveralCapturesAreNumbered()
{
    using CaptureCommand::numberedPath;
    QCOMPARE(numberedPath(QStringLiteral("a/out.cxdat"), 1, 1), QStringLiteral("a/out.cxdat"));
    QCOMPARE(numberedPath(QStringLiteral("a/out.cxdat"), 3, 9), QStringLiteral("a/out-3.cxdat"));
    QCOMPARE(numberedPath(QStringLiteral("out.x.cxdat"), 7, 100), QStringLiteral("out.x-007.cxdat"));
    QCOMPARE(numberedPath(QString(), 7, 100), QString());
}

void TstCaptureCommand::modelsAreNamedByNameOrCode()
{
    using CaptureCommand::isModel;
    QVERIFY(isModel(QStringLiteral("RV2520"), QStringLiteral("RV2520"), 8));
    QVERIFY(isModel(QStringLiteral("rv2520"), QStringLiteral("RV2520"), 4));
    QVERIFY(isModel(QStringLiteral("8"), QStringLiteral("RV2520"), 8));
    QVERIFY(!isModel(QStringLiteral("8"), QStringLiteral("RV2520"), 4));
    QVERIFY(!isModel(QStringLiteral("RV25"), QStringLiteral("RV2520"), 8));
}

QTEST_GUILESS_MAIN(TstCaptureCommand)
#include "tst_CaptureCommand.moc"
