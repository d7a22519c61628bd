#include "AnalyzerDesk.h"
#include "analyzer/AnalyzerDataGen.h"
#include "analyzer/AnalyzerProgMng.h"
#include "plugins/TextGate.h"

#include <QLibrary>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <atomic>
#include <thread>

namespace {

const QString sound = QStringLiteral("sound");

} // namespace

class TstAnalyzerManager : public QObject {
    Q_OBJECT

private slots:
    void anEmptyFolderGivesEmptyLists();
    void aFileThatIsNoPluginGivesNoEntryAndNoMessage();
    void aStoredTripleWithoutPluginGivesNoItemNoMessageAndGoesAtTheNextSave();
    void anAddedAnalyzerIsStoredAndDecodesAtOnce();
    void theStoredListComesBackWithSettingsAndFormat();
    void removingTheFirstOfTwoMovesTheSecondToIndexZero();
    void needsRestartRunsTheWorkerAgainAndTellsAfterwards();
    void aFileNameOutOfRangeIsEmpty();
    void aNewCaptureIsDecodedByEachAnalyzer();
    void theStartOfACaptureStopsAllAndDropsTheResults();
    void aRestartTakesTheNewSettings();
    void aWorkerThatHasEndedMayBeStoppedBeforeItsNoticeComes();
    void aFormatIsStoredWithoutANewRun();
    void aPluginForOtherModelsIsMarkedAndMayBeAddedAllTheSame();
    void channelsTellWhoUsesThem();
    void aChannelOfNoneIsNobodysChannel();
    void disabledChannelsAreLeftOut();
    void whatIsShownIsToldByItem();
    void withoutACaptureNothingRuns();
    void resultsAreReplacedOnlyWhenTheirReadersHaveLeft();
    void aRestartWaitsForTheStepOfAScan();
    void aWriterOfWhomNobodyToldIsLeftToAlone();
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

void TstAnalyzerManager::theStartOfACaptureStopsAllAndDropsTheResults()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add(0));
    desk.manager->captureStarts();
    QVERIFY(!desk.manager->isWorkerRunning(0));
    QCOMPARE(desk.frames(), 0U);
    desk.capture.clear(); // waits for readers: none is left
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

void TstAnalyzerManager::resultsAreReplacedOnlyWhenTheirReadersHaveLeft()
{
    AnalyzerDesk desk({sound});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    std::atomic<bool> reads{false};
    std::atomic<bool> left{false};
    std::thread reader([&] {
        const ResultsPass pass(desk.manager->gate());
        reads = bool(pass);
        while (!desk.manager->gate().isWanted()) {
            (void)desk.frames();
        }
        left = true;
    });
    QTRY_VERIFY(reads);
    desk.manager->removeAnalyzer(0);
    QVERIFY(left);
    reader.join();
}

void TstAnalyzerManager::aRestartWaitsForTheStepOfAScan()
{
    AnalyzerDesk desk({QStringLiteral("text-waits")});
    QLibrary file(desk.manager->foundLibraries().at(0).path);
    const auto textGateOf = reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"));
    QVERIFY(textGateOf != nullptr);
    TextGate &texts = *textGateOf();
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

QTEST_GUILESS_MAIN(TstAnalyzerManager)
#include "tst_AnalyzerManager.moc"
