#include "AnalyzerDesk.h"
#include "analyzer/CloneThread.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr std::int64_t rate = 1000000; // Hz

} // namespace

class TstAnalyzerSimulation : public QObject {
    Q_OBJECT

private slots:
    void anAnalyzerDrivesItsChannel();
    void blocksGoOnWhereTheLastOneEnded();
    void withoutAnalyzersNobodyDrivesAnything();
    void aCloneThatThrowsDrivesNothingAndIsTold();
    void aCloneThatNeverReturnsIsLeftBehindAndTold();
    void aJobThatReturnsTooLateIsClearedUpOnItsThread();
    void aMachineThatStandsStillLosesNoJob();
    void anAnalyzerWithoutAChannelDrivesNothing();
    void aRunThatHasBegunKeepsItsClones();
    void aCloneIsThePluginsToDestroyAndAnAnalyzerIsNot();
    void clonesHaveTheSettingsOfTheirAnalyzersAtTheStart();
};

void TstAnalyzerSimulation::anAnalyzerDrivesItsChannel()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    QVERIFY(desk.add(4));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    QCOMPARE(channels.size(), std::size_t(1));
    QCOMPARE(channels[0].chn, 4);
    QCOMPARE(channels[0].initialLevel, 1);
    std::int64_t sum = 0;
    for (const std::int32_t width : channels[0].widths) {
        QVERIFY(width > 0);
        sum += width;
    }
    QCOMPARE(sum, std::int64_t(1000));
    source.release();
}

void TstAnalyzerSimulation::blocksGoOnWhereTheLastOneEnded()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    QVERIFY(desk.add(0));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    std::int64_t sum = 0;
    for (std::int64_t newest = 777; newest < 10000; newest += 777) {
        source.build(newest, rate, channels);
        for (const std::int32_t width : channels[0].widths) {
            sum += width;
        }
        QCOMPARE(sum, newest);
        channels[0].widths.clear();
    }
    source.release();
}

void TstAnalyzerSimulation::withoutAnalyzersNobodyDrivesAnything()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    QVERIFY(channels.empty());
    source.release();
}

void TstAnalyzerSimulation::aCloneThatThrowsDrivesNothingAndIsTold()
{
    AnalyzerDesk desk({QStringLiteral("simulation-throws"), QStringLiteral("sound")});
    QVERIFY(desk.add(0, 0));
    QVERIFY(desk.add(1, 1));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    source.build(2000, rate, channels);
    int driven = 0;
    for (const SimulationChannel &channel : channels) {
        driven += channel.widths.empty() ? 0 : 1;
    }
    QCOMPARE(driven, 1);
    source.release();
    QTRY_COMPARE(desk.told, QStringList{QStringLiteral("Lie: the plug-in threw")});
}

void TstAnalyzerSimulation::aCloneThatNeverReturnsIsLeftBehindAndTold()
{
    AnalyzerDesk desk({QStringLiteral("simulation-spins"), QStringLiteral("sound")});
    QVERIFY(desk.add(0, 0));
    QVERIFY(desk.add(1, 1));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels); // does not return in the first one
    source.build(2000, rate, channels); // and does not ask it again
    QCOMPARE(channels.size(), std::size_t(1));
    QCOMPARE(channels[0].chn, 1);
    source.release();
    QTRY_COMPARE(desk.told.size(), 1);
    QVERIFY2(desk.told[0].contains(QStringLiteral("could not be ended")), qPrintable(desk.told[0]));
}

void TstAnalyzerSimulation::aJobThatReturnsTooLateIsClearedUpOnItsThread()
{
    std::promise<void> mayReturn;
    std::promise<std::thread::id> hasReturned;
    std::promise<std::thread::id> isCleared;
    const auto held = std::make_shared<int>(0);
    {
        CloneThread thread(std::chrono::milliseconds(1));
        const bool isInTime = thread.run(
            [&, held] {
                mayReturn.get_future().wait();
                hasReturned.set_value(std::this_thread::get_id());
            },
            [&, held] { isCleared.set_value(std::this_thread::get_id()); });
        QVERIFY(!isInTime);
        QVERIFY(!thread.run([] {}));
    }
    mayReturn.set_value();
    QVERIFY(hasReturned.get_future().get() == isCleared.get_future().get());
    QTRY_COMPARE(held.use_count(), 1L);
}

void TstAnalyzerSimulation::aMachineThatStandsStillLosesNoJob()
{
#ifdef Q_OS_UNIX
    using Clock = std::chrono::steady_clock;
    const QTemporaryDir folder;
    const QString isIn = folder.filePath(QStringLiteral("isIn"));
    QProcess stops;
    stops.start(QStringLiteral("sh"), {QStringLiteral("-c"),
                                       QStringLiteral("echo; until [ -e \"$0\" ]; do sleep 0.05; done\n"
                                                      "kill -STOP $1; sleep 4; kill -CONT $1"),
                                       isIn, QString::number(QCoreApplication::applicationPid())});
    QVERIFY(stops.waitForReadyRead());
    CloneThread thread(std::chrono::seconds(3));
    const bool isInTime = thread.run([isIn] {
        QFile file(isIn);
        (void)file.open(QIODevice::WriteOnly);
        Clock::time_point last = Clock::now();
        for (Clock::time_point now = last; now - last < std::chrono::seconds(2); now = Clock::now()) {
            last = now;
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100)); // who waits for it comes first
    });
    QVERIFY(isInTime);
    QVERIFY(stops.waitForFinished());
#else
    QSKIP("needs a signal");
#endif
}

void TstAnalyzerSimulation::anAnalyzerWithoutAChannelDrivesNothing()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    QVERIFY(desk.add(-1));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    QVERIFY(channels.empty());
    source.release();
}

void TstAnalyzerSimulation::aRunThatHasBegunKeepsItsClones()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    QVERIFY(desk.add(2));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    desk.manager->removeAnalyzer(0);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    QCOMPARE(channels.size(), std::size_t(1));
    source.release();
    source.begin(rate);
    channels.clear();
    source.build(1000, rate, channels);
    QVERIFY(channels.empty());
    source.release();
}

void TstAnalyzerSimulation::aCloneIsThePluginsToDestroyAndAnAnalyzerIsNot()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    const int live = desk.counted("LiveAnalyzers");
    const int destroyed = desk.counted("DestroyedAnalyzers");
    QVERIFY(desk.add());
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    QCOMPARE(desk.counted("LiveAnalyzers"), live + 2);
    source.release();
    QCOMPARE(desk.counted("LiveAnalyzers"), live + 1);
    QCOMPARE(desk.counted("DestroyedAnalyzers"), destroyed + 1);
    desk.manager->removeAnalyzer(0);
    QCOMPARE(desk.counted("LiveAnalyzers"), live);
    QCOMPARE(desk.counted("DestroyedAnalyzers"), destroyed + 1);
}

void TstAnalyzerSimulation::clonesHaveTheSettingsOfTheirAnalyzersAtTheStart()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    QVERIFY(desk.add(2));
    QVERIFY(desk.waitForWorkers());                                                // it reads the settings as well
    AnalyzerDesk::lineOf(*desk.manager->analyzerAt(0))->SetChannel(Channel(0, 6)); // without a word to the manager
    desk.manager->captureStarts();
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    QCOMPARE(channels.size(), std::size_t(1));
    QCOMPARE(channels[0].chn, 6);
    source.release();
}

QTEST_GUILESS_MAIN(TstAnalyzerSimulation)
#include "tst_AnalyzerSimulation.moc"
