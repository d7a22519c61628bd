// Plug-ins whose texts and exports never come to an end: nobody waits for them, and they are told once.

#include "AnalyzerDesk.h"
#include "analyzer/AnalyzerDataGen.h"
#include "analyzer/BubbleMaker.h"
#include "analyzer/MadeResults.h"
#include "plugins/TextGate.h"

#include <QLibrary>
#include <QTemporaryDir>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace {

constexpr int patience = 120000; // ms, of a busy machine

/// An analyzer whose texts never end while the gate is held, one that is sound, and a list of what they find.
class EndlessDesk : public AnalyzerDesk {
public:
    EndlessDesk() : AnalyzerDesk({QStringLiteral("text-waits"), QStringLiteral("sound")})
    {
        gate().held = true;
        list = std::make_unique<AnalyzerDataGen>(*manager);
        list->slotRowNumChanged(3);
        QObject::connect(list.get(), &AnalyzerDataGen::resetWanted, list.get(), [this] { resetList(); });
        QObject::connect(manager.get(), &AnalyzerManager::analyzerItemChanged, list.get(), [this] { resetList(); });
    }
    /// Every thread that was left behind has come out when this is gone, so that the next test begins anew.
    ~EndlessDesk()
    {
        TextGate &texts = gate();
        list.reset();
        manager.reset();
        texts.held = false;
        while (texts.inside > 0) {
            std::this_thread::yield();
        }
    }
    [[nodiscard]] bool addBoth() { return add(0, 0) && add(1, 1) && waitForWorkers(); }
    void resetList() const { list->reset({QString(), 0, double(capture.smpCount())}); }
    /// The list's thread goes into the texts and does not come out.
    [[nodiscard]] bool holdList() const
    {
        resetList();
        return QTest::qWaitFor([] { return gate().inside > 0; }, patience);
    }
    [[nodiscard]] bool waitForTold() const
    {
        return QTest::qWaitFor([this] { return !told.isEmpty(); }, patience);
    }
    [[nodiscard]] static TextGate &gate()
    {
        QLibrary file(folderOf(QStringLiteral("text-waits")) + QStringLiteral("/text-waits"));
        return *reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"))();
    }
    /// Instances of the one with endless texts, without those of the tests before.
    [[nodiscard]] int living() const { return alive() - m_aliveBefore; }
    [[nodiscard]] static int alive()
    {
        QLibrary file(folderOf(QStringLiteral("text-waits")) + QStringLiteral("/text-waits"));
        return reinterpret_cast<int (*)()>(file.resolve("LiveAnalyzers"))();
    }

    const QStringList doesNotStop{
        QStringLiteral("Lie: The decoder does not stop. It is out of use until it is started again.")};
    std::unique_ptr<AnalyzerDataGen> list; ///< goes before the manager

private:
    const int m_aliveBefore = alive();
};

/// One frame. Its texts that are made when the results should be gone are counted.
class GoneResults : public MadeResults {
public:
    GoneResults() : MadeResults('A') { frame(0, 10); }
    void describe(const FrameData &frame, lux::FrameText &out) const override
    {
        textsBehind += isGone ? 1 : 0;
        MadeResults::describe(frame, out);
    }

    std::atomic<bool> isGone{false};
    mutable std::atomic<int> textsBehind{0};
};

} // namespace

class TstEndlessTexts : public QObject {
    Q_OBJECT
private slots:
    void aCaptureIsNotHeldUpByAnEndlessTextOfTheList();
    void theListGoesOnWithoutAnAnalyzerWhoseTextNeverEnds();
    void aTextThatComesBackInTimeIsNoFault();
    void noTwoTextsOfTheSameResultsAreMadeAtATime();
    void aMachineThatStandsStillMakesNoTextEndless_data();
    void aMachineThatStandsStillMakesNoTextEndless();
    void anAnalyzerCanBeRemovedDuringItsEndlessText();
    void theProgramEndsDuringAnEndlessText();
    void aPaintIsNotHeldUpByAnEndlessText();
    void textsThatComeLateAreThereForTheNextPaint();
    void noTextOfABubbleIsMadeOfResultsThatAreGone();
    void aCaptureIsNotHeldUpByAnEndlessTextOfABubble();
    void theProgramEndsDuringAnEndlessTextOfABubble();
    void anEndlessExportEndsWhenItIsCancelled();
    void anExportThatComesBackLateHarmsNoOtherOneOfTheSameFile();
    void aCaptureIsNotHeldUpByAnEndlessExport();
    void anAnalyzerCanBeRemovedDuringItsEndlessExport();
    void theProgramEndsDuringAnEndlessExport();
};

void TstEndlessTexts::aCaptureIsNotHeldUpByAnEndlessTextOfTheList()
{
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    QVERIFY(desk.holdList());
    desk.manager->captureStarts();
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.told, QStringList()); // it may still come back
    QCOMPARE(desk.frames(0), std::uint64_t(desk.capture.entryCount(0) - 1));
    QVERIFY(desk.waitForTold());
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    QCOMPARE(desk.frames(0), std::uint64_t(0)); // out of use
    QVERIFY(desk.manager->endedEarly(0));
    QCOMPARE(desk.frames(1), std::uint64_t(desk.capture.entryCount(1) - 1));
    desk.resetList();
    QTRY_COMPARE_WITH_TIMEOUT(desk.list->rows().size(), 3, patience);
    QCOMPARE(desk.told, desk.doesNotStop);
}

void TstEndlessTexts::theListGoesOnWithoutAnAnalyzerWhoseTextNeverEnds()
{
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    QVERIFY(desk.holdList());
    QVERIFY(desk.waitForTold());
    QTRY_COMPARE_WITH_TIMEOUT(desk.list->rows().size(), 3, patience);
    QCOMPARE(desk.list->frameAt(0)->analyzer, desk.manager->analyzerAt(1));
    QCOMPARE(desk.told, desk.doesNotStop);
    QCOMPARE(desk.manager->count(), 2);
}

void TstEndlessTexts::aTextThatComesBackInTimeIsNoFault()
{
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    QVERIFY(desk.holdList());
    desk.manager->captureStarts();
    QCOMPARE(desk.living(), 2); // the one that is read, and another one in its place
    desk.gate().held = false;
    QTRY_COMPARE_WITH_TIMEOUT(desk.living(), 1, patience);
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    desk.resetList();
    QTRY_COMPARE_WITH_TIMEOUT(desk.list->rows().size(), 3, patience);
    QCOMPARE(desk.list->frameAt(0)->analyzer, desk.manager->analyzerAt(0));
    QCOMPARE(desk.told, QStringList());
    QVERIFY(!desk.manager->endedEarly(0));
}

void TstEndlessTexts::noTwoTextsOfTheSameResultsAreMadeAtATime()
{
    constexpr int moment = 200; // ms, less than any text may take
    EndlessDesk desk;
    QVERIFY(desk.add(0, 0) && desk.waitForWorkers());
    QVERIFY(desk.holdList());
    QSignalSpy resets(desk.list.get(), &AnalyzerDataGen::resetWanted);
    QVERIFY(desk.add(1, 1)); // takes the pass of the list's thread; what it is in stays
    QTRY_VERIFY_WITH_TIMEOUT(!resets.isEmpty(), patience);
    QVERIFY(!QTest::qWaitFor([&desk] { return desk.gate().inside > 1; }, moment));
    QCOMPARE(desk.gate().inside.load(), 1);
    desk.gate().held = false;
    QTRY_COMPARE_WITH_TIMEOUT(desk.list->rows().size(), 3, patience);
}

void TstEndlessTexts::aMachineThatStandsStillMakesNoTextEndless_data()
{
    QTest::addColumn<bool>("losesItsPass");
    QTest::newRow("of a reader with a pass") << false;
    QTest::newRow("of a reader whose pass was taken") << true;
}

void TstEndlessTexts::aMachineThatStandsStillMakesNoTextEndless()
{
    QFETCH(bool, losesItsPass);
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    QVERIFY(desk.holdList());
    if (losesItsPass) {
        desk.manager->captureStarts();
    }
    desk.manager->lookAfterReaders();
    std::this_thread::sleep_for(ResultsGate::grace + std::chrono::milliseconds(100));
    desk.manager->lookAfterReaders(); // the program goes on before the decoder does
    QCoreApplication::processEvents();
    QCOMPARE(desk.told, QStringList());
    QVERIFY(!desk.manager->endedEarly(0));
}

void TstEndlessTexts::anAnalyzerCanBeRemovedDuringItsEndlessText()
{
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    QVERIFY(desk.holdList());
    desk.manager->removeAnalyzer(0);
    QCOMPARE(desk.manager->count(), 1);
    desk.resetList();
    QTRY_COMPARE_WITH_TIMEOUT(desk.list->rows().size(), 3, patience);
    QCOMPARE(desk.living(), 1);
    desk.gate().held = false;
    QTRY_COMPARE_WITH_TIMEOUT(desk.living(), 0, patience);
    QCOMPARE(desk.told, QStringList());
}

void TstEndlessTexts::theProgramEndsDuringAnEndlessText()
{
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    QVERIFY(desk.holdList());
    desk.list.reset();
    desk.manager.reset();
    QVERIFY(desk.gate().inside > 0);
}

void TstEndlessTexts::aPaintIsNotHeldUpByAnEndlessText()
{
    EndlessDesk desk;
    BubbleMaker maker(*desk.manager, {});
    QVERIFY(desk.addBoth());
    const BubbleMaker::Key endless{desk.results(0), 0, 0, DisplayBase::Decimal};
    const BubbleMaker::Key sound{desk.results(1), 0, 1, DisplayBase::Decimal};
    for (int i = 0; i < 1000; ++i) {
        QVERIFY(maker.texts(endless) == nullptr); // only the first one waits
        QVERIFY(maker.texts(sound) == nullptr);   // its turn does not come before the other's end
    }
    QVERIFY(desk.waitForTold());
    QCOMPARE(desk.told, desk.doesNotStop);
    QVERIFY(desk.results(0) == nullptr); // nobody asks it again
    const BubbleMaker::Texts *texts = nullptr;
    QTRY_VERIFY_WITH_TIMEOUT((texts = maker.texts(sound)) != nullptr, patience); // late ones on a busy machine
    QVERIFY(texts->front().rfind("edge ", 0) == 0);
}

void TstEndlessTexts::textsThatComeLateAreThereForTheNextPaint()
{
    EndlessDesk desk;
    int paints = 0;
    BubbleMaker maker(*desk.manager, [&paints] { ++paints; });
    QVERIFY(desk.addBoth());
    const BubbleMaker::Key key{desk.results(0), 2, 0, DisplayBase::Decimal};
    QVERIFY(maker.texts(key) == nullptr);
    desk.gate().held = false;
    QTRY_COMPARE_WITH_TIMEOUT(paints, 1, patience);
    desk.gate().held = true;
    QVERIFY(maker.texts(key) != nullptr);
    desk.gate().held = false;
    QCOMPARE(desk.told, QStringList());
}

void TstEndlessTexts::noTextOfABubbleIsMadeOfResultsThatAreGone()
{
    const AnalyzerDesk desk(QStringList{});
    for (int i = 0; i < 5; ++i) {
        GoneResults results;
        int arrived = 0;
        BubbleMaker maker(
            *desk.manager, [&arrived] { ++arrived; }, std::chrono::milliseconds(0));
        const bool isLate = maker.texts({&results, 0, 0, DisplayBase::Decimal}) == nullptr; // its thread hardly runs
        desk.manager->captureStarts();
        results.isGone = true;
        if (isLate) {
            QTRY_COMPARE_WITH_TIMEOUT(arrived, 1, patience); // so that it is asked again
        }
        QCOMPARE(results.textsBehind.load(), 0);
    }
}

void TstEndlessTexts::aCaptureIsNotHeldUpByAnEndlessTextOfABubble()
{
    EndlessDesk desk;
    BubbleMaker maker(*desk.manager, {});
    QVERIFY(desk.addBoth());
    QVERIFY(maker.texts({desk.results(0), 0, 0, DisplayBase::Decimal}) == nullptr);
    QTRY_VERIFY_WITH_TIMEOUT(desk.gate().inside > 0, patience);
    desk.manager->captureStarts();
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    QTRY_VERIFY_WITH_TIMEOUT(maker.texts({desk.results(1), 0, 1, DisplayBase::Decimal}) != nullptr, patience);
    QVERIFY(desk.waitForTold());
    QCOMPARE(desk.told, desk.doesNotStop);
}

void TstEndlessTexts::theProgramEndsDuringAnEndlessTextOfABubble()
{
    EndlessDesk desk;
    {
        BubbleMaker maker(*desk.manager, {});
        QVERIFY(desk.addBoth());
        QVERIFY(maker.texts({desk.results(0), 0, 0, DisplayBase::Decimal}) == nullptr);
        QTRY_VERIFY_WITH_TIMEOUT(desk.gate().inside > 0, patience);
    }
    desk.list.reset();
    desk.manager.reset();
    QVERIFY(desk.gate().inside > 0);
}

void TstEndlessTexts::anEndlessExportEndsWhenItIsCancelled()
{
    const QTemporaryDir folder;
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    desk.manager->startExport(desk.results(0), folder.filePath(QStringLiteral("frames.txt")), 1, 0);
    QTRY_VERIFY_WITH_TIMEOUT(desk.gate().inside > 0, patience);
    desk.manager->cancelExport();
    QVERIFY(desk.manager->isExporting()); // it may still end by itself
    QTRY_VERIFY_WITH_TIMEOUT(!desk.manager->isExporting(), patience);
    QVERIFY(desk.manager->exportOutcome().cancelled);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
    QVERIFY(desk.waitForTold());
    QCOMPARE(desk.told, desk.doesNotStop);
    QVERIFY(desk.manager->endedEarly(0));

    desk.manager->startExport(desk.results(1), folder.filePath(QStringLiteral("other.txt")), 1, 0);
    QTRY_VERIFY_WITH_TIMEOUT(!desk.manager->isExporting(), patience);
    QVERIFY(desk.manager->exportOutcome().isDone());
}

void TstEndlessTexts::anExportThatComesBackLateHarmsNoOtherOneOfTheSameFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("frames.txt"));
    EndlessDesk desk;
    desk.list.reset(); // which would be in the texts as well
    QVERIFY(desk.add(0, 0) && desk.add(1, 0) && desk.waitForWorkers());
    desk.manager->startExport(desk.results(0), path, 1, 0);
    QTRY_COMPARE_WITH_TIMEOUT(desk.gate().inside.load(), 1, patience);
    const QStringList first = QDir(folder.path()).entryList(QDir::Files);
    desk.manager->cancelExport();
    QTRY_VERIFY_WITH_TIMEOUT(!desk.manager->isExporting(), patience); // its thread is left behind
    desk.manager->startExport(desk.results(1), path, 1, 0);
    QTRY_COMPARE_WITH_TIMEOUT(desk.gate().inside.load(), 2, patience);
    const QStringList second = QDir(folder.path()).entryList(QDir::Files);
    QCOMPARE(first.size(), 1);
    QCOMPARE(second.size(), 1);
    QVERIFY2(first != second, "the first one removes its own when it comes out");
    desk.gate().held = false;
    QTRY_VERIFY_WITH_TIMEOUT(!desk.manager->isExporting(), patience);
    QVERIFY(desk.manager->exportOutcome().isDone());
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{QStringLiteral("frames.txt")});
}

void TstEndlessTexts::aCaptureIsNotHeldUpByAnEndlessExport()
{
    const QTemporaryDir folder;
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    desk.manager->startExport(desk.results(0), folder.filePath(QStringLiteral("frames.txt")), 1, 0);
    QTRY_VERIFY_WITH_TIMEOUT(desk.gate().inside > 0, patience);
    desk.manager->captureStarts();
    desk.manager->captureReady();
    QVERIFY(desk.waitForWorkers());
    QTRY_VERIFY_WITH_TIMEOUT(!desk.manager->isExporting(), patience);
    QVERIFY(desk.manager->exportOutcome().cancelled);
    QVERIFY(desk.waitForTold());
    QCOMPARE(desk.told, desk.doesNotStop);
}

void TstEndlessTexts::anAnalyzerCanBeRemovedDuringItsEndlessExport()
{
    const QTemporaryDir folder;
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    desk.manager->startExport(desk.results(0), folder.filePath(QStringLiteral("frames.txt")), 1, 0);
    QTRY_VERIFY_WITH_TIMEOUT(desk.gate().inside > 0, patience);
    desk.manager->removeAnalyzer(0);
    desk.manager->removeAnalyzer(0);
    QTRY_VERIFY_WITH_TIMEOUT(!desk.manager->isExporting(), patience);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
}

void TstEndlessTexts::theProgramEndsDuringAnEndlessExport()
{
    const QTemporaryDir folder;
    EndlessDesk desk;
    QVERIFY(desk.addBoth());
    desk.manager->startExport(desk.results(0), folder.filePath(QStringLiteral("frames.txt")), 1, 0);
    QTRY_VERIFY_WITH_TIMEOUT(desk.gate().inside > 0, patience);
    desk.list.reset();
    desk.manager.reset();
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
}

QTEST_GUILESS_MAIN(TstEndlessTexts)
#include "tst_EndlessTexts.moc"
