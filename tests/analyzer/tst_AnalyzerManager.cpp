#include "AnalyzerDesk.h"
#include "analyzer/AnalyzerDataGen.h"
#include "analyzer/AnalyzerProgMng.h"
#include "plugins/TextGate.h"

#include <QElapsedTimer>
#include <QLibrary>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <random>
#include <thread>
#include <utility>
#include <vector>

namespace {

const QString sound = QStringLiteral("sound");

/// What a user and a device do with analyzers, in any order, while decoders run, results are listed and simulated
/// captures fill the store.
class BusyDesk : public AnalyzerDesk {
public:
    BusyDesk() : AnalyzerDesk({sound, QStringLiteral("restarts-once")}), list(*manager)
    {
        list.slotRowNumChanged(5);
        const auto reset = [this] { list.reset({QString(), 0, double(most)}); };
        QObject::connect(&list, &AnalyzerDataGen::resetWanted, &list, reset);
        QObject::connect(manager.get(), &AnalyzerManager::analyzerItemChanged, &list, reset);
        CaptureBuilder{most / 2, rate, 10}.fill(other);
    }
    ~BusyDesk()
    {
        endCapture();
        manager->setCapture(nullptr, 0); // one of them goes before the manager
    }

    void act(std::uint32_t what, std::uint32_t random)
    {
        const int item = manager->count() > 0 ? int(random % std::uint32_t(manager->count())) : -1;
        switch (what) {
        case 0:
            (void)(manager->count() < mostItems && add(int(random % 8), int(random / 8 % 2)));
            break;
        case 1:
            manager->loadFromConfig();
            break;
        case 2:
            beginCapture(random);
            break;
        case 3:
            takeCapture();
            break;
        case 4: // another device
            manager->setCapture(nullptr, 0);
            manager->loadFromConfig();
            manager->setCapture(random % 2 == 0 ? &other : &capture, random);
            break;
        case 5:
            QCoreApplication::processEvents();
            break;
        default:
            if (item >= 0) {
                actOn(item, what);
            }
        }
    }
    void endCapture()
    {
        while (m_capture.joinable()) {
            takeCapture();
            QCoreApplication::processEvents(); // it may wait for a worker
        }
    }
    /// The capture's thread may still be at work.
    void takeCapture()
    {
        if (!m_isFilled) {
            return;
        }
        m_capture.join();
        m_isFilled = false;
        manager->captureReady();
    }
    /// What is done with one analyzer: from this number on.
    static constexpr std::uint32_t ofAnItem = 6;
    static constexpr std::uint32_t actions = ofAnItem + 4;

private:
    static constexpr int mostItems = 5;
    static constexpr std::int64_t most = 1'000'000; // samples
    static constexpr std::int64_t rate = 100'000'000;

    void actOn(int item, std::uint32_t what)
    {
        switch (what - ofAnItem) {
        case 0:
            manager->removeAnalyzer(item);
            break;
        case 1:
            manager->restartAnalyzer(item);
            break;
        case 2:
            manager->stopWorker(item);
            break;
        default:
            manager->setDisplayFormat(item, item);
            manager->setShown(item, !manager->isShown(item));
        }
    }
    void beginCapture(std::uint32_t random)
    {
        if (m_capture.joinable()) {
            return;
        }
        manager->captureStarts();
        m_capture = std::thread([this, samples = std::int64_t(random % most + 100)] {
            std::vector<SimulationChannel> channels;
            manager->simulation().begin(rate);
            manager->simulation().build(samples, rate, channels);
            manager->simulation().release();
            CaptureBuilder{samples, rate, 10}.fill(capture);
            m_isFilled = true;
        });
    }

    AnalyzerDataGen list; ///< goes before the manager
    SmpData other{8, 0};
    std::thread m_capture;
    std::atomic<bool> m_isFilled{false};
};

/// Two analyzers: while this lives, somebody is inside of the results of the first one, and the worker of the second
/// one does not leave.
class HeldDesk : public AnalyzerDesk {
public:
    HeldDesk() : AnalyzerDesk({QStringLiteral("leaves-late"), sound}) {}
    ~HeldDesk()
    {
        isHeld = false;
        mayLeave().held = false;
        reader.join();
    }
    [[nodiscard]] bool begin()
    {
        mayLeave().held = true;
        const bool areThere = add(1, 1) && waitForWorkers() && add(0, 0);
        reader = std::thread([this, read = results(0)] {
            const auto me = std::make_shared<ResultsReader>();
            const ResultsPass pass(manager->gate(), me);
            (void)me->inside(read, [this] {
                reads = true;
                while (isHeld) {
                    std::this_thread::yield();
                }
            });
        });
        return areThere && QTest::qWaitFor([this] { return reads.load(); });
    }

private:
    [[nodiscard]] TextGate &mayLeave() const
    {
        QLibrary file(manager->foundLibraries().at(0).path);
        return *reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"))();
    }

    std::atomic<bool> reads{false};
    std::atomic<bool> isHeld{true};
    std::thread reader;
};

} // namespace

Q_DECLARE_METATYPE(std::function<void(AnalyzerManager &)>)

class TstAnalyzerManager : public QObject {
    Q_OBJECT

private slots:
    void anEmptyFolderGivesEmptyLists();
    void aFileThatIsNoPluginGivesNoEntryAndNoMessage();
    void aStoredTripleWithoutPluginGivesNoItemNoMessageAndGoesAtTheNextSave();
    void anAddedAnalyzerIsStoredAndDecodesAtOnce();
    void theStoredListComesBackWithSettingsAndFormat();
    void storedTextIsReadByThreesTrimmedAndComparedByCase();
    void aLoadEndsTheWorkersThatRun();
    void removingTheFirstOfTwoMovesTheSecondToIndexZero();
    void needsRestartRunsTheWorkerAgainAndTellsAfterwards();
    void aFileNameOutOfRangeIsEmpty();
    void aNewCaptureIsDecodedByEachAnalyzer();
    void aDecoderIsToldLengthRateAndTriggerOfEachCapture();
    void aNewCaptureAndTheEndStoreNothing();
    void theStartOfACaptureStopsAllAndDropsTheResults();
    void theLastCaptureIsDecodedAgainWhenTheNextOneFails();
    void aRestartTakesTheNewSettings();
    void aRestartIsStoredAndToldBeforeItRuns();
    void whoHearsOfAStartMayChangeTheList();
    void whoHearsThatTheListIsStoredMayRemoveFromIt();
    void whoHearsOfARunsEndOrTheNextOnesStartMayRemoveIt();
    void aWorkerThatHasEndedMayBeStoppedBeforeItsNoticeComes();
    void theNoticeOfAWorkerThatIsNotThereIsPassedOver();
    void aFormatIsStoredWithoutANewRun();
    void aPluginForOtherModelsIsMarkedAndMayBeAddedAllTheSame();
    void channelsTellWhoUsesThem();
    void aChannelOfNoneIsNobodysChannel();
    void disabledChannelsAreLeftOut();
    void whatIsShownIsToldByItem();
    void withoutACaptureNothingRuns();
    void resultsAreReplacedOnlyWhenTheirReadersHaveLeft_data();
    void resultsAreReplacedOnlyWhenTheirReadersHaveLeft();
    void aRestartWaitsForTheStepOfAScan();
    void waitsForAReaderAndAWorkerDoNotAddUp_data();
    void waitsForAReaderAndAWorkerDoNotAddUp();
    void aWriterOfWhomNobodyToldIsLeftToAlone();
    void whateverIsAskedForWhileDecodersRunLeavesThemSound();
};

void TstAnalyzerManager::anEmptyFolderGivesEmptyLists()
{
    const QTemporaryDir empty;
    QVERIFY(empty.isValid());
    AnalyzerDesk desk({empty.path()});
    QVERIFY(desk.manager->foundLibraries().isEmpty());
    QVERIFY(desk.manager->refusals().isEmpty());
    QVERIFY(desk.manager->libraryDisplayNames().isEmpty());
    QVERIFY(desk.manager->shownStateList().isEmpty());
    QVERIFY(desk.manager->shownAnalyzers().isEmpty());
    QVERIFY(desk.manager->analyzersOnChannel(0).isEmpty());
    QCOMPARE(desk.manager->channelUsage(-1).size(), 16);
    QVERIFY(desk.manager->libraryDisplayName(QStringLiteral("SPI.dll")).isEmpty());
}

void TstAnalyzerManager::aFileThatIsNoPluginGivesNoEntryAndNoMessage()
{
    AnalyzerDesk desk({QStringLiteral("bare")});
    QVERIFY(desk.manager->foundLibraries().isEmpty());
    desk.stored = {{QStringLiteral("bare.dll"), QStringLiteral("0"), QStringLiteral("2")}};
    desk.manager->loadFromConfig();
    QCOMPARE(desk.manager->count(), 0);
    QCoreApplication::processEvents();
    QVERIFY(desk.told.isEmpty());
}

void TstAnalyzerManager::aStoredTripleWithoutPluginGivesNoItemNoMessageAndGoesAtTheNextSave()
{
    AnalyzerDesk desk({sound});
    desk.stored = {{QStringLiteral("gone.dll"), QStringLiteral("x"), QStringLiteral("2")}};
    QSignalSpy changed(desk.manager.get(), &AnalyzerManager::analyzerItemChanged);
    desk.manager->loadFromConfig();
    QCOMPARE(desk.manager->count(), 0);
    QCOMPARE(changed.count(), 1);
    QCoreApplication::processEvents();
    QVERIFY(desk.told.isEmpty());
    QCOMPARE(desk.stored.size(), 1); // loading alone stores nothing
    QVERIFY(desk.add(0));
    QCOMPARE(desk.stored.size(), 1);
    QCOMPARE(desk.stored.first().first(), QStringLiteral("sound.dll"));
}

void TstAnalyzerManager::anAddedAnalyzerIsStoredAndDecodesAtOnce()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    QCOMPARE(desk.stored.value(0).value(0), QStringLiteral("sound.dll"));
    QCOMPARE(desk.stored.value(0).value(2), QStringLiteral("2"));
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(0) - 1));
    QVERIFY(desk.manager->analyzerAt(0)->GetDecodeStatus() == DecodeStatus::Complete);
    QVERIFY(desk.manager->message(0).isEmpty());
}

void TstAnalyzerManager::theStoredListComesBackWithSettingsAndFormat()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(3));
    desk.manager->setDisplayFormat(0, 4);
    desk.manager->setShown(0, false);
    desk.manager->loadFromConfig();
    QCOMPARE(desk.manager->count(), 1);
    QCOMPARE(AnalyzerDesk::lineOf(*desk.manager->analyzerAt(0))->GetChannel().channelIndex, 3U);
    QCOMPARE(desk.manager->displayFormat(0), 4);
    QVERIFY2(desk.manager->isShown(0), "this is never stored");
    QVERIFY2(!desk.manager->isWorkerRunning(0), "a load starts nothing");
}

void TstAnalyzerManager::storedTextIsReadByThreesTrimmedAndComparedByCase()
{
    AnalyzerDesk desk({sound});
    const QString line = QStringLiteral(" sound.dll ; 5 ; 3 ;SOUND.dll;1;2;sound.dll;6;4;sound.dll");
    desk.stored = {line.split(QLatin1Char(';'))};
    desk.manager->loadFromConfig();
    QCOMPARE(desk.manager->count(), 2);
    QCOMPARE(AnalyzerDesk::lineOf(*desk.manager->analyzerAt(0))->GetChannel().channelIndex, 5U);
    QCOMPARE(desk.manager->displayFormat(0), 3);
    QCOMPARE(AnalyzerDesk::lineOf(*desk.manager->analyzerAt(1))->GetChannel().channelIndex, 6U);
    QCOMPARE(desk.manager->displayFormat(1), 4);
}

void TstAnalyzerManager::aLoadEndsTheWorkersThatRun()
{
    AnalyzerDesk desk({sound});
    CaptureBuilder{5'000'000, 100'000'000, 2}.fill(desk.capture); // for a while
    QVERIFY(desk.add(0));
    QVERIFY(desk.add(1));
    QVERIFY(desk.manager->isWorkerRunning(0) && desk.manager->isWorkerRunning(1));
    desk.manager->loadFromConfig();
    QCOMPARE(desk.manager->count(), 2);
    QVERIFY(!desk.manager->isWorkerRunning(0) && !desk.manager->isWorkerRunning(1));
    QTRY_COMPARE(desk.capture.leaseCount(), 0); // at once, unless the machine has much else to do
    QCOMPARE(desk.counted("LiveAnalyzers"), 2);
}

void TstAnalyzerManager::removingTheFirstOfTwoMovesTheSecondToIndexZero()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(1));
    QVERIFY(desk.add(2));
    desk.manager->removeAnalyzer(0);
    QCOMPARE(desk.manager->count(), 1);
    QCOMPARE(AnalyzerDesk::lineOf(*desk.manager->analyzerAt(0))->GetChannel().channelIndex, 2U);
    QCOMPARE(desk.stored.size(), 1);
    QCOMPARE(desk.stored.value(0).value(1), QStringLiteral("2"));
}

void TstAnalyzerManager::needsRestartRunsTheWorkerAgainAndTellsAfterwards()
{
    AnalyzerDesk desk({QStringLiteral("restarts")});
    bool toldWhileRunning = false;
    int told = 0;
    QObject::connect(desk.manager.get(), &AnalyzerManager::analyzerDecodedChanged, [&] {
        toldWhileRunning = toldWhileRunning || (told == 0 && desk.manager->isWorkerRunning(0));
        ++told;
    });
    QVERIFY(desk.add(0));
    QTRY_COMPARE(told, 2);
    QVERIFY(toldWhileRunning);
    QVERIFY(desk.waitForWorkers());
    QVERIFY2(desk.manager->analyzerAt(0)->GetDecodeStatus() == DecodeStatus::Complete, "it found the same capture");
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(0) - 1));
}

void TstAnalyzerManager::aFileNameOutOfRangeIsEmpty()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add());
    QCOMPARE(desk.manager->fileNameAt(0), QStringLiteral("sound.dll"));
    QVERIFY(desk.manager->fileNameAt(-1).isEmpty());
    QVERIFY(desk.manager->fileNameAt(1).isEmpty());
}

void TstAnalyzerManager::aNewCaptureIsDecodedByEachAnalyzer()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    QVERIFY(desk.add(1));
    QVERIFY(desk.waitForWorkers());
    desk.manager->captureStarts();
    CaptureBuilder{5000}.fill(desk.capture);
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(0), std::uint64_t(desk.capture.entryCount(0) - 1));
    QCOMPARE(desk.frames(1), std::uint64_t(desk.capture.entryCount(1) - 1));
}

void TstAnalyzerManager::aDecoderIsToldLengthRateAndTriggerOfEachCapture()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    for (const CaptureBuilder &capture : {CaptureBuilder{5000, 25'000'000, 100, 1234}, CaptureBuilder{3000, 1000}}) {
        desk.manager->captureStarts();
        capture.fill(desk.capture);
        desk.manager->captureReady();
        QVERIFY(desk.waitForWorkers());
        QCOMPARE(desk.results()->GetSampleCount(), capture.samples);
        QCOMPARE(desk.results()->GetSampleRate(), capture.rate);
        QCOMPARE(desk.results()->GetTriggerSample(), capture.trigger);
    }
}

void TstAnalyzerManager::aNewCaptureAndTheEndStoreNothing()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    const int saves = desk.saves;
    desk.manager->captureStarts();
    CaptureBuilder{5000}.fill(desk.capture);
    desk.manager->captureReady();
    desk.manager.reset();
    QCOMPARE(desk.saves, saves);
    QCOMPARE(desk.stored.size(), 1);
}

void TstAnalyzerManager::theStartOfACaptureStopsAllAndDropsTheResults()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    desk.manager->captureStarts();
    QVERIFY(!desk.manager->isWorkerRunning(0));
    QCOMPARE(desk.frames(), 0U);
    desk.capture.clear(); // waits for readers: none is left
}

void TstAnalyzerManager::theLastCaptureIsDecodedAgainWhenTheNextOneFails()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    QVERIFY(desk.waitForWorkers());
    desk.manager->captureStarts();
    QCOMPARE(desk.frames(), 0U);
    desk.manager->captureFailed();
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(0) - 1));

    int starts = 0;
    connect(desk.manager.get(), &AnalyzerManager::analyzerStarted, this, [&starts] { ++starts; });
    desk.manager->captureFailed(); // a note of one that has ended
    desk.manager->captureStarts();
    desk.manager->captureReady();
    desk.manager->captureFailed(); // whose data has come
    QCOMPARE(starts, 1);
}

void TstAnalyzerManager::aRestartTakesTheNewSettings()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    QVERIFY(desk.waitForWorkers());
    AnalyzerDesk::lineOf(*desk.manager->analyzerAt(0))->SetChannel(Channel(0, 7));
    desk.manager->restartAnalyzer(0);
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.stored.value(0).value(1), QStringLiteral("7"));
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(7) - 1));
}

void TstAnalyzerManager::aRestartIsStoredAndToldBeforeItRuns()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    QVERIFY(desk.waitForWorkers());
    QStringList order;
    connect(desk.manager.get(), &AnalyzerManager::analyzerItemChanged, this, [&] {
        order.append(QStringLiteral("stored %1").arg(desk.stored.value(0).value(1)));
        QVERIFY(!desk.manager->isWorkerRunning(0));
    });
    connect(desk.manager.get(), &AnalyzerManager::analyzerStarted, this, [&] { order.append(QStringLiteral("runs")); });
    AnalyzerDesk::lineOf(*desk.manager->analyzerAt(0))->SetChannel(Channel(0, 4));
    desk.manager->restartAnalyzer(0);
    QCOMPARE(order, QStringList({QStringLiteral("stored 4"), QStringLiteral("runs")}));
}

void TstAnalyzerManager::whoHearsOfAStartMayChangeTheList()
{
    AnalyzerDesk desk({sound});
    for (const int channel : {0, 1, 2}) {
        QVERIFY(desk.add(channel));
    }
    QVERIFY(desk.waitForWorkers());
    desk.manager->captureStarts();
    int starts = 0;
    connect(desk.manager.get(), &AnalyzerManager::analyzerStarted, this, [&] {
        if (++starts == 1) {
            desk.manager->removeAnalyzer(1);
            desk.manager->removeAnalyzer(0); // the one that has just begun
        }
    });
    CaptureBuilder{5000}.fill(desk.capture);
    desk.manager->captureReady();
    QCOMPARE(desk.manager->count(), 1);
    QCOMPARE(starts, 2);
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(2) - 1));
    QTRY_COMPARE_WITH_TIMEOUT(desk.capture.leaseCount(), 0, 30000);
}

void TstAnalyzerManager::whoHearsThatTheListIsStoredMayRemoveFromIt()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    QVERIFY(desk.add(1));
    QVERIFY(desk.waitForWorkers());
    bool isRemoving = false;
    connect(desk.manager.get(), &AnalyzerManager::analyzerItemChanged, this, [&] {
        if (!std::exchange(isRemoving, true)) {
            desk.manager->removeAnalyzer(0);
        }
    });
    desk.manager->restartAnalyzer(1); // goes on with the one that was second
    QCOMPARE(desk.manager->count(), 1);
    QVERIFY(desk.manager->isWorkerRunning(0));
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(1) - 1));

    isRemoving = false;
    desk.manager->restartAnalyzer(0);
    QCOMPARE(desk.manager->count(), 0);
    isRemoving = false;
    QVERIFY(!desk.add(2)); // it is gone before it runs
    QCOMPARE(desk.manager->count(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(desk.counted("LiveAnalyzers"), 0, 30000);
}

void TstAnalyzerManager::whoHearsOfARunsEndOrTheNextOnesStartMayRemoveIt()
{
    for (const bool isAtStart : {false, true}) {
        AnalyzerDesk desk({QStringLiteral("restarts")}); // runs again by itself, once
        int starts = 0;
        int ends = 0;
        connect(desk.manager.get(), &AnalyzerManager::analyzerStarted, this, [&] {
            if (++starts == 2 && isAtStart) {
                desk.manager->removeAnalyzer(0);
            }
        });
        connect(desk.manager.get(), &AnalyzerManager::analyzerDecodedChanged, this, [&] {
            if (++ends == 1 && !isAtStart) {
                desk.manager->removeAnalyzer(0);
            }
        });
        QVERIFY(desk.add());
        QTRY_COMPARE_WITH_TIMEOUT(desk.manager->count(), 0, 30000);
        QCOMPARE(starts, 2);
        QCOMPARE(ends, 1);
        // At once, unless the machine has much else to do.
        QTRY_COMPARE_WITH_TIMEOUT(desk.counted("LiveAnalyzers"), 0, 30000);
    }
}

void TstAnalyzerManager::aWorkerThatHasEndedMayBeStoppedBeforeItsNoticeComes()
{
    AnalyzerDesk desk({sound});
    for (int i = 0; i < 50; ++i) {
        QVERIFY(desk.add(i % 8));
        desk.manager->stopWorker(0); // its notice may be on its way: no event has been handled
        QVERIFY(!desk.manager->isWorkerRunning(0));
        desk.manager->restartAnalyzer(0);
        QCoreApplication::processEvents(); // the notice of the first run must not end the second
        desk.manager->removeAnalyzer(0);
    }
    QCoreApplication::processEvents();
    QVERIFY(desk.told.isEmpty());
}

void TstAnalyzerManager::theNoticeOfAWorkerThatIsNotThereIsPassedOver()
{
    AnalyzerDesk desk({QStringLiteral("restarts-always")});
    QVERIFY(desk.add());
    desk.manager->stopAllWorkers();
    QSignalSpy ended(desk.manager.get(), &AnalyzerManager::analyzerDecodedChanged);
    AnalyzerProgMng other(desk.manager->analyzerAt(0));
    desk.manager->slotStopWorkThread(&other, desk.manager->analyzerAt(0));
    desk.manager->slotStopWorkThread(nullptr, nullptr);
    QVERIFY(!desk.manager->isWorkerRunning(0));
    QCOMPARE(ended.count(), 0);
}

void TstAnalyzerManager::aFormatIsStoredWithoutANewRun()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    const AnalyzerResults *before = desk.results();
    desk.manager->setDisplayFormat(0, 1);
    QCOMPARE(desk.stored.value(0).value(2), QStringLiteral("1"));
    QCOMPARE(desk.manager->formatOfAnalyzer(desk.manager->analyzerAt(0)), 1);
    QCOMPARE(desk.manager->formatOfAnalyzer(nullptr), -1);
    QCOMPARE(static_cast<const AnalyzerResults *>(desk.results()), before);
}

void TstAnalyzerManager::aPluginForOtherModelsIsMarkedAndMayBeAddedAllTheSame()
{
    AnalyzerDesk desk({sound}); // for the models 3 and 5
    QCOMPARE(desk.manager->libraryDisplayNames(), QStringList{QStringLiteral("Lie (Not Supported)")});
    QVERIFY(desk.add());
    QCOMPARE(desk.manager->analyzerTitle(0), QStringLiteral("Lie (Not Supported)"));
    desk.model = 5;
    QCOMPARE(desk.manager->analyzerTitle(0), QStringLiteral("Lie"));
    QCOMPARE(desk.manager->libraryDisplayName(QStringLiteral("sound.dll")), QStringLiteral("Lie"));
}

void TstAnalyzerManager::channelsTellWhoUsesThem()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(2));
    QVERIFY(desk.add(2));
    QVERIFY(desk.add(5));
    QCOMPARE(desk.manager->analyzerChannels(0), QStringList({QStringLiteral("2"), QStringLiteral("Lie - Line")}));
    const QStringList usage = desk.manager->channelUsage(-1);
    QCOMPARE(usage.at(4), QStringLiteral("2"));
    QCOMPARE(usage.at(5), QStringLiteral("Lie - Line, Lie - Line"));
    QCOMPARE(usage.at(11), QStringLiteral("Lie - Line"));
    QVERIFY(usage.at(1).isEmpty());
    QVERIFY(desk.manager->channelUsage(2).at(11).isEmpty());
    QCOMPARE(desk.manager->analyzersOnChannel(2).size(), 2);
}

void TstAnalyzerManager::aChannelOfNoneIsNobodysChannel()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(-1));
    const QStringList usage = desk.manager->channelUsage(-1);
    for (int chn = 0; chn < 8; ++chn) {
        QVERIFY(usage.at(2 * chn + 1).isEmpty());
        QVERIFY(desk.manager->analyzersOnChannel(chn).isEmpty());
    }
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), 0U);
}

void TstAnalyzerManager::disabledChannelsAreLeftOut()
{
    AnalyzerDesk desk({sound});
    desk.disabledChannel = 3;
    const QStringList usage = desk.manager->enabledChannelUsage(-1);
    QCOMPARE(usage.size(), 14);
    QVERIFY(!usage.contains(QStringLiteral("3")));
    QCOMPARE(usage.at(6), QStringLiteral("4"));
}

void TstAnalyzerManager::whatIsShownIsToldByItem()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    QVERIFY(desk.add(1));
    desk.manager->setShown(0, false);
    QCOMPARE(desk.manager->shownStateList(), QStringList({QStringLiteral("Lie,0"), QStringLiteral("Lie,1")}));
    QCOMPARE(desk.manager->shownAnalyzers(), QVector<Analyzer *>{desk.manager->analyzerAt(1)});
}

void TstAnalyzerManager::withoutACaptureNothingRuns()
{
    AnalyzerDesk desk({sound});
    desk.manager->setCapture(nullptr, 0);
    QVERIFY(desk.add());
    QVERIFY(!desk.manager->isWorkerRunning(0));
    desk.manager->captureReady();
    QVERIFY(!desk.manager->isWorkerRunning(0));
}

void TstAnalyzerManager::resultsAreReplacedOnlyWhenTheirReadersHaveLeft_data()
{
    using Act = std::function<void(AnalyzerManager &)>;
    QTest::addColumn<Act>("act");
    QTest::newRow("remove") << Act([](AnalyzerManager &manager) { manager.removeAnalyzer(0); });
    QTest::newRow("start") << Act([](AnalyzerManager &manager) { manager.startAnalyzer(0); });
    QTest::newRow("restart") << Act([](AnalyzerManager &manager) { manager.restartAnalyzer(0); });
    QTest::newRow("another capture") << Act([](AnalyzerManager &manager) { manager.captureReady(); });
    QTest::newRow("load") << Act([](AnalyzerManager &manager) { manager.loadFromConfig(); });
}

void TstAnalyzerManager::resultsAreReplacedOnlyWhenTheirReadersHaveLeft()
{
    QFETCH(std::function<void(AnalyzerManager &)>, act);
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    std::atomic<bool> reads{false};
    std::atomic<bool> left{false};
    std::atomic<bool> replaced{false};
    std::thread reader([&] {
        const ResultsPass pass(desk.manager->gate());
        reads = bool(pass);
        while (!desk.manager->gate().isWanted() && !replaced) {
            (void)desk.frames();
        }
        left = !replaced;
    });
    const bool began = QTest::qWaitFor([&reads] { return bool(reads); }, 30000);
    act(*desk.manager);
    replaced = true;
    reader.join();
    QVERIFY(began);
    QVERIFY(left);
}

void TstAnalyzerManager::aRestartWaitsForTheStepOfAScan()
{
    AnalyzerDesk desk({QStringLiteral("text-waits")});
    QLibrary file(desk.manager->foundLibraries().at(0).path);
    const auto textGateOf = reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"));
    QVERIFY(textGateOf != nullptr);
    TextGate &texts = *textGateOf();
    desk.manager->gate().patience = std::chrono::seconds(30); // the helper may be slow
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());

    AnalyzerDataGen list(*desk.manager);
    texts.held = true;
    list.reset({QStringLiteral("no such text"), 0, double(desk.capture.smpCount())});
    QTRY_VERIFY(texts.inside);
    std::atomic<bool> restarted{false};
    bool hasWaited = false;
    std::thread helper([&] {
        while (!desk.manager->gate().isWanted() && !restarted) {
            std::this_thread::yield();
        }
        hasWaited = !restarted;
        texts.held = false;
    });
    desk.manager->restartAnalyzer(0);
    restarted = true;
    const bool isInside = texts.inside;
    helper.join();
    QVERIFY(hasWaited);
    QVERIFY(!isInside);
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(0) - 1));
}

void TstAnalyzerManager::waitsForAReaderAndAWorkerDoNotAddUp_data()
{
    using Act = std::function<void(AnalyzerManager &)>;
    QTest::addColumn<Act>("act");
    QTest::newRow("remove") << Act([](AnalyzerManager &manager) { manager.removeAnalyzer(1); });
    QTest::newRow("restart") << Act([](AnalyzerManager &manager) { manager.restartAnalyzer(1); });
    QTest::newRow("load") << Act([](AnalyzerManager &manager) { manager.loadFromConfig(); });
    QTest::newRow("stop") << Act([](AnalyzerManager &manager) { manager.stopWorker(1); });
    QTest::newRow("stop all") << Act([](AnalyzerManager &manager) { manager.stopAllWorkers(); });
}

void TstAnalyzerManager::waitsForAReaderAndAWorkerDoNotAddUp()
{
    constexpr qint64 both = 85; // ms: one behind the other they are 90
    constexpr int tries = 5;    // on a machine that has much else to do
    QFETCH(std::function<void(AnalyzerManager &)>, act);
    qint64 shortest = both;
    for (int i = 0; i < tries && shortest >= both; ++i) {
        HeldDesk desk;
        QVERIFY(desk.begin());
        QElapsedTimer time;
        time.start();
        act(*desk.manager);
        shortest = std::min(shortest, time.elapsed());
    }
    QVERIFY(shortest < both);
}

void TstAnalyzerManager::aWriterOfWhomNobodyToldIsLeftToAlone()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    std::atomic<bool> opened{false};
    std::thread writer([&] {
        desk.capture.clear(); // waits for the worker, or finds it through
        opened = true;
    });
    QTRY_VERIFY(opened);
    writer.join();
    QVERIFY(desk.waitForWorkers());
    CaptureBuilder{3000}.fill(desk.capture);
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(0) - 1));
}

void TstAnalyzerManager::whateverIsAskedForWhileDecodersRunLeavesThemSound()
{
    std::mt19937 random(3);
    BusyDesk desk;
    for (int i = 0; i < 400; ++i) {
        const auto what = std::uint32_t(random() % BusyDesk::actions);
        desk.act(what, std::uint32_t(random()));
    }
    desk.endCapture();
    desk.manager->setCapture(&desk.capture, 0);
    QVERIFY(desk.add(3));
    QVERIFY(desk.waitForWorkers()); // a machine that has much to do may have let one of them linger
    for (int i = 0; i < desk.manager->count(); ++i) {
        desk.manager->restartAnalyzer(i);
    }
    QVERIFY(desk.waitForWorkers());
    for (int i = 0; i < desk.manager->count(); ++i) {
        const auto line = int(AnalyzerDesk::lineOf(*desk.manager->analyzerAt(i))->GetChannel().channelIndex);
        QCOMPARE(desk.frames(i), std::uint64_t(desk.capture.entryCount(line) - 1));
    }
    QCOMPARE(desk.stored.size(), desk.manager->count());
}

QTEST_GUILESS_MAIN(TstAnalyzerManager)
#include "tst_AnalyzerManager.moc"
