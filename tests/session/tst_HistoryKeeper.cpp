// Which captures of a session are kept.

#include "device/BringUpDesk.h"
#include "device/DeviceGlobals.h"
#include "files/CaptureHistory.h"
#include "session/HistoryKeeper.h"
#include "settings/HistoryOptions.h"
#include "support/BareSession.h"
#include "support/CaptureBuilder.h"

#include <QTemporaryDir>

using namespace std::chrono_literals;

class TstHistoryKeeper : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_history.reset(); }

    void aCaptureOfAnInstrumentIsKept();
    void aSimulatedOneIsKeptOnlyIfTheOptionSaysSo_data();
    void aSimulatedOneIsKeptOnlyIfTheOptionSaysSo();
    void switchedOffNoCaptureIsKept();
    void theDataOfAFileIsNotKept();
    void aCaptureOfWhichNothingCameIsForgotten();
    void anotherModelTakesNoCaptureAway();
    void theDigitalChannelsOfTheAnalogModelAreKept();
    void theLimitsAreThoseOfTheOptions();

private:
    static void choose(KeepCaptures keep) { HistoryOptions{keep, 20, 2}.store(); }
    static void captureSimulated(Session &session)
    {
        gDev->setSmpDepthIndex(0);
        const QSignalSpy ready(&session, &Session::sigSmpDataReady);
        QVERIFY(session.startCapture());
        QTRY_COMPARE(ready.count(), 1);
        QTRY_VERIFY(session.mayStartCapture());
    }
    [[nodiscard]] int kept()
    {
        m_history->refresh();
        return m_history->finish(10s) ? m_history->entries().size() : -1;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<CaptureHistory> m_history;
};

void TstHistoryKeeper::init()
{
    QFile::remove(configPath());
    configLoad();
    memBudget = std::int64_t(1) << 30;
    m_dir = std::make_unique<QTemporaryDir>();
    m_history = std::make_unique<CaptureHistory>(HistoryFolder(m_dir->path()));
}

void TstHistoryKeeper::aCaptureOfAnInstrumentIsKept()
{
    BringUpDesk desk;
    HistoryKeeper keeper(*desk.session, *m_history);
    const QDateTime time(QDate(2026, 3, 9), QTime(7, 5, 1), Qt::UTC);
    keeper.now = [time] { return time; };
    desk.add(runningInstrument(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    captureSimulated(*desk.session);
    QCOMPARE(kept(), 1);
    const HistoryEntry entry = m_history->entries().constFirst();
    QCOMPARE(entry.model, gDev->name);
    QCOMPARE(entry.time, time);
    QCOMPARE(entry.samples, gDev->smpData->sampleCount());
    QCOMPARE(entry.frequency, gDev->smpFrequ());
}

void TstHistoryKeeper::aSimulatedOneIsKeptOnlyIfTheOptionSaysSo_data()
{
    QTest::addColumn<int>("keep");
    QTest::addColumn<int>("captures");
    QTest::newRow("those of instruments") << 0 << 0;
    QTest::newRow("all") << 1 << 1;
    QTest::newRow("none") << 2 << 0;
}

void TstHistoryKeeper::aSimulatedOneIsKeptOnlyIfTheOptionSaysSo()
{
    QFETCH(int, keep);
    QFETCH(int, captures);
    choose(KeepCaptures(keep));
    const auto session = makeSession(0);
    const HistoryKeeper keeper(*session, *m_history);
    captureSimulated(*session);
    QCOMPARE(kept(), captures);
}

void TstHistoryKeeper::switchedOffNoCaptureIsKept()
{
    choose(KeepCaptures::None);
    BringUpDesk desk;
    choose(KeepCaptures::None); // the desk has read the stored configuration
    const HistoryKeeper keeper(*desk.session, *m_history);
    desk.add(runningInstrument(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    captureSimulated(*desk.session);
    QCOMPARE(kept(), 0);
}

void TstHistoryKeeper::theDataOfAFileIsNotKept()
{
    choose(KeepCaptures::All);
    const auto session = makeSession(0);
    const HistoryKeeper keeper(*session, *m_history);
    captureSimulated(*session);
    QCOMPARE(kept(), 1); // written: it would give way to the file's data
    CaptureBuilder{100}.fill(*gDev->smpData);
    emit gDev->sigSmpDataReady();
    QCOMPARE(kept(), 1);
}

void TstHistoryKeeper::aCaptureOfWhichNothingCameIsForgotten()
{
    choose(KeepCaptures::All);
    const auto session = makeSession(0);
    const HistoryKeeper keeper(*session, *m_history);
    emit gDev->sigSmpSta(0, 0, 0); // a start that ends in an error
    QVERIFY(session->replaceConfig());
    CaptureBuilder{100}.fill(*gDev->smpData);
    emit gDev->sigSmpDataReady(); // a file's
    QCOMPARE(kept(), 0);
}

void TstHistoryKeeper::anotherModelTakesNoCaptureAway()
{
    choose(KeepCaptures::All);
    const auto session = makeSession(0);
    const HistoryKeeper keeper(*session, *m_history);
    QSemaphore mayGo;
    m_history->roomLeft = [&mayGo](const QString &) {
        mayGo.acquire();
        return std::int64_t(1) << 40;
    };
    captureSimulated(*session);
    QVERIFY(session->chooseModel(9));
    mayGo.release();
    QCOMPARE(kept(), 1);
}

void TstHistoryKeeper::theDigitalChannelsOfTheAnalogModelAreKept()
{
    choose(KeepCaptures::All);
    constexpr int withAnalog = 97;
    const auto session = makeSession(withAnalog);
    QVERIFY(gDev->isAnalogModel());
    const HistoryKeeper keeper(*session, *m_history);
    captureSimulated(*session);
    QCOMPARE(kept(), 1);
    const HistoryEntry entry = m_history->entries().constFirst();
    QCOMPARE(entry.model, gDev->name);
    const OpenedCapture opened =
        CaptureFile([](const ConfigDocument &) { return gDev->chnEnable.size(); }).open(entry.path);
    QVERIFY(opened.outcome.isDone() && opened.capture);
    const SmpData &shown = *gDev->smpData;
    QCOMPARE(opened.capture->smpCount(), shown.smpCount());
    for (int chn = 0; chn < shown.chnCount; ++chn) {
        QCOMPARE(opened.capture->edgeCount(chn, 0, shown.smpCount()), shown.edgeCount(chn, 0, shown.smpCount()));
    }
    SmpAChnPoint point{};
    QCOMPARE(opened.capture->aChnPoints(0, 0.0, 1.0, 1, &point), 0);
}

void TstHistoryKeeper::theLimitsAreThoseOfTheOptions()
{
    HistoryOptions{KeepCaptures::All, 2, 1}.store();
    const auto session = makeSession(0);
    HistoryKeeper keeper(*session, *m_history);
    int second = 0;
    keeper.now = [&second] { return QDateTime(QDate(2026, 3, 9), QTime(7, 5, ++second), Qt::UTC); };
    for (int i = 1; i <= 3; ++i) {
        captureSimulated(*session);
        QCOMPARE(kept(), std::min(i, 2));
    }
    QCOMPARE(m_history->entries().constFirst().time.time().second(), 3);
}

QTEST_MAIN(TstHistoryKeeper)
#include "tst_HistoryKeeper.moc"
