// The thread of one analyzer: how it starts, parks and is let go.

#include "analyzer/AnalyzerProgMng.h"

#include <QtTest>

#include <corvanlux/analyzer/ChannelReader.h>
#include <corvanlux/analyzer/DeviceCollection.h>

namespace {

constexpr int patience = 120000; // ms, of a busy machine

/// Comes to its end at once, or looks at a level until it is stopped.
class LevelAnalyzer final : public Analyzer {
public:
    void RunWorker() override
    {
        ++runs;
        lux::ChannelReader &line = GetChannelReader(Channel());
        do {
            (void)line.levelAt(0);
        } while (untilStopped);
    }
    std::uint32_t BuildSimulation(std::int64_t, std::uint32_t, SimulationChannelDescriptor **) override { return 0; }
    std::uint32_t NeededSampleRate() override { return 0; }
    const char *AnalyzerName() const override { return "Level"; }
    bool NeedsRestart() override { return false; }

    std::atomic<bool> untilStopped{false};
    std::atomic<int> runs{0};
};

struct Desk {
    Desk()
    {
        device.smpCount = 1000;
        QObject::connect(
            &thread, &AnalyzerProgMng::sigStopWorkThread, &thread,
            [this](AnalyzerProgMng *me, Analyzer *anly) {
                isOfWorker = me == &thread && anly == &analyzer && QThread::currentThread() == &thread;
                ++announced;
            },
            Qt::DirectConnection);
    }
    ~Desk()
    {
        thread.askToStop();
        (void)thread.waitParked(patience);
        thread.letGo();
    }
    void start()
    {
        analyzer.Init(&device, nullptr, &thread);
        analyzer.SetupResults();
        analyzer.InitialWorkerThread();
        analyzer.StartProcessing();
    }

    DeviceCollection device;
    LevelAnalyzer analyzer;
    AnalyzerProgMng thread{&analyzer};
    std::atomic<int> announced{0};
    std::atomic<bool> isOfWorker{false};
};

} // namespace

class TstAnalyzerProgMng : public QObject {
    Q_OBJECT
private slots:
    void progressIsKeptAsItIsTold();
    void theWorkerStartsWithTheProcessingAlone();
    void anEndOutsideOfARunReturnsAtOnce();
    void aNaturalEndIsAnnouncedOnTheWorkersThreadWhichParks();
    void aStopIsNotAnnouncedAndTheNextEndIs();
};

void TstAnalyzerProgMng::progressIsKeptAsItIsTold()
{
    Desk desk;
    QCOMPARE(desk.thread.progress.load(), 0.0);
    static_cast<ProgressManager &>(desk.thread).SetProgress(0.25);
    QCOMPARE(desk.thread.progress.load(), 0.25);
}

void TstAnalyzerProgMng::theWorkerStartsWithTheProcessingAlone()
{
    Desk desk;
    desk.analyzer.untilStopped = true;
    desk.analyzer.Init(&desk.device, nullptr, &desk.thread);
    desk.analyzer.SetupResults();
    desk.analyzer.InitialWorkerThread();
    QVERIFY(desk.thread.isIdle() && !desk.thread.isRunning());
    desk.analyzer.StartProcessing();
    QVERIFY(!desk.thread.isIdle() && desk.thread.isRunning());
    QCOMPARE(desk.thread.priority(), QThread::InheritPriority);
    QTRY_COMPARE_WITH_TIMEOUT(desk.analyzer.runs.load(), 1, patience);
}

void TstAnalyzerProgMng::anEndOutsideOfARunReturnsAtOnce()
{
    Desk desk;
    desk.thread.WorkerEnded();
    QCOMPARE(desk.announced.load(), 0);
    QVERIFY(desk.thread.isIdle());
    desk.start();
    QVERIFY(desk.thread.waitParked(patience));
    desk.thread.WorkerEnded(); // a second time in one run
    QTRY_COMPARE_WITH_TIMEOUT(desk.announced.load(), 1, patience);
}

void TstAnalyzerProgMng::aNaturalEndIsAnnouncedOnTheWorkersThreadWhichParks()
{
    Desk desk;
    desk.start();
    QVERIFY(desk.thread.waitParked(patience));
    QTRY_COMPARE_WITH_TIMEOUT(desk.announced.load(), 1, patience);
    QVERIFY(desk.isOfWorker);
    QVERIFY(desk.thread.isParked() && desk.thread.isRunning());
    QCOMPARE(desk.analyzer.runs.load(), 1);
    desk.thread.letGo();
    QVERIFY(desk.thread.isIdle() && desk.thread.isFinished());
    QCOMPARE(desk.analyzer.runs.load(), 1); // no way back into the decoder
}

void TstAnalyzerProgMng::aStopIsNotAnnouncedAndTheNextEndIs()
{
    Desk desk;
    desk.analyzer.untilStopped = true;
    desk.start();
    desk.thread.askToStop();
    QVERIFY(desk.thread.waitParked(patience));
    desk.thread.letGo();
    QCOMPARE(desk.announced.load(), 0);
    desk.analyzer.untilStopped = false;
    desk.start();
    QVERIFY(desk.thread.waitParked(patience));
    desk.thread.letGo();
    QCOMPARE(desk.announced.load(), 1);
}

QTEST_GUILESS_MAIN(TstAnalyzerProgMng)
#include "tst_AnalyzerProgMng.moc"
