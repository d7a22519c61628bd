// Plug-ins that do what they must not: each is told once, takes its own analyzer out of use at most, and harms nobody.

#include "AnalyzerDesk.h"
#include "analyzer/AnalyzerDataGen.h"
#include "plugins/TextGate.h"
#include "store/MemBudget.h"
#include "store/SmpLease.h"

#include <atomic>
#include <chrono>
#include <thread>

class TstAnalyzerLies : public QObject {
    Q_OBJECT

private slots:
    void aPluginThatCannotMakeAnAnalyzerAddsNone_data();
    void aPluginThatCannotMakeAnAnalyzerAddsNone();
    void anAnalyzerThatCannotBeUsedIsDestroyed();
    void whatAPluginThrowsIsToldOnceAndTheOthersGoOn_data();
    void whatAPluginThrowsIsToldOnceAndTheOthersGoOn();
    void whatIsNoStandardExceptionIsToldToo();
    void resultsThatCannotBeMadeTakeTheAnalyzerOutOfUse();
    void settingsWithASemicolonAreNotStored();
    void framesOutOfOrderOrPlaceArePutIntoTheCapture();
    void millionsOfMarkersAreStillSearchable();
    void endlessFramesEndWithTheMemoryBudget();
    void aDecoderThatReturnsIsComplete();
    void aDecoderThatAlwaysWantsToRunAgainIsTakenOutOfUse();
    void aChannelThatTheCaptureLacksIsAMessage();
    void aDecoderThatNeverLeavesIsTakenOutAndLeftBehind_data();
    void aDecoderThatNeverLeavesIsTakenOutAndLeftBehind();
    void aDecoderThatLeavesLateIsNoLiarAndGoesOn();
    void theMemoryOfACaptureComesBackWhenTheDecoderThatLeavesItLateHasLeft();
    void aCaptureDoesNotWaitForADecoderThatWasStartedWhileItsTriggerWasAwaited();
    void aCaptureThatOthersReadIsNotTakenFromThemForADecoderThatDoesNotLeave();
    void aMachineThatStandsStillMakesNoLiarOfADecoderThatLeaves();
    void textsThatThrowAreEmpty();
    void textsAndValuesThatThrowAreToldAndTakeTheAnalyzerOutOfUse_data();
    void textsAndValuesThatThrowAreToldAndTakeTheAnalyzerOutOfUse();
    void aPluginThatAnswersWithNullHarmsNobody_data();
    void aPluginThatAnswersWithNullHarmsNobody();
    void theProgramEndsWithADecoderThatNeverLeaves();
};

void TstAnalyzerLies::aPluginThatCannotMakeAnAnalyzerAddsNone_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::newRow("throws") << QStringLiteral("create-throws");
    QTest::newRow("null") << QStringLiteral("creates-null");
    QTest::newRow("no settings") << QStringLiteral("no-settings");
}

void TstAnalyzerLies::aPluginThatCannotMakeAnAnalyzerAddsNone()
{
    QFETCH(QString, plugin);
    AnalyzerDesk desk({plugin, QStringLiteral("sound")});
    QVERIFY(!desk.add());
    QVERIFY(!desk.add());
    desk.stored = {{plugin + QStringLiteral(".dll"), QStringLiteral("0"), QStringLiteral("2")},
                   {QStringLiteral("sound.dll"), QStringLiteral("0"), QStringLiteral("2")}};
    desk.manager->loadFromConfig();
    QCOMPARE(desk.manager->count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(desk.told.size(), 1);
    QVERIFY(desk.told.constFirst().startsWith(QStringLiteral("Lie: ")));
}

void TstAnalyzerLies::anAnalyzerThatCannotBeUsedIsDestroyed()
{
    AnalyzerDesk desk({QStringLiteral("no-settings")});
    const int destroyed = desk.counted("DestroyedAnalyzers");
    QVERIFY(!desk.add());
    QCOMPARE(desk.counted("LiveAnalyzers"), 0);
    QCOMPARE(desk.counted("DestroyedAnalyzers"), destroyed + 1);
}

void TstAnalyzerLies::whatAPluginThrowsIsToldOnceAndTheOthersGoOn_data()
{
    QTest::addColumn<QString>("plugin");
    for (const char *lie : {"load-throws", "save-throws", "restart-throws", "decode-throws"}) {
        QTest::newRow(lie) << QString::fromLatin1(lie);
    }
}

void TstAnalyzerLies::whatAPluginThrowsIsToldOnceAndTheOthersGoOn()
{
    QFETCH(QString, plugin);
    AnalyzerDesk desk({plugin, QStringLiteral("sound")});
    desk.stored = {{plugin + QStringLiteral(".dll"), QStringLiteral("0"), QStringLiteral("2")},
                   {QStringLiteral("sound.dll"), QStringLiteral("1"), QStringLiteral("2")}};
    desk.manager->loadFromConfig();
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    desk.manager->saveToConfig();
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    desk.manager->saveToConfig();
    QCoreApplication::processEvents();
    QCOMPARE(desk.told, QStringList{QStringLiteral("Lie: the plug-in threw")});
    QCOMPARE(desk.manager->count(), 2);
    QCOMPARE(desk.frames(1), std::uint64_t(desk.capture.entryCount(1) - 1));
}

void TstAnalyzerLies::whatIsNoStandardExceptionIsToldToo()
{
    AnalyzerDesk desk({QStringLiteral("throws-number")});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    QTRY_COMPARE(desk.told, QStringList{QStringLiteral("Lie: an exception")});
    QVERIFY(desk.manager->endedEarly(0));
}

void TstAnalyzerLies::resultsThatCannotBeMadeTakeTheAnalyzerOutOfUse()
{
    AnalyzerDesk desk({QStringLiteral("setup-throws"), QStringLiteral("sound")});
    QVERIFY(desk.add(0, 0));
    QVERIFY(desk.add(1, 1));
    QVERIFY(!desk.manager->isWorkerRunning(0));
    QVERIFY(desk.waitForWorkers());
    QVERIFY(desk.results(0) == nullptr);
    desk.manager->captureStarts();
    desk.manager->captureReady();
    QVERIFY(!desk.manager->isWorkerRunning(0));
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.told, QStringList{QStringLiteral("Lie: the plug-in threw")});
    QCOMPARE(desk.frames(1), std::uint64_t(desk.capture.entryCount(1) - 1));
}

void TstAnalyzerLies::settingsWithASemicolonAreNotStored()
{
    AnalyzerDesk desk({QStringLiteral("semicolon"), QStringLiteral("sound")});
    QVERIFY(desk.add(0, 0));
    QVERIFY(desk.add(1, 1));
    QCoreApplication::processEvents();
    QCOMPARE(desk.told.size(), 1);
    QVERIFY(desk.stored.value(0).value(1).isEmpty());
    desk.manager->loadFromConfig();
    QCOMPARE(desk.manager->count(), 2);
    QCOMPARE(desk.manager->fileNameAt(1), QStringLiteral("sound.dll"));
}

void TstAnalyzerLies::framesOutOfOrderOrPlaceArePutIntoTheCapture()
{
    AnalyzerDesk desk({QStringLiteral("disorder")});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    QVERIFY(desk.frames() > 100);
    std::int64_t last = 0;
    for (std::uint64_t i = 0; i < desk.frames(); ++i) {
        const Frame frame = desk.results()->GetFrame(i);
        QVERIFY(frame.firstSample >= last && frame.firstSample < desk.capture.smpCount());
        QVERIFY(frame.lastSample >= frame.firstSample && frame.lastSample < desk.capture.smpCount());
        last = frame.firstSample;
    }
}

void TstAnalyzerLies::millionsOfMarkersAreStillSearchable()
{
    AnalyzerDesk desk({QStringLiteral("marks")});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    const Channel line(0, 0);
    QVERIFY(desk.results()->GetNumMarkers(line) > 100000);
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    QVERIFY(desk.results()->GetMarkersInRange(line, 0, desk.capture.smpCount(), &first, &last));
    for (std::uint64_t i = first; i < last; ++i) {
        QVERIFY(desk.results()->GetMarker(line, i).sample <= desk.results()->GetMarker(line, i + 1).sample);
    }
}

void TstAnalyzerLies::endlessFramesEndWithTheMemoryBudget()
{
    std::atomic<std::int64_t> budget{20'000'000};
    SetAnalyzerMemoryBudget(&budget);
    {
        AnalyzerDesk desk({QStringLiteral("hoards")});
        QVERIFY(desk.add());
        QVERIFY(desk.waitForWorkers());
        QVERIFY(desk.manager->analyzerAt(0)->GetDecodeStatus() == DecodeStatus::OutOfMemory);
        QVERIFY(desk.frames() > 100'000);
        QVERIFY(!desk.manager->message(0).isEmpty());
    }
    QCOMPARE(budget.load(), std::int64_t(20'000'000));
    SetAnalyzerMemoryBudget(nullptr);
}

void TstAnalyzerLies::aDecoderThatReturnsIsComplete()
{
    AnalyzerDesk desk({QStringLiteral("returns")});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    QVERIFY(desk.manager->analyzerAt(0)->GetDecodeStatus() == DecodeStatus::Complete);
}

void TstAnalyzerLies::aDecoderThatAlwaysWantsToRunAgainIsTakenOutOfUse()
{
    AnalyzerDesk desk({QStringLiteral("restarts-always")});
    QVERIFY(desk.add());
    QTRY_COMPARE_WITH_TIMEOUT(desk.told.size(), 1, 30000);
    QVERIFY(desk.told.constFirst().startsWith(QStringLiteral("Lie: The decoder does not stop.")));
    QVERIFY(!desk.manager->isWorkerRunning(0));
    QVERIFY(desk.frames() > 0); // what it found stays
}

void TstAnalyzerLies::aChannelThatTheCaptureLacksIsAMessage()
{
    AnalyzerDesk desk({QStringLiteral("channel-999")});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    QVERIFY(desk.manager->analyzerAt(0)->GetDecodeStatus() == DecodeStatus::Failed);
    QTRY_COMPARE(desk.told.size(), 1);
}

void TstAnalyzerLies::aDecoderThatNeverLeavesIsTakenOutAndLeftBehind_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::newRow("reads and catches everything") << QStringLiteral("swallows");
    QTest::newRow("reads nothing") << QStringLiteral("spins");
}

void TstAnalyzerLies::aDecoderThatNeverLeavesIsTakenOutAndLeftBehind()
{
    QFETCH(QString, plugin);
    AnalyzerDesk desk({plugin, QStringLiteral("sound")});
    QVERIFY(desk.add(0, 0));
    QVERIFY(desk.add(1, 1));
    desk.manager->captureStarts();
    QVERIFY2(!desk.manager->isWorkerRunning(0), "another analyzer stands in its place");
    QCOMPARE(desk.manager->count(), 2);

    CaptureBuilder{3000}.fill(desk.capture); // the store does not wait for it
    desk.manager->setCapture(nullptr, 0);
    QVERIFY2(desk.capture.smpCount() == 3000, "only the last capture was given up to it");
    desk.manager->setCapture(&desk.capture, 0);
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(1), std::uint64_t(desk.capture.entryCount(1) - 1));
    QVERIFY2(!desk.manager->isWorkerRunning(0), "it is out of use until it is restarted");
    QVERIFY(!desk.manager->message(0).isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(desk.told.size(), 2, 10000); // that it does not stop, and that it was left behind
    desk.manager->captureStarts();
    desk.capture.clear(); // waits for nobody
}

void TstAnalyzerLies::aDecoderThatLeavesLateIsNoLiarAndGoesOn()
{
    AnalyzerDesk desk({QStringLiteral("leaves-late")});
    QLibrary file(desk.manager->foundLibraries().at(0).path);
    TextGate &mayLeave = *reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"))();
    mayLeave.held = true;
    QVERIFY(desk.add());
    desk.manager->captureStarts(); // as on a machine that has much else to do
    CaptureBuilder{3000}.fill(desk.capture);
    desk.manager->captureReady();
    QVERIFY(desk.manager->isWorkerRunning(0)); // as soon as the last one has left
    QVERIFY(desk.manager->message(0).isEmpty());
    mayLeave.held = false;
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(0) - 1));
    QCOMPARE(desk.told, QStringList());
    QCOMPARE(desk.counted("LiveAnalyzers"), 1);

    mayLeave.held = true;
    desk.manager->restartAnalyzer(0);
    desk.manager->stopAllWorkers();
    desk.manager->captureReady();
    mayLeave.held = false;
    desk.manager.reset(); // it runs no more
}

void TstAnalyzerLies::theMemoryOfACaptureComesBackWhenTheDecoderThatLeavesItLateHasLeft()
{
    const std::int64_t before = memBudget;
    AnalyzerDesk desk({QStringLiteral("leaves-late")});
    QLibrary file(desk.manager->foundLibraries().at(0).path);
    TextGate &mayLeave = *reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"))();
    mayLeave.held = true;
    QVERIFY(desk.add());
    const std::int64_t withCapture = memBudget;
    QVERIFY(withCapture < before);
    desk.manager->captureStarts();
    desk.capture.clear(); // which cannot wait for it
    QVERIFY2(memBudget == withCapture, "the decoder still reads it");
    mayLeave.held = false;
    QTRY_COMPARE_WITH_TIMEOUT(memBudget.load(), before, 20000);
}

void TstAnalyzerLies::aCaptureThatOthersReadIsNotTakenFromThemForADecoderThatDoesNotLeave()
{
    AnalyzerDesk desk({QStringLiteral("leaves-late")});
    QLibrary file(desk.manager->foundLibraries().at(0).path);
    TextGate &mayLeave = *reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"))();
    mayLeave.held = true;
    QVERIFY(desk.add());
    const std::int64_t entries = desk.capture.entryCount(0);
    SmpLease other(&desk.capture); // as of a file that is being written
    QVERIFY(bool(other));
    desk.manager->setCapture(nullptr, 0);
    QVERIFY(!desk.capture.open(std::chrono::milliseconds(0)));
    QCOMPARE(desk.capture.entryCount(0), entries);
    other.release();
    QVERIFY(desk.capture.open(std::chrono::milliseconds(0)));
    mayLeave.held = false;
    QTRY_COMPARE_WITH_TIMEOUT(desk.counted("LiveAnalyzers"), 1, 20000);
}

void TstAnalyzerLies::aCaptureDoesNotWaitForADecoderThatWasStartedWhileItsTriggerWasAwaited()
{
    AnalyzerDesk desk({QStringLiteral("spins")});
    desk.manager->captureStarts();
    QVERIFY(desk.add()); // decodes the last capture, which an instrument leaves in place until it has data
    QVERIFY(desk.manager->isWorkerRunning(0));
    // As its thread does it, for whom nobody has told.
    QTRY_VERIFY_WITH_TIMEOUT(desk.capture.open(std::chrono::milliseconds(1)), 20000);
    QVERIFY(!desk.manager->isWorkerRunning(0));
}

void TstAnalyzerLies::aMachineThatStandsStillMakesNoLiarOfADecoderThatLeaves()
{
    AnalyzerDesk desk({QStringLiteral("leaves-late")});
    QLibrary file(desk.manager->foundLibraries().at(0).path);
    TextGate &mayLeave = *reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"))();
    mayLeave.held = true;
    QVERIFY(desk.add());
    desk.manager->stopAllWorkers();
    std::this_thread::sleep_for(std::chrono::milliseconds(2600)); // what it has until it is left behind
    QCoreApplication::processEvents();                            // the program goes on before the decoder does
    QCoreApplication::processEvents();
    QCOMPARE(desk.told, QStringList());
    mayLeave.held = false;
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), std::uint64_t(desk.capture.entryCount(0) - 1));
    QCOMPARE(desk.told, QStringList());
    QTRY_COMPARE_WITH_TIMEOUT(desk.counted("LiveAnalyzers"), 1, 20000);
}

void TstAnalyzerLies::textsThatThrowAreEmpty()
{
    AnalyzerDesk desk({QStringLiteral("text-throws")});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    desk.results()->BuildTabularText(0, DisplayBase::Hexadecimal);
    QVERIFY(desk.results()->GetTabularTextString().empty());
    Channel line(0, 0);
    desk.results()->BuildBubbleText(0, line, DisplayBase::Hexadecimal);
    const char *const *texts = nullptr;
    std::uint32_t count = 1;
    desk.results()->GetResultStrings(&texts, &count);
    QCOMPARE(count, 0U);
}

void TstAnalyzerLies::textsAndValuesThatThrowAreToldAndTakeTheAnalyzerOutOfUse_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::newRow("texts") << QStringLiteral("text-throws");
    QTest::newRow("values") << QStringLiteral("values-throw");
}

void TstAnalyzerLies::textsAndValuesThatThrowAreToldAndTakeTheAnalyzerOutOfUse()
{
    QFETCH(QString, plugin);
    AnalyzerDesk desk({plugin});
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    desk.manager->lookAfterReaders();
    QVERIFY(!desk.manager->endedEarly(0)); // nobody has asked yet
    for (std::uint64_t frame = 0; frame < 3; ++frame) {
        desk.results()->BuildTabularText(frame, DisplayBase::Hexadecimal);
        desk.results()->BuildFrameValues(frame);
    }
    QTRY_COMPARE(desk.told, QStringList{QStringLiteral("Lie: the plug-in threw")});
    QCOMPARE(desk.manager->message(0), QStringLiteral("the plug-in threw"));
    desk.manager->captureStarts();
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(), std::uint64_t(0));
    desk.manager->restartAnalyzer(0);
    QVERIFY(desk.waitForWorkers());
    QVERIFY(desk.frames() > 0);
    desk.manager->lookAfterReaders();
    QVERIFY(!desk.manager->endedEarly(0));
    QCOMPARE(desk.told.size(), 1);
}

void TstAnalyzerLies::aPluginThatAnswersWithNullHarmsNobody_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::addColumn<bool>("hasFrames");
    QTest::newRow("results") << QStringLiteral("null-results") << false;
    QTest::newRow("texts") << QStringLiteral("null-texts") << true;
}

void TstAnalyzerLies::aPluginThatAnswersWithNullHarmsNobody()
{
    QFETCH(QString, plugin);
    QFETCH(bool, hasFrames);
    AnalyzerDesk desk({plugin});
    AnalyzerManager &manager = *desk.manager;
    desk.stored = {{plugin + QStringLiteral(".dll"), QString(), QStringLiteral("2")}};
    manager.loadFromConfig();
    QCOMPARE(manager.count(), 1);
    manager.captureReady();
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.results() != nullptr, hasFrames);
    QCOMPARE(desk.frames(), std::uint64_t(hasFrames ? 1 : 0));
    QCOMPARE(manager.analyzerTitle(0), QStringLiteral("Nulls"));
    QCOMPARE(manager.shownStateList(), QStringList{QStringLiteral("Nulls,1")});
    QCOMPARE(manager.message(0), QString());
    QVERIFY(manager.analyzerChannels(0).isEmpty());

    AnalyzerDataGen list(manager);
    list.slotRowNumChanged(3);
    list.reset({QString(), 0, double(desk.capture.smpCount())});
    QTRY_VERIFY(list.isAtRest());
    QCOMPARE(list.rows(), hasFrames ? QStringList{QString()} : QStringList());

    std::vector<SimulationChannel> channels;
    manager.saveToConfig();
    manager.simulation().begin(1000);
    manager.simulation().build(1000, 1000, channels);
    manager.simulation().release();
    QVERIFY(channels.empty());
    manager.restartAnalyzer(0);
    manager.removeAnalyzer(0);
    QCOMPARE(desk.told, QStringList());
}

void TstAnalyzerLies::theProgramEndsWithADecoderThatNeverLeaves()
{
    AnalyzerDesk desk({QStringLiteral("spins")});
    QVERIFY(desk.add());
    desk.manager.reset(); // waits as long as for any of them, and goes on without it
}

QTEST_GUILESS_MAIN(TstAnalyzerLies)
#include "tst_AnalyzerLies.moc"
