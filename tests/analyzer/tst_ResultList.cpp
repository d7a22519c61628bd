#include "analyzer/MadeResults.h"

#include <QtTest>

#include <algorithm>
#include <random>

using ResultList::Step;

namespace {

const auto goOn = [] { return false; };
constexpr double wholeCapture = 1e9;

/// Results, and a list of them.
class ListDesk {
public:
    MadeResults &add(char letter)
    {
        made.push_back(std::make_unique<MadeResults>(letter));
        return *made.back();
    }
    ListDesk &reset(int rowNum, double from = 0, const QString &searched = {}, double to = wholeCapture)
    {
        std::vector<ResultSource> sources;
        for (const auto &results : made) {
            sources.push_back({results.get(), nullptr, DisplayBase::Decimal});
        }
        list.rowNum = rowNum;
        ResultList::reset(list, sources, {searched, from, to});
        return *this;
    }
    /// Until nothing is left to do. @return what the page shows
    QString run()
    {
        for (int steps = 0; ResultList::step(list) != Step::Idle; ++steps) {
            if (steps > 1'000'000) {
                return QStringLiteral("does not end");
            }
        }
        return page();
    }
    QString scrollTo(qint64 row)
    {
        ResultList::scrollTo(list, row, goOn);
        return run();
    }
    [[nodiscard]] QString page() const { return list.rows.join(QLatin1Char(' ')); }

    std::vector<std::unique_ptr<MadeResults>> made;
    ResultList::State list;
};

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

} // namespace

/// The list of decoded frames without its thread.
class TstResultList : public QObject {
    Q_OBJECT
private slots:
    void framesOfTwoAnalyzersAreListedInTheOrderOfTime();
    void nobodyIsListedWithoutAnalyzersOrData();
    void anAnalyzerWithoutResultsOrFramesIsLeftOut();
    void theListBeginsAtTheLeftEdge_data();
    void theListBeginsAtTheLeftEdge();
    void aFrameThatStraddlesTheLeftEdgeIsTheFirstRow();
    void aFrameThatStraddlesTheLeftEdgeStandsInItsPlaceOnceThePageIsScrolled();
    void aPageFromWithinAFrameScrollsToWhatAJumpShows_data();
    void aPageFromWithinAFrameScrollsToWhatAJumpShows();
    void aPageFromWithinAFrameStaysWhenItIsScrolledToItsOwnRow();
    void aFrameAtTheFirstSampleIsListed();
    void rightOfAllFramesTheLastPageIsShown();
    void aPageThatRunsIntoTheEndGrowsUpwards();
    void equalFramesHaveTheOrderOfTheAnalyzersInBothDirections();
    void rowsKnowTheirFrames();
    void aScrollToTheEndShowsTheLastPage();
    void scrollingUpKeepsTheRowsThatStay();
    void everyWayOfScrollingShowsTheSamePage_data();
    void everyWayOfScrollingShowsTheSamePage();
    void aLongJumpMakesNoTextOnItsWay();
    void aScrollIsLeftBetweenTwoFramesAndGoesOnFromThere();
    void rowsOutsideOfTheListAreCutToIt();
    void aSearchCountsWhatMatches();
    void aSearchIgnoresCase();
    void aSearchWithoutMatchEndsWithNoRows();
    void aSearchCoversTheWholeCapture();
    void theCountGrowsBehindThePageWhileTheScanRuns();
    void aCountThatIsKnownIsNotCountedAgain();
    void scrollingInASearchCountsMatches();
    void aViewWithoutRowsIsFullAtOnce();
    void anotherHeightMakesThePageAnewFromTheSameRow();
    void framesThatComeLaterAreNotListed();
    void aTextThatFailsIsAnEmptyRow();
    void seekFindsTheRowOfEveryNumber();
    void cursorsAreAtARowWhenNoFrameBeforeThemBelongsBehind();
    void aFilterKnowsLettersBeyondAscii();
};

void TstResultList::framesOfTwoAnalyzersAreListedInTheOrderOfTime()
{
    ListDesk desk;
    desk.add('A').frames({{10, 20}, {50, 60}});
    desk.add('B').frames({{5, 8}, {30, 40}, {70, 80}});
    QCOMPARE(desk.reset(10).run(), text("B0 A0 B1 A1 B2"));
    QCOMPARE(desk.list.topRow, 0);
    QCOMPARE(desk.list.totalRows, 5);
}

void TstResultList::nobodyIsListedWithoutAnalyzersOrData()
{
    ListDesk desk;
    QCOMPARE(desk.reset(10).run(), QString());
    desk.add('A').row(3, 0, 10);
    QCOMPARE(desk.reset(10, 0, {}, 0).run(), QString());
    QCOMPARE(desk.list.totalRows, 0);
    QCOMPARE(desk.scrollTo(1), QString());
}

void TstResultList::anAnalyzerWithoutResultsOrFramesIsLeftOut()
{
    ListDesk desk;
    desk.add('A').frames({{1, 2}});
    desk.add('B');
    const std::vector<ResultSource> sources{{nullptr, nullptr, DisplayBase::Decimal},
                                            {desk.made[1].get(), nullptr, DisplayBase::Decimal},
                                            {desk.made[0].get(), nullptr, DisplayBase::Decimal}};
    desk.list.rowNum = 4;
    ResultList::reset(desk.list, sources, {{}, 0, wholeCapture});
    QCOMPARE(desk.list.pageCursors.size(), std::size_t(1));
    QCOMPARE(desk.run(), text("A0"));
}

void TstResultList::theListBeginsAtTheLeftEdge_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<QString>("page");
    QTest::addColumn<int>("topRow");
    QTest::newRow("left of all") << -500.0 << text("A0 B0 A1") << 0;
    QTest::newRow("at the start") << 0.0 << text("A0 B0 A1") << 0;
    QTest::newRow("between two frames") << 25.5 << text("A1 B1 A2") << 2;
    QTest::newRow("behind one analyzer") << 130.0 << text("A6 A7 A8") << 8;
}

void TstResultList::theListBeginsAtTheLeftEdge()
{
    QFETCH(double, from);
    ListDesk desk;
    desk.add('A').row(10, 10, 20); // 10 to 20, 30 to 40 and so on
    desk.add('B').frames({{11, 12}, {31, 32}});
    QTEST(desk.reset(3, from).run(), "page");
    QFETCH(int, topRow);
    QCOMPARE(desk.list.topRow, topRow);
    QCOMPARE(desk.list.totalRows, 12);
}

void TstResultList::aFrameThatStraddlesTheLeftEdgeIsTheFirstRow()
{
    ListDesk desk;
    desk.add('A').frames({{0, 5}, {10, 500}, {510, 520}});
    desk.add('B').row(60, 1, 10);
    QCOMPARE(desk.reset(3, 400).run(), text("A1 B40 B41"));
    QCOMPARE(desk.list.topRow, 41); // forty of B, one of A
}

void TstResultList::aFrameThatStraddlesTheLeftEdgeStandsInItsPlaceOnceThePageIsScrolled()
{
    ListDesk desk;
    desk.add('A').frames({{0, 5}, {10, 500}, {510, 520}});
    desk.add('B').row(60, 1, 10);
    desk.reset(3, 400).run();
    QCOMPARE(desk.scrollTo(40), text("B38 B39 B40"));
    for (qint64 row = 39; row > 0; --row) {
        desk.scrollTo(row);
        QCOMPARE(desk.list.topRow, row);
    }
    QCOMPARE(desk.page(), text("B0 A1 B1"));
    QCOMPARE(desk.scrollTo(0), text("A0 B0 A1"));
    QCOMPARE(desk.reset(3, 400).run(), text("A1 B40 B41"));
    QCOMPARE(desk.scrollTo(42), text("B40 B41 B42"));
}

void TstResultList::aPageFromWithinAFrameScrollsToWhatAJumpShows_data()
{
    QTest::addColumn<double>("from");
    QTest::newRow("one frame straddles") << 180.0;
    QTest::newRow("two frames straddle") << 350.0;
    QTest::newRow("near the end, where the page grows upwards") << 905.0;
    QTest::newRow("one analyzer has no more frames") << 1100.0;
}

void TstResultList::aPageFromWithinAFrameScrollsToWhatAJumpShows()
{
    QFETCH(double, from);
    ListDesk desk;
    desk.add('A').frames({{5, 200}, {210, 400}, {410, 880}, {900, 990}});
    desk.add('B').row(100, 0, 9);
    desk.add('C').frames({{20, 30}, {300, 700}, {710, 1200}, {1300, 1310}});
    const QStringList whole = desk.reset(200).run().split(QLatin1Char(' '));
    constexpr int rows = 8;
    const auto pageAt = [&whole](qint64 row) { return whole.mid(int(row), rows).join(QLatin1Char(' ')); };
    desk.reset(rows, from).run();
    const qint64 begin = desk.list.topRow;
    for (qint64 row = 0; row <= qint64(whole.size()) - rows; ++row) {
        desk.reset(rows, from).run();
        QCOMPARE(desk.list.topRow, begin);
        if (row != begin) {
            QCOMPARE(desk.scrollTo(row), pageAt(row));
        }
    }
    for (const int pace : {1, 3, rows}) {
        desk.reset(rows, from).run();
        for (qint64 row = begin - pace; row >= 0; row -= pace) {
            QCOMPARE(desk.scrollTo(row), pageAt(row));
        }
    }
}

void TstResultList::aPageFromWithinAFrameStaysWhenItIsScrolledToItsOwnRow()
{
    ListDesk desk;
    desk.add('A').frames({{0, 5}, {10, 500}, {510, 520}});
    desk.add('B').row(60, 1, 10);
    const QString page = desk.reset(3, 400).run();
    QCOMPARE(desk.scrollTo(desk.list.topRow), page);
    const QString grown = desk.reset(10, 550).run();
    QCOMPARE(desk.scrollTo(desk.list.topRow), grown);
}

void TstResultList::aFrameAtTheFirstSampleIsListed()
{
    ListDesk desk;
    desk.add('A').frames({{0, 0}, {3, 4}, {6, 7}});
    QCOMPARE(desk.reset(2).run(), text("A0 A1"));
    QCOMPARE(desk.list.topRow, 0);
}

void TstResultList::rightOfAllFramesTheLastPageIsShown()
{
    ListDesk desk;
    desk.add('A').row(10, 0, 10);
    desk.add('B').row(10, 5, 10);
    QCOMPARE(desk.reset(3, 5000).run(), text("B8 A9 B9"));
    QCOMPARE(desk.list.topRow, 17);
    QCOMPARE(desk.list.totalRows, 20);
}

void TstResultList::aPageThatRunsIntoTheEndGrowsUpwards()
{
    ListDesk desk;
    desk.add('A').row(10, 0, 10);
    QCOMPARE(desk.reset(4, 80).run(), text("A6 A7 A8 A9"));
    QCOMPARE(desk.list.topRow, 6);
    QCOMPARE(desk.reset(40, 80).run().count(QLatin1Char('A')), 10); // fewer frames than rows
    QCOMPARE(desk.list.topRow, 0);
}

void TstResultList::equalFramesHaveTheOrderOfTheAnalyzersInBothDirections()
{
    ListDesk desk;
    desk.add('A').frames({{10, 20}, {30, 40}});
    desk.add('B').frames({{10, 15}, {30, 40}});
    const QString order = text("A0 B0 A1 B1");
    QCOMPARE(desk.reset(4).run(), order);
    QCOMPARE(desk.reset(4, 1000).run(), order); // made from below
}

void TstResultList::rowsKnowTheirFrames()
{
    ListDesk desk;
    desk.add('A').frames({{10, 20}, {30, 45}});
    const std::vector<ResultSource> sources{
        {desk.made[0].get(), reinterpret_cast<const Analyzer *>(&desk), DisplayBase::Decimal}};
    desk.list.rowNum = 2;
    ResultList::reset(desk.list, sources, {{}, 35, wholeCapture});
    QCOMPARE(desk.run(), text("A0 A1")); // one from below
    QCOMPARE(desk.list.rowRanges.size(), std::size_t(2));
    QCOMPARE(desk.list.rowRanges[0].first, 10);
    QCOMPARE(desk.list.rowRanges[0].last, 20);
    QCOMPARE(desk.list.rowRanges[1].frame, std::uint64_t(1));
    QCOMPARE(desk.list.rowRanges[1].last, 45);
    QCOMPARE(desk.list.rowRanges[1].analyzer, sources[0].analyzer);
}

void TstResultList::aScrollToTheEndShowsTheLastPage()
{
    ListDesk desk;
    desk.add('A').row(1000, 0, 10);
    desk.add('B').row(1000, 5, 10);
    desk.reset(3).run();
    QCOMPARE(desk.scrollTo(2000), text("B998 A999 B999"));
    QCOMPARE(desk.list.topRow, 1997);
    QCOMPARE(desk.scrollTo(2000), text("B998 A999 B999"));
}

void TstResultList::scrollingUpKeepsTheRowsThatStay()
{
    ListDesk desk;
    desk.add('A').row(100, 0, 10);
    desk.reset(10, 500).run();
    const std::uint64_t before = desk.made[0]->texts;
    const qint64 top = desk.list.topRow;
    QVERIFY(desk.scrollTo(top - 3).startsWith(text("A47 A48 A49 A50")));
    QCOMPARE(desk.made[0]->texts - before, std::uint64_t(3));
    QCOMPARE(desk.list.topRow, top - 3);
    QCOMPARE(desk.list.rowRanges.size(), std::size_t(10));
    QCOMPARE(desk.list.rowRanges[0].frame, std::uint64_t(47));
}

void TstResultList::everyWayOfScrollingShowsTheSamePage_data()
{
    QTest::addColumn<QString>("searched");
    QTest::addColumn<double>("from");
    QTest::newRow("all frames") << QString() << 0.0;
    QTest::newRow("from within a long frame") << QString() << 2000.0;
    QTest::newRow("a search") << text("hit") << 0.0;
}

void TstResultList::everyWayOfScrollingShowsTheSamePage()
{
    QFETCH(QString, searched);
    QFETCH(double, from);
    ListDesk desk;
    desk.add('A').row(900, 0, 7, 3);
    desk.add('B').row(700, 3, 9, 4);
    desk.add('C').row(50, 7, 70, 2);
    ListDesk all;
    all.made.swap(desk.made);
    all.reset(2000, 0, searched).run(); // the whole list on one page
    const QStringList whole = all.list.rows;
    desk.made.swap(all.made);

    constexpr int rows = 12;
    std::mt19937 random(7);
    qint64 at = 0;
    for (int i = 0; i < 300; ++i) {
        if (i % 10 == 0) {
            desk.reset(rows, from, searched).run();
            at = desk.list.topRow;
        }
        const qint64 way = i % 3 == 0 ? qint64(random() % 25) - 12 : qint64(random() % 2000) - 1000;
        at = std::clamp<qint64>(at + (way == 0 ? 1 : way), 0, qint64(whole.size()) - rows);
        QCOMPARE(desk.scrollTo(at), whole.mid(int(at), rows).join(QLatin1Char(' ')));
        QCOMPARE(desk.list.topRow, at);
        QCOMPARE(desk.list.totalRows, qint64(whole.size()));
        QCOMPARE(desk.list.rowRanges.size(), std::size_t(rows));
    }
}

void TstResultList::aLongJumpMakesNoTextOnItsWay()
{
    ListDesk desk;
    desk.add('A').row(20000, 0, 10);
    desk.add('B').row(20000, 5, 10);
    desk.reset(5).run();
    desk.made[0]->texts = 0;
    QCOMPARE(desk.scrollTo(30001), text("B15000 A15001 B15001 A15002 B15002"));
    QVERIFY(desk.made[0]->texts <= 5);
    QCOMPARE(desk.scrollTo(1), text("B0 A1 B1 A2 B2"));
}

void TstResultList::aScrollIsLeftBetweenTwoFramesAndGoesOnFromThere()
{
    ListDesk desk;
    desk.add('A').row(1000, 0, 10, 2);
    desk.reset(3, 0, text("hit")).run();
    int asked = 0;
    ResultList::scrollTo(desk.list, 400, [&asked] { return ++asked > 100; });
    QCOMPARE(desk.list.topRow, 50); // a hundred frames on
    QCOMPARE(desk.run(), text("Hit A100 Hit A102 Hit A104"));
    QCOMPARE(desk.scrollTo(400), text("Hit A800 Hit A802 Hit A804"));
    asked = 0;
    ResultList::scrollTo(desk.list, 10, [&asked] { return ++asked > 100; });
    QCOMPARE(desk.list.topRow, 350);
    QCOMPARE(desk.run(), text("Hit A700 Hit A702 Hit A704"));
}

void TstResultList::rowsOutsideOfTheListAreCutToIt()
{
    ListDesk desk;
    desk.add('A').row(10, 0, 10);
    desk.reset(2).run();
    QCOMPARE(desk.scrollTo(5000), text("A8 A9"));
    QCOMPARE(desk.scrollTo(-3), text("A0 A1"));
    QCOMPARE(desk.list.topRow, 0);
}

void TstResultList::aSearchCountsWhatMatches()
{
    ListDesk desk;
    desk.add('A').row(100, 0, 10, 10);
    desk.add('B').row(100, 5, 10, 25);
    QCOMPARE(desk.reset(3, 0, text("Hit")).run(), text("Hit A0 Hit B0 Hit A10"));
    QCOMPARE(desk.list.topRow, 0);
    QCOMPARE(desk.list.totalRows, 14);
}

void TstResultList::aSearchIgnoresCase()
{
    ListDesk desk;
    desk.add('A').row(100, 0, 10, 10);
    const QString page = desk.reset(3, 0, text("hIT a")).run();
    QCOMPARE(desk.reset(3, 0, text("HIT A")).run(), page);
    QCOMPARE(desk.list.totalRows, 10);
}

void TstResultList::aSearchWithoutMatchEndsWithNoRows()
{
    ListDesk desk;
    desk.add('A').row(100, 0, 10);
    QCOMPARE(desk.reset(3, 0, text("nowhere")).run(), QString());
    QCOMPARE(desk.list.totalRows, 0);
}

void TstResultList::aSearchCoversTheWholeCapture()
{
    ListDesk desk;
    desk.add('A').row(100, 0, 10, 50);
    QCOMPARE(desk.reset(5, 900, text("hit")).run(), text("Hit A0 Hit A50"));
}

void TstResultList::theCountGrowsBehindThePageWhileTheScanRuns()
{
    ListDesk desk;
    desk.add('A').row(100, 0, 10, 1);
    desk.reset(3, 0, text("hit"));
    while (ResultList::step(desk.list) != Step::PageFull) {
    }
    QCOMPARE(desk.list.totalRows, 3);
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(int(ResultList::step(desk.list)), int(Step::More));
        QVERIFY(desk.list.totalRows >= 3); // those of the page are counted once more
    }
    QCOMPARE(desk.list.totalRows, 10);
    desk.run();
    QCOMPARE(desk.list.totalRows, 100);
}

void TstResultList::aCountThatIsKnownIsNotCountedAgain()
{
    ListDesk desk;
    desk.add('A').row(1000, 0, 10, 2);
    desk.reset(3, 0, text("hit")).run();
    desk.made[0]->texts = 0;
    desk.scrollTo(1);
    QVERIFY(desk.made[0]->texts < 12);
    QCOMPARE(desk.list.totalRows, 500);
}

void TstResultList::scrollingInASearchCountsMatches()
{
    ListDesk desk;
    desk.add('A').row(1000, 0, 10, 7);
    desk.reset(2, 0, text("hit")).run();
    QCOMPARE(desk.scrollTo(100), text("Hit A700 Hit A707"));
    QCOMPARE(desk.scrollTo(99), text("Hit A693 Hit A700"));
    QCOMPARE(desk.scrollTo(desk.list.totalRows), text("Hit A987 Hit A994"));
    QCOMPARE(desk.list.topRow, 141);
}

void TstResultList::aViewWithoutRowsIsFullAtOnce()
{
    ListDesk desk;
    desk.add('A').row(10, 0, 10, 1);
    QCOMPARE(int(ResultList::step(desk.reset(0).list)), int(Step::Idle));
    QCOMPARE(desk.list.totalRows, 10);
    QCOMPARE(desk.reset(0, 0, text("hit")).run(), QString());
    QCOMPARE(desk.list.totalRows, 10); // counted all the same
}

void TstResultList::anotherHeightMakesThePageAnewFromTheSameRow()
{
    ListDesk desk;
    desk.add('A').row(100, 0, 10);
    desk.reset(2, 500).run();
    ResultList::setRowNum(desk.list, 4);
    QCOMPARE(desk.run(), text("A50 A51 A52 A53"));
    ResultList::setRowNum(desk.list, 1);
    QCOMPARE(desk.run(), text("A50"));
    desk.scrollTo(100);
    ResultList::setRowNum(desk.list, 3);
    QCOMPARE(desk.run(), text("A97 A98 A99"));
}

void TstResultList::framesThatComeLaterAreNotListed()
{
    ListDesk desk;
    MadeResults &results = desk.add('A').row(2, 0, 10);
    desk.reset(5);
    results.row(2, 100, 10);
    QCOMPARE(desk.run(), text("A0 A1"));
    QCOMPARE(desk.list.totalRows, 2);
    QCOMPARE(desk.reset(5).run(), text("A0 A1 A2 A3"));
}

void TstResultList::aTextThatFailsIsAnEmptyRow()
{
    ListDesk desk;
    desk.add('A').frame(0, 1, false, true);
    desk.made[0]->frame(2, 3);
    desk.reset(5).run();
    QCOMPARE(desk.list.rows, (QStringList{QString(), text("A1")}));
}

void TstResultList::seekFindsTheRowOfEveryNumber()
{
    ListDesk desk;
    desk.add('A').frames({{0, 1}, {0, 9}, {4, 5}, {4, 5}, {4, 4}, {90, 91}});
    desk.add('B').frames({{0, 1}, {4, 8}, {4, 9}});
    desk.add('C').frames({{90, 99}, {91, 92}});
    desk.reset(100).run();
    for (std::uint64_t row = 0; row <= 12; ++row) {
        ResultMerge::Cursors walked = desk.list.pageCursors;
        for (std::uint64_t i = 0; i < row && ResultMerge::next(walked) != ResultMerge::none; ++i) {
            ResultCursor &cursor = walked[ResultMerge::next(walked)];
            ResultMerge::place(cursor, cursor.frameIndex + 1);
        }
        ResultMerge::Cursors sought = desk.list.pageCursors;
        ResultMerge::seek(sought, row);
        QVERIFY(ResultMerge::areAtRow(sought));
        for (std::size_t i = 0; i < sought.size(); ++i) {
            QCOMPARE(sought[i].frameIndex, walked[i].frameIndex);
            QCOMPARE(sought[i].frameFirst, walked[i].frameFirst);
        }
    }
}

void TstResultList::cursorsAreAtARowWhenNoFrameBeforeThemBelongsBehind()
{
    ListDesk desk;
    desk.add('A').frames({{0, 9}, {4, 5}, {9, 9}});
    desk.add('B').frames({{4, 6}, {7, 8}});
    desk.reset(100).run();
    const auto areAtRow = [&desk](std::uint64_t ofA, std::uint64_t ofB) {
        ResultMerge::Cursors cursors = desk.list.pageCursors;
        ResultMerge::place(cursors[0], ofA);
        ResultMerge::place(cursors[1], ofB);
        return ResultMerge::areAtRow(cursors);
    };
    QVERIFY(areAtRow(0, 0));
    QVERIFY(areAtRow(2, 0)); // of two that begin at once A's comes first
    QVERIFY(!areAtRow(1, 1));
    QVERIFY(!areAtRow(0, 2));
    QVERIFY(!areAtRow(3, 1));
    QVERIFY(areAtRow(3, 2));
}

void TstResultList::aFilterKnowsLettersBeyondAscii()
{
    QVERIFY(RowFilter(QStringLiteral("ÄRGER")).matches("viel \xC3\xA4rger"));
    QVERIFY(RowFilter(QStringLiteral("k")).matches("\xE2\x84\xAA")); // the sign of kelvin
    QVERIFY(RowFilter(QStringLiteral("0x1f")).matches("Data 0x1F"));
    QVERIFY(!RowFilter(QStringLiteral("0x1f")).matches("Data 0x1"));
    QVERIFY(RowFilter(QString()).matches(""));
    QVERIFY(!RowFilter(QStringLiteral("a")).matches(""));
}

QTEST_GUILESS_MAIN(TstResultList)
#include "tst_ResultList.moc"
