#include "analyzer/AnalyzerDataGen.h"
#include "analyzer/MadeResults.h"
#include "analyzer/ResultsGate.h"

#include <QtTest>

#include <atomic>
#include <random>
#include <thread>

namespace {

constexpr double wholeCapture = 1e12;
constexpr int patience = 120000; // ms, of a busy machine

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

/// The thread over made-up results, and what it told last.
class ThreadDesk {
public:
    ThreadDesk()
    {
        QObject::connect(list.get(), &AnalyzerDataGen::listChanged, list.get(),
                         [this](const QStringList &rows, bool isSelected, int selectedRow) {
                             page = rows.join(QLatin1Char(' '));
                             marked = isSelected;
                             selected = selectedRow;
                             ++pages;
                         });
        QObject::connect(list.get(), &AnalyzerDataGen::listTotalChanged, list.get(),
                         [this](qlonglong index, qlonglong max, int pageNum) {
                             top = index;
                             total = max;
                             rowNum = pageNum;
                             ++totals;
                         });
        QObject::connect(list.get(), &AnalyzerDataGen::resetWanted, list.get(), [this] { ++wanted; });
        list->slotRowNumChanged(3);
    }
    MadeResults &add(char letter)
    {
        made.push_back(std::make_unique<MadeResults>(letter));
        return *made.back();
    }
    /// By those of one analyzer, a frame every ten samples from 0 on.
    void replaceResults(char letter, std::uint64_t frames)
    {
        list->slotModifyPrepare();
        const ResultsChange change(gate);
        made.clear();
        add(letter).row(frames, 0, 10);
    }
    void reset(const QString &searched = {}, double from = 0, double to = wholeCapture,
               AnalyzerDataGen::Clicked clicked = AnalyzerDataGen::Clicked::Forget)
    {
        page = text("(none yet)");
        list->reset({searched, from, to}, clicked);
    }
    [[nodiscard]] bool shows(const char *rows) const
    {
        return QTest::qWaitFor([this, rows] { return page == text(rows); }, patience);
    }

    ResultsGate gate;
    std::vector<std::unique_ptr<MadeResults>> made;
    QString page;
    bool marked = false;
    int selected = 0;
    qlonglong top = 0;
    qlonglong total = 0;
    int rowNum = 0;
    int pages = 0;
    int totals = 0;
    int wanted = 0;
    std::unique_ptr<AnalyzerDataGen> list = std::make_unique<AnalyzerDataGen>(gate, [this] {
        std::vector<ResultSource> sources;
        for (const auto &results : made) {
            const auto *id = reinterpret_cast<const Analyzer *>(results.get());
            sources.push_back({results.get(), id, DisplayBase::Decimal});
        }
        return sources;
    });
};

/// Results whose texts can be held up.
class SlowResults : public MadeResults {
public:
    using MadeResults::MadeResults;
    void describe(const FrameData &frame, lux::FrameText &out) const override
    {
        reached.store(true);
        while (held.load()) {
            std::this_thread::yield();
        }
        MadeResults::describe(frame, out);
    }
    mutable std::atomic<bool> reached{false};
    std::atomic<bool> held{false};
};

/// The list of a thousand frames, whose texts can be held up.
class SlowDesk : public ThreadDesk {
public:
    SlowDesk() : results(addSlow()) { results.row(1000, 0, 10, 1); }
    [[nodiscard]] bool begins(const QString &searched)
    {
        reset(searched);
        return shows("Hit A0 Hit A1 Hit A2") && QTest::qWaitFor([this] { return list->isAtRest(); }, patience);
    }
    /// The first text that it needs is held up.
    void scrollHeldUp(qlonglong row)
    {
        results.reached = false;
        results.held = true;
        list->begFrameChanged(row);
    }

    SlowResults &results;

private:
    SlowResults &addSlow()
    {
        auto slow = std::make_unique<SlowResults>('A');
        SlowResults &added = *slow;
        made.push_back(std::move(slow));
        return added;
    }
};

} // namespace

/// The thread of the results list.
class TstAnalyzerDataGen : public QObject {
    Q_OBJECT
private slots:
    void aResetTellsThePageAndItsPlace();
    void nothingToShowTellsAnEmptyList();
    void aScrollMovesThePage();
    void aScrollBehindTheListIsPassedOver();
    void theNewestOfManyRequestsIsWhatIsShown();
    void aSearchTellsItsCount();
    void aLongSearchWithoutMatchEmptiesTheList();
    void aNewSearchEndsTheOneUnderWay();
    void aSearchThatIsMadeAnewForMoreFramesShowsNoLessMeanwhile();
    void itIsAtRestOnceTheLastResetIsAnswered();
    void noRowIsSelectedUntilOneIsClicked();
    void theClickedRowMovesWithThePage();
    void theClickedRowGoesWithAFrameThatScrollingPutsInItsPlace();
    void aResetForgetsTheClickedRow();
    void aResetThatKeepsTheClickedRowFindsItsFrame();
    void rowsOfThePageKnowTheirFrames();
    void anotherHeightFillsThePage();
    void aScrollInASearchGoesOnWhenTheHeightChangesMeanwhile();
    void aScrollByAFewRowsGoesOnWhenTheHeightChangesMeanwhile();
    void aScrollOnItsWayGivesWayToAnother();
    void aScrollOnItsWayGivesWayToAReset();
    void aScrollThatHasComeToItsRowIsNotRepeated();
    void aChangeOfResultsIsNotHeldUpByAScan();
    void aChangeOfResultsIsNotHeldUpByALongScroll();
    void resultsThatWereReplacedAreAskedForAgain();
    void aScrollThatMeetsReplacedResultsGoesOnInTheListMadeAnew_data();
    void aScrollThatMeetsReplacedResultsGoesOnInTheListMadeAnew();
    void aRequestDuringAChangeIsServedBehindIt();
    void itEndsInTheMiddleOfAScan();
    void anythingAtOnceLeavesItSound();
};

void TstAnalyzerDataGen::aResetTellsThePageAndItsPlace()
{
    ThreadDesk desk;
    desk.add('A').row(10, 0, 10);
    desk.reset({}, 50);
    QVERIFY(desk.shows("A5 A6 A7"));
    QCOMPARE(desk.top, 5);
    QCOMPARE(desk.total, 10);
    QCOMPARE(desk.rowNum, 3);
}

void TstAnalyzerDataGen::nothingToShowTellsAnEmptyList()
{
    ThreadDesk desk;
    desk.reset();
    QVERIFY(desk.shows(""));
    desk.add('A').row(10, 0, 10);
    desk.reset();
    QVERIFY(desk.shows("A0 A1 A2"));
    desk.reset({}, 0, 0);
    QVERIFY(desk.shows(""));
    QCOMPARE(desk.total, 0);
}

void TstAnalyzerDataGen::aScrollMovesThePage()
{
    ThreadDesk desk;
    desk.add('A').row(100, 0, 10);
    desk.reset();
    QVERIFY(desk.shows("A0 A1 A2"));
    desk.list->begFrameChanged(50);
    QVERIFY(desk.shows("A50 A51 A52"));
    desk.list->begFrameChanged(49);
    QVERIFY(desk.shows("A49 A50 A51"));
    desk.list->begFrameChanged(100);
    QVERIFY(desk.shows("A97 A98 A99"));
    QCOMPARE(desk.list->topRow(), 97);
}

void TstAnalyzerDataGen::aScrollBehindTheListIsPassedOver()
{
    ThreadDesk desk;
    desk.add('A').row(10, 0, 10);
    desk.reset();
    QVERIFY(desk.shows("A0 A1 A2"));
    desk.list->begFrameChanged(4);
    QVERIFY(desk.shows("A4 A5 A6"));
    desk.list->begFrameChanged(11);
    desk.list->slotRowNumChanged(2); // has another page made, from the same row
    QVERIFY(desk.shows("A4 A5"));
}

void TstAnalyzerDataGen::theNewestOfManyRequestsIsWhatIsShown()
{
    ThreadDesk desk;
    desk.add('A').row(10000, 0, 10);
    for (int i = 0; i < 500; ++i) {
        desk.reset({}, i * 10);
    }
    QVERIFY(desk.shows("A499 A500 A501"));
    for (int i = 0; i < 500; ++i) {
        desk.list->begFrameChanged(i);
    }
    desk.list->begFrameChanged(777);
    QVERIFY(desk.shows("A777 A778 A779"));
}

void TstAnalyzerDataGen::aSearchTellsItsCount()
{
    ThreadDesk desk;
    desk.add('A').row(5000, 0, 10, 5);
    desk.reset(text("hit"));
    QVERIFY(desk.shows("Hit A0 Hit A5 Hit A10"));
    QTRY_COMPARE(desk.total, 1000);
    desk.reset(text("nowhere"));
    QVERIFY(desk.shows(""));
    QCOMPARE(desk.total, 0);
}

void TstAnalyzerDataGen::aLongSearchWithoutMatchEmptiesTheList()
{
    ThreadDesk desk;
    desk.add('A').row(600'000, 0, 10, 5); // some reports long
    desk.reset(text("hit"));
    QTRY_COMPARE_WITH_TIMEOUT(desk.total, 120'000, patience);
    desk.reset(text("nowhere"));
    QVERIFY(desk.shows(""));
    QCOMPARE(desk.total, 0);
}

void TstAnalyzerDataGen::aNewSearchEndsTheOneUnderWay()
{
    ThreadDesk desk;
    auto slow = std::make_unique<SlowResults>('A');
    slow->row(100, 0, 10, 10);
    SlowResults &results = *slow;
    desk.made.push_back(std::move(slow));
    results.held = true;
    desk.reset(text("nowhere"));
    QTRY_VERIFY(results.reached.load());
    desk.reset(text("hit"));
    results.held = false;
    QVERIFY(desk.shows("Hit A0 Hit A10 Hit A20"));
    QVERIFY(results.texts < 210); // one of the first search, then one scan and the page
}

void TstAnalyzerDataGen::aSearchThatIsMadeAnewForMoreFramesShowsNoLessMeanwhile()
{
    ThreadDesk desk;
    MadeResults &results = desk.add('A').row(600'000, 0, 10, 250'000); // some reports long
    desk.list->slotRowNumChanged(8);
    desk.reset(text("hit"));
    QVERIFY(desk.shows("Hit A0 Hit A250000 Hit A500000"));
    QTRY_VERIFY_WITH_TIMEOUT(desk.list->isAtRest(), patience);
    QStringList seen;
    connect(desk.list.get(), &AnalyzerDataGen::listTotalChanged, desk.list.get(), [&](qlonglong, qlonglong max, int) {
        seen.append(QString::number(max) + QLatin1Char(' ') + desk.list->rows().join(QLatin1Char(' ')));
    });
    results.frame(6'000'000, 6'000'005, true);
    desk.reset(text("hit"), 0, wholeCapture, AnalyzerDataGen::Clicked::Keep);
    QTRY_VERIFY_WITH_TIMEOUT(desk.list->isAtRest(), patience);
    const QString before = text("3 Hit A0 Hit A250000 Hit A500000");
    const QString behind = text("4 Hit A0 Hit A250000 Hit A500000 Hit A600000");
    QCOMPARE(seen.constLast(), behind);
    seen.removeAll(before);
    seen.removeAll(behind);
    QCOMPARE(seen, QStringList());
    desk.reset(text("hit a5")); // another one tells what it finds as it finds it
    QVERIFY(desk.shows("Hit A500000"));
}

void TstAnalyzerDataGen::itIsAtRestOnceTheLastResetIsAnswered()
{
    ThreadDesk desk;
    auto slow = std::make_unique<SlowResults>('A');
    slow->row(100, 0, 10, 10);
    SlowResults &results = *slow;
    desk.made.push_back(std::move(slow));
    QVERIFY(desk.list->isAtRest()); // nothing was asked for
    results.held = true;
    desk.reset(text("hit"));
    QTRY_VERIFY(results.reached.load());
    QVERIFY(!desk.list->isAtRest());
    results.held = false;
    QTRY_VERIFY(desk.list->isAtRest());
    QCOMPARE(desk.page, text("Hit A0 Hit A10 Hit A20"));
    QCOMPARE(desk.total, 10); // all of them were counted, not only those of the page
    desk.reset();
    QVERIFY(!desk.list->isAtRest());
    desk.list->dropPages();
    QVERIFY(desk.list->isAtRest()); // of that one nothing will be told
}

void TstAnalyzerDataGen::noRowIsSelectedUntilOneIsClicked()
{
    ThreadDesk desk;
    desk.add('A').row(10, 0, 10);
    desk.reset();
    QVERIFY(desk.shows("A0 A1 A2"));
    QVERIFY(!desk.marked);
    QCOMPARE(desk.selected, -1);
}

void TstAnalyzerDataGen::theClickedRowMovesWithThePage()
{
    ThreadDesk desk;
    desk.add('A').row(100, 0, 10);
    desk.reset({}, 500);
    QVERIFY(desk.shows("A50 A51 A52"));
    desk.list->markRow(51);
    QCOMPARE(desk.list->selectedRow(), 1);
    desk.list->begFrameChanged(49);
    QVERIFY(desk.shows("A49 A50 A51"));
    QVERIFY(desk.marked);
    QCOMPARE(desk.selected, 2);
    desk.list->begFrameChanged(60);
    QVERIFY(desk.shows("A60 A61 A62"));
    QCOMPARE(desk.selected, -9);
    desk.list->begFrameChanged(100); // the last page begins before the row that was asked for
    QVERIFY(desk.shows("A97 A98 A99"));
    QCOMPARE(desk.selected, 51 - 97);
    desk.reset();
    desk.list->markRow(5); // while the new list is on its way
    desk.list->begFrameChanged(4);
    QVERIFY(desk.shows("A4 A5 A6"));
    QVERIFY(desk.marked);
    QCOMPARE(desk.selected, 1);
}

void TstAnalyzerDataGen::theClickedRowGoesWithAFrameThatScrollingPutsInItsPlace()
{
    ThreadDesk desk;
    desk.add('A').frames({{0, 5}, {10, 500}, {510, 520}});
    desk.add('B').row(60, 1, 10);
    desk.reset({}, 400);
    QVERIFY(desk.shows("A1 B40 B41"));
    desk.list->markRow(41);
    desk.list->begFrameChanged(40);
    QVERIFY(desk.shows("B38 B39 B40"));
    QVERIFY(!desk.list->isRowMarked());
    QCOMPARE(desk.selected, -1); // not on B39, which is row 41 of the list
    desk.list->begFrameChanged(1);
    QVERIFY(desk.shows("B0 A1 B1"));
    QVERIFY(desk.list->isRowMarked());
    QCOMPARE(desk.selected, 1);
}

void TstAnalyzerDataGen::aResetForgetsTheClickedRow()
{
    ThreadDesk desk;
    desk.add('A').row(10, 0, 10);
    desk.reset();
    QVERIFY(desk.shows("A0 A1 A2"));
    desk.list->markRow(1);
    desk.reset();
    QVERIFY(desk.shows("A0 A1 A2"));
    QVERIFY(!desk.marked);
    QCOMPARE(desk.selected, -1);
}

void TstAnalyzerDataGen::aResetThatKeepsTheClickedRowFindsItsFrame()
{
    ThreadDesk desk;
    desk.add('A').row(100, 0, 10);
    desk.reset();
    QVERIFY(desk.shows("A0 A1 A2"));
    desk.list->markRow(2);
    desk.reset({}, 10, wholeCapture, AnalyzerDataGen::Clicked::Keep);
    QVERIFY(desk.shows("A1 A2 A3"));
    QVERIFY(desk.marked);
    QCOMPARE(desk.selected, 1);
    desk.reset({}, 500, wholeCapture, AnalyzerDataGen::Clicked::Keep);
    QVERIFY(desk.shows("A50 A51 A52"));
    QCOMPARE(desk.selected, -1); // nobody knows its row in this list
    desk.reset({}, 0, wholeCapture, AnalyzerDataGen::Clicked::Keep);
    QVERIFY(desk.shows("A0 A1 A2"));
    QCOMPARE(desk.selected, 2);
}

void TstAnalyzerDataGen::rowsOfThePageKnowTheirFrames()
{
    ThreadDesk desk;
    desk.add('A').row(10, 0, 10);
    QVERIFY(desk.list->frameAt(0) == nullptr);
    desk.reset({}, 50);
    QVERIFY(desk.shows("A5 A6 A7"));
    QCOMPARE(desk.list->frameAt(1)->first, 60);
    QCOMPARE(desk.list->frameAt(1)->last, 65);
    QVERIFY(desk.list->frameAt(3) == nullptr);
    QVERIFY(desk.list->frameAt(-1) == nullptr);
}

void TstAnalyzerDataGen::anotherHeightFillsThePage()
{
    ThreadDesk desk;
    desk.add('A').row(100, 0, 10);
    desk.reset({}, 100);
    QVERIFY(desk.shows("A10 A11 A12"));
    desk.list->markRow(11);
    desk.list->slotRowNumChanged(5);
    QVERIFY(desk.shows("A10 A11 A12 A13 A14"));
    QVERIFY(!desk.marked);
    desk.list->slotRowNumChanged(-1);
    QVERIFY(desk.shows(""));
}

void TstAnalyzerDataGen::aScrollInASearchGoesOnWhenTheHeightChangesMeanwhile()
{
    SlowDesk desk;
    QVERIFY(desk.begins(text("hit")));
    desk.scrollHeldUp(900);
    QTRY_VERIFY(desk.results.reached.load()); // in the first frame of the way
    desk.list->slotRowNumChanged(4);
    desk.results.held = false;
    QVERIFY(desk.shows("Hit A900 Hit A901 Hit A902 Hit A903"));
    QCOMPARE(desk.top, 900);
}

void TstAnalyzerDataGen::aScrollByAFewRowsGoesOnWhenTheHeightChangesMeanwhile()
{
    SlowDesk desk;
    QVERIFY(desk.begins({}));
    desk.list->begFrameChanged(50);
    QVERIFY(desk.shows("Hit A50 Hit A51 Hit A52"));
    desk.scrollHeldUp(48);
    QTRY_VERIFY(desk.results.reached.load()); // in the first of two rows
    desk.list->slotRowNumChanged(4);
    desk.results.held = false;
    QVERIFY(desk.shows("Hit A48 Hit A49 Hit A50 Hit A51"));
}

void TstAnalyzerDataGen::aScrollOnItsWayGivesWayToAnother()
{
    SlowDesk desk;
    QVERIFY(desk.begins(text("hit")));
    desk.scrollHeldUp(900);
    QTRY_VERIFY(desk.results.reached.load());
    desk.list->begFrameChanged(10);
    desk.list->slotRowNumChanged(2);
    desk.results.held = false;
    QVERIFY(desk.shows("Hit A10 Hit A11"));
}

void TstAnalyzerDataGen::aScrollOnItsWayGivesWayToAReset()
{
    SlowDesk desk;
    QVERIFY(desk.begins(text("hit")));
    desk.scrollHeldUp(900);
    QTRY_VERIFY(desk.results.reached.load());
    desk.reset(text("hit"));
    desk.list->slotRowNumChanged(2);
    desk.results.held = false;
    QVERIFY(desk.shows("Hit A0 Hit A1"));
    QTRY_VERIFY(desk.list->isAtRest());
    QCOMPARE(desk.top, 0);
}

void TstAnalyzerDataGen::aScrollThatHasComeToItsRowIsNotRepeated()
{
    SlowDesk desk;
    QVERIFY(desk.begins({}));
    desk.list->begFrameChanged(1000);
    QVERIFY(desk.shows("Hit A997 Hit A998 Hit A999")); // has grown upwards from the end
    desk.list->slotRowNumChanged(2);
    QVERIFY(desk.shows("Hit A997 Hit A998"));
}

void TstAnalyzerDataGen::aChangeOfResultsIsNotHeldUpByAScan()
{
    ThreadDesk desk;
    desk.add('A').row(400'000, 0, 10, 1);
    desk.reset(text("hit"));
    QVERIFY(desk.shows("Hit A0 Hit A1 Hit A2"));
    QTRY_VERIFY(desk.totals > 1);
    desk.list->slotModifyPrepare();
    const ResultsChange change(desk.gate); // waits for the thread to let go
    desk.made.clear();
    QVERIFY(!ResultsPass(desk.gate));
    QCOMPARE(desk.list->totalRows(), desk.total); // page and numbers survive
    QVERIFY(desk.total > 0);
}

void TstAnalyzerDataGen::aChangeOfResultsIsNotHeldUpByALongScroll()
{
    ThreadDesk desk;
    auto slow = std::make_unique<SlowResults>('A');
    slow->row(1000, 0, 10, 1);
    SlowResults &results = *slow;
    desk.made.push_back(std::move(slow));
    desk.reset(text("hit"));
    QTRY_COMPARE(desk.total, 1000);
    results.reached = false;
    results.held = true;
    results.texts = 0;
    desk.list->begFrameChanged(900);
    QTRY_VERIFY(results.reached.load()); // in the first frame of the way
    desk.list->slotModifyPrepare();
    results.held = false;
    const ResultsChange change(desk.gate);
    QVERIFY(results.texts < 900);
}

void TstAnalyzerDataGen::resultsThatWereReplacedAreAskedForAgain()
{
    ThreadDesk desk;
    desk.add('A').row(100, 0, 10);
    desk.reset();
    QVERIFY(desk.shows("A0 A1 A2"));
    desk.replaceResults('B', 100);
    QCOMPARE(desk.wanted, 0); // the list has what it shows
    desk.list->begFrameChanged(50);
    QTRY_COMPARE(desk.wanted, 1);
    QCOMPARE(desk.page, text("A0 A1 A2"));
    desk.reset();
    QVERIFY(desk.shows("B0 B1 B2"));
}

void TstAnalyzerDataGen::aScrollThatMeetsReplacedResultsGoesOnInTheListMadeAnew_data()
{
    QTest::addColumn<QString>("searched");
    QTest::addColumn<double>("from");
    QTest::addColumn<QString>("page");
    QTest::newRow("the list is the same") << QString() << 0.0 << text("B50 B51 B52");
    QTest::newRow("the wave has moved meanwhile") << QString() << 100.0 << text("B10 B11 B12");
    QTest::newRow("something else is searched for") << text("b9") << 0.0 << text("B9 B90 B91");
}

void TstAnalyzerDataGen::aScrollThatMeetsReplacedResultsGoesOnInTheListMadeAnew()
{
    QFETCH(QString, searched);
    QFETCH(double, from);
    QFETCH(QString, page);
    ThreadDesk desk;
    desk.add('A').row(100, 0, 10);
    desk.reset();
    QVERIFY(desk.shows("A0 A1 A2"));
    desk.replaceResults('B', 100);
    desk.list->begFrameChanged(50);
    QTRY_COMPARE(desk.wanted, 1);
    desk.reset(searched, from, wholeCapture, AnalyzerDataGen::Clicked::Keep);
    QTRY_COMPARE(desk.page, page);
    QTRY_VERIFY(desk.list->isAtRest());
    QCOMPARE(desk.page, page);
    desk.reset({}, 0, wholeCapture, AnalyzerDataGen::Clicked::Keep); // which was done then
    QVERIFY(desk.shows("B0 B1 B2"));
}

void TstAnalyzerDataGen::aRequestDuringAChangeIsServedBehindIt()
{
    ThreadDesk desk;
    QTRY_VERIFY(desk.pages > 0); // the empty one of the beginning
    desk.list->slotModifyPrepare();
    {
        const ResultsChange change(desk.gate);
        desk.add('A').row(100, 0, 10);
        desk.reset({}, 100);
        QCoreApplication::processEvents();
        QCOMPARE(desk.page, text("(none yet)"));
    }
    QVERIFY(desk.shows("A10 A11 A12"));
    desk.reset({}, 200);
    desk.list->slotModifyPrepare(); // what the request names is perhaps gone when it is served
    QTRY_VERIFY(desk.wanted > 0 || desk.page == text("A20 A21 A22"));
}

void TstAnalyzerDataGen::itEndsInTheMiddleOfAScan()
{
    ResultsGate gate;
    SlowResults results('A');
    results.row(1000, 0, 10, 1);
    results.held = true;
    ListWorker worker(gate, {[] {}, [] {}}, 0);
    std::thread thread([&worker] { worker.run(); });
    worker.request([&results](ListWorker::Requests &requests) {
        requests.rowNumRequest = requests.resetRequest = true;
        requests.rowNum = 3;
        requests.query = {text("nowhere"), 0, wholeCapture};
        requests.sources = {{&results, nullptr, DisplayBase::Decimal}};
        requests.sourcesOf = requests.generation;
    });
    while (!results.reached) {
        std::this_thread::yield();
    }
    worker.askToEnd();
    results.held = false;
    thread.join();
    QCOMPARE(results.texts.load(), std::uint64_t(1)); // the one that it was in
}

void TstAnalyzerDataGen::anythingAtOnceLeavesItSound()
{
    ThreadDesk desk;
    std::mt19937 random(11);
    QObject::connect(desk.list.get(), &AnalyzerDataGen::resetWanted, desk.list.get(), [&desk] { desk.reset(); });
    for (int i = 0; i < 400; ++i) {
        switch (random() % 6) {
        case 0:
            desk.reset(random() % 2 == 0 ? QString() : text("hit"), double(random() % 9000));
            break;
        case 1:
            desk.list->slotRowNumChanged(int(random() % 9));
            break;
        case 2: {
            desk.list->slotModifyPrepare();
            const ResultsChange change(desk.gate);
            desk.made.clear();
            desk.add('A').row(random() % 3000, 0, 3, 5);
            desk.add('B').row(random() % 3000, 1, 4, 7);
            break;
        }
        case 3:
            desk.list->markRow(qint64(random() % 20));
            break;
        case 4:
            desk.list->begFrameChanged(qlonglong(random() % 5000));
            break;
        default:
            QCoreApplication::processEvents();
        }
    }
    desk.list->slotRowNumChanged(2);
    desk.replaceResults('Z', 5);
    desk.reset();
    QVERIFY(desk.shows("Z0 Z1"));
}

QTEST_GUILESS_MAIN(TstAnalyzerDataGen)
#include "tst_AnalyzerDataGen.moc"
