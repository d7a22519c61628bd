// One running program without its windows: who may what, and what is told when the device is replaced.

#include "device/BringUpDesk.h"
#include "device/DeviceGlobals.h"
#include "support/BareSession.h"
#include "support/CaptureBuilder.h"
#include "support/HeldSource.h"

#include <QSignalSpy>

#include <chrono>
#include <thread>

using namespace std::chrono_literals;

class TstSession : public QObject {
    Q_OBJECT
private slots:
    void init();

    void theDeviceObjectIsThatOfTheConfiguration();
    void aNegativeModelGivesTheDeviceWithoutHardware();
    void theGlobalsAreTheSessionsAndGoWithIt();
    void anotherModelIsToldBeforeAndAfterTheSwap();
    void theSameModelIsNotReplaced();
    void nothingIsReplacedWhileAFileIsReadOrWritten();
    void nothingIsLookedForWhileAFileIsReadOrWritten();
    void aCaptureMayNotStartTwiceNorBesideAFile();
    void aCaptureIsToldAndItsDataToo();
    void theReportsOfAnEarlierDeviceObjectAreDropped();
    void aDeviceIsReplacedWithoutWaitingForTheSourceOfItsCapture();
    void theProgramEndsWithoutWaitingForTheSourceOfItsCapture();
    void whoTakesTheSourceAwayWaitsForAllCaptures();
    void aChangeOfChannelsIsTold();
    void aReplacedConfigurationMakesTheDeviceObjectAnew();
    void aReplacedConfigurationKeepsTheInstrument();
    void whatIsStoredIsAppliedWithoutAnyPanel();
};

void TstSession::init()
{
    QFile::remove(configPath());
    configLoad();
    memBudget = std::int64_t(1) << 30;
}

void TstSession::theDeviceObjectIsThatOfTheConfiguration()
{
    globalSet(QStringLiteral("devModel"), QStringLiteral("9"));
    const Session session(std::make_unique<UsbPlatformNone>());
    QCOMPARE(gDev->model, 9);
}

void TstSession::aNegativeModelGivesTheDeviceWithoutHardware()
{
    globalSet(QStringLiteral("devModel"), QStringLiteral("-3"));
    const Session session(std::make_unique<UsbPlatformNone>());
    QCOMPARE(gDev->model, 0);
}

void TstSession::theGlobalsAreTheSessionsAndGoWithIt()
{
    {
        const auto session = makeSession();
        QCOMPARE(gUsb, &session->transport());
        QCOMPARE(gDevInit, &session->bringUp());
        QCOMPARE(&devControl(), static_cast<DevControl *>(&session->control()));
        QVERIFY(!gUsb->isOpen());
    }
    QVERIFY(gUsb == nullptr && gDev == nullptr && gDevInit == nullptr);
    QVERIFY(devControl().transport() == nullptr);
}

void TstSession::anotherModelIsToldBeforeAndAfterTheSwap()
{
    const auto session = makeSession(0);
    QVector<int> models;
    connect(session.get(), &Session::sigDeviceLeaves, this, [&models] { models.append(gDev->model); });
    connect(session.get(), &Session::sigDeviceReplaced, this, [&models] { models.append(gDev->model); });
    QVERIFY(session->chooseModel(5));
    QCOMPARE(models, (QVector<int>{0, 5}));
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("5"));
}

void TstSession::theSameModelIsNotReplaced()
{
    const auto session = makeSession(8);
    CaptureBuilder{100}.fill(*gDev->smpData);
    const QSignalSpy replaced(session.get(), &Session::sigDeviceReplaced);
    QVERIFY(session->chooseModel(8));
    QCOMPARE(replaced.count(), 0);
    QCOMPARE(gDev->smpData->sampleCount(), 100);
}

void TstSession::nothingIsReplacedWhileAFileIsReadOrWritten()
{
    const auto session = makeSession(8);
    const QSignalSpy replaced(session.get(), &Session::sigDeviceReplaced);
    {
        const Session::FileJob job(*session);
        QVERIFY(!session->mayReplaceDevice() && !session->mayBeginFileJob() && !session->mayStartCapture());
        QVERIFY(!session->chooseModel(9));
        QVERIFY(session->chooseModel(8)); // it is one already
        QVERIFY(!session->replaceConfig());
        QCOMPARE(gDev->model, 8);
    }
    QCOMPARE(replaced.count(), 0);
    QVERIFY(session->mayReplaceDevice() && session->mayBeginFileJob() && session->mayStartCapture());
    QVERIFY(session->chooseModel(9));
}

void TstSession::nothingIsLookedForWhileAFileIsReadOrWritten()
{
    BringUpDesk desk;
    desk.add(runningInstrument(2));
    {
        const Session::FileJob job(*desk.session);
        desk.bus->plug();
        QTRY_VERIFY(desk.bus->with([](emulator::Instrument &i) { return i.attached(); }));
        desk.session->lookForDevice();
        QVERIFY(desk.reports.isEmpty());
    }
    QTRY_VERIFY(desk.has(6));
}

void TstSession::aCaptureMayNotStartTwiceNorBesideAFile()
{
    const auto session = makeSession(0);
    {
        const Session::FileJob job(*session);
        QVERIFY(!session->startCapture());
    }
    gDev->setSmpDepthIndex(14);
    QVERIFY(session->startCapture());
    QVERIFY(!session->mayStartCapture() && !session->startCapture());
    session->stopCapture();
    QTRY_VERIFY(session->mayStartCapture());
}

void TstSession::aCaptureIsToldAndItsDataToo()
{
    const auto session = makeSession(0);
    gDev->setSmpDepthIndex(0);
    QVector<int> states;
    bool published = false;
    connect(session.get(), &Session::sigSmpSta, this, [&](int sta, int, int) { states.append(sta); });
    connect(session.get(), &Session::sigSmpDataReady, this, [&] { published = true; });
    QVERIFY(session->startCapture());
    QTRY_VERIFY(published);
    QTRY_VERIFY(!states.isEmpty() && states.last() == 5);
    QCOMPARE(gDev->smpData->sampleCount(), 20000);
}

void TstSession::theReportsOfAnEarlierDeviceObjectAreDropped()
{
    const auto session = makeSession(0);
    gDev->setSmpDepthIndex(0);
    int told = 0;
    connect(session.get(), &Session::sigSmpSta, this, [&](int, int, int) { ++told; });
    connect(session.get(), &Session::sigSmpDataReady, this, [&] { ++told; });
    QVERIFY(session->startCapture());
    while (gDev->isCapturing()) { // no event: all reports wait
    }
    QVERIFY(session->chooseModel(9));
    QCoreApplication::processEvents();
    QCOMPARE(told, 0);
    emit gDev->sigSmpDataReady();
    QCOMPARE(told, 1);
}

void TstSession::aDeviceIsReplacedWithoutWaitingForTheSourceOfItsCapture()
{
    HeldSource source;
    const auto session = makeSession(0);
    int published = 0;
    connect(session.get(), &Session::sigSmpDataReady, this, [&published] { ++published; });
    QVERIFY(session->startCapture());
    source.entered.acquire();
    QVERIFY(session->chooseModel(9));
    QVERIFY2(!source.isReleased && !session->mayStartCapture(), "the former capture has not ended");
    source.letGo();
    QTRY_VERIFY(session->mayStartCapture());
    QVERIFY(source.isReleased);
    QCOMPARE(published, 0);
}

void TstSession::theProgramEndsWithoutWaitingForTheSourceOfItsCapture()
{
    HeldSource source;
    const auto session = makeSession(0);
    QVERIFY(session->startCapture());
    source.entered.acquire();
    QVERIFY(!session->end(1ms));
    QVERIFY(!source.isReleased);
    source.letGo();
    QVERIFY(session->end(30s));
}

void TstSession::whoTakesTheSourceAwayWaitsForAllCaptures()
{
    HeldSource source;
    const auto session = makeSession(0);
    QVERIFY(session->startCapture());
    source.entered.acquire();
    QVERIFY(session->chooseModel(9));
    std::thread helper([&source] { source.letGo(); });
    session->endCaptures();
    QVERIFY(source.isReleased);
    helper.join();
}

void TstSession::aChangeOfChannelsIsTold()
{
    const auto session = makeSession(0);
    const QSignalSpy changed(session.get(), &Session::sigChnEnaChanged);
    gDev->setChnEnable({false});
    QVERIFY(changed.count() > 0);
}

void TstSession::aReplacedConfigurationMakesTheDeviceObjectAnew()
{
    const auto session = makeSession(8);
    CaptureBuilder{100}.fill(*gDev->smpData);
    QSignalSpy replaced(session.get(), &Session::sigDeviceReplaced);
    QVERIFY(session->replaceConfig());
    QCOMPARE(replaced.count(), 1);
    QCOMPARE(gDev->model, 8);
    QCOMPARE(gDev->smpData->sampleCount(), 0);
    globalSet(QStringLiteral("devModel"), QStringLiteral("1"));
    QVERIFY(session->replaceConfig());
    QCOMPARE(gDev->model, 1);
    QVERIFY(!gDev->connected);
}

void TstSession::aReplacedConfigurationKeepsTheInstrument()
{
    BringUpDesk desk;
    desk.add(runningInstrument(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    deviceSet(QStringLiteral("RV2520"), QStringLiteral("chnVth"), QStringLiteral("1.2"));
    QVERIFY(desk.session->replaceConfig());
    QVERIFY(gDev->connected);
    const auto threshold = [](emulator::Instrument &i) { return i.outputs().threshold(0).volts(); };
    QTRY_VERIFY(std::abs(desk.bus->with(threshold) - 1.2) < 0.01);
    globalSet(QStringLiteral("devModel"), QStringLiteral("9"));
    QVERIFY(desk.session->replaceConfig());
    QVERIFY(!gDev->connected);
}

void TstSession::whatIsStoredIsAppliedWithoutAnyPanel()
{
    BringUpDesk desk;
    deviceSet(QStringLiteral("RV2540"), QStringLiteral("chnVth"), QStringLiteral("0.90"));
    deviceSet(QStringLiteral("RV2540"), QStringLiteral("chnVth2"), QStringLiteral("0.60"));
    desk.add(runningInstrument(9));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    desk.bus->with(0, [](emulator::Instrument &i) {
        const emulator::Outputs &outputs = i.outputs();
        QVERIFY(outputs.threshold(0).set && outputs.threshold(1).set);
        QVERIFY(std::abs(outputs.threshold(0).volts() - 0.9) < 0.01);
        QVERIFY(std::abs(outputs.threshold(1).volts() - 0.6) < 0.01);
        QVERIFY(outputs.pwm(0).enabled && outputs.pwm(1).enabled);
    });
}

QTEST_MAIN(TstSession)
#include "tst_Session.moc"
