#include "wave/RowDrag.h"

#include <QVector>
#include <QtTest>

#include <limits>
#include <numeric>

namespace {

constexpr UnitBounds bounds{42, 120};

/// Rows of 50 pixels each unit, in the order of the channels, below an analog area of `aUnits`.
struct Column {
    explicit Column(const std::vector<int> &factors, int aUnits = 0)
    {
        for (std::size_t i = 0; i < factors.size(); ++i) {
            rows.push_back({int(i), factors[i] > 0 ? factors[i] : 1, factors[i] > 0});
        }
        layout =
            layoutChannels(rows, aUnits, 50 * (std::accumulate(factors.begin(), factors.end(), 0) + aUnits), bounds);
    }
    /// One event of the pointer, as the view replays it. @return the channel that gave way
    int moveTo(RowDrag &drag, int offset)
    {
        const int gaveWay = exchangeOnce(layout, rows, drag);
        drag.wantedY = wantedTop(drag, offset);
        return gaveWay;
    }
    [[nodiscard]] QVector<int> order() const
    {
        QVector<int> channels(int(rows.size()), -1);
        for (std::size_t chn = 0; chn < rows.size(); ++chn) {
            channels[rows[chn].showIndex] = int(chn);
        }
        return channels;
    }
    [[nodiscard]] RowDrag take(int chn) const { return dragFrom(layout, rows, chn); }
    [[nodiscard]] QVector<int> tops() const { return {layout.tops.begin(), layout.tops.end()}; }
    [[nodiscard]] QVector<int> heights() const { return {layout.heights.begin(), layout.heights.end()}; }

    std::vector<ChannelRow> rows;
    ChannelLayout layout;
};

} // namespace

class TstRowDrag : public QObject {
    Q_OBJECT
private slots:
    void aRowIsTakenWhereItLies();
    void aChannelThatIsNotThereIsNotTaken();
    void theNeighbourBelowGivesWayWhenItsMiddleIsPassedNotTouched();
    void theNeighbourAboveGivesWayWhenItsMiddleIsPassedNotTouched();
    void anEventIsJudgedByThePlaceOfTheOneBefore();
    void theOtherRowsKeepTheirHeights();
    void anEmptyRowGivesWayAtTheFirstPixel();
    void aHighRowPassesItsNeighboursOnePerHalfOfTheirHeight();
    void aLowRowPassesAHighOneAtItsMiddleAndComesBack();
    void aLowRowGetsBelowALastRowOfEightTimesItsHeight();
    void theRowStopsAtTheAnalogAreaAndAtTheLastRowsTop();
    void theOnlyRowStaysWhereItIs();
    void offsetsAtTheEndsOfTheirTypeDoNotOverflow();
    void anyWayOfThePointerKeepsThePermutationAndTheSums();
    void oneStepByKeyExchangesNeighbours();
    void oneStepByKeyPassesEmptyRows();
    void oneStepByKeyEndsAtTheEnds();
};

void TstRowDrag::aRowIsTakenWhereItLies()
{
    const Column column({1, 2, 1}, 8);
    const RowDrag drag = column.take(2);
    QCOMPARE(drag.chn, 2);
    QCOMPARE(drag.startY, 400 + 150);
    QCOMPARE(drag.wantedY, 400 + 150);
}

void TstRowDrag::aChannelThatIsNotThereIsNotTaken()
{
    Column column({1, 1});
    for (const int chn : {-1, 2, 1000}) {
        RowDrag drag = column.take(chn);
        QCOMPARE(drag.chn, -1);
        QCOMPARE(column.moveTo(drag, 500), -1);
    }
    QCOMPARE(column.order(), (QVector<int>{0, 1}));
}

void TstRowDrag::theNeighbourBelowGivesWayWhenItsMiddleIsPassedNotTouched()
{
    Column column({1, 1, 1});
    RowDrag drag = column.take(0);
    drag.wantedY = 25; // its bottom is at 75, the middle of the next
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), -1);
    drag.wantedY = 26;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), 1);
    QCOMPARE(column.order(), (QVector<int>{1, 0, 2}));
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), -1);
}

void TstRowDrag::theNeighbourAboveGivesWayWhenItsMiddleIsPassedNotTouched()
{
    Column column({1, 1, 1});
    RowDrag drag = column.take(2);
    drag.wantedY = 75;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), -1);
    drag.wantedY = 74;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), 1);
    QCOMPARE(column.order(), (QVector<int>{0, 2, 1}));
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), -1);
}

void TstRowDrag::anEventIsJudgedByThePlaceOfTheOneBefore()
{
    Column column({1, 1, 1});
    RowDrag drag = column.take(0);
    QCOMPARE(column.moveTo(drag, 100), -1);
    QCOMPARE(column.moveTo(drag, 100), 1);
    QCOMPARE(column.moveTo(drag, 0), 2);
    QCOMPARE(column.moveTo(drag, 0), 2);
    QCOMPARE(column.moveTo(drag, 0), 1);
    QCOMPARE(column.order(), (QVector<int>{0, 1, 2}));
}

void TstRowDrag::theOtherRowsKeepTheirHeights()
{
    Column column({1, 2, 4});
    RowDrag drag = column.take(0);
    drag.wantedY = 51;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), 1);
    QCOMPARE(column.tops(), (QVector<int>{0, 100, 150}));
    QCOMPARE(column.heights(), (QVector<int>{100, 50, 200}));
    QCOMPARE(column.layout.totalHeight, 350);
}

void TstRowDrag::anEmptyRowGivesWayAtTheFirstPixel()
{
    Column column({1, 0, 1});
    RowDrag drag = column.take(0);
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), -1);
    drag.wantedY = 1;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), 1);
    QCOMPARE(column.order(), (QVector<int>{1, 0, 2}));
    QCOMPARE(column.tops(), (QVector<int>{0, 0, 50}));
    QCOMPARE(column.heights(), (QVector<int>{0, 50, 50}));
    drag.wantedY = -1;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), 1);
    QCOMPARE(column.order(), (QVector<int>{0, 1, 2}));
}

void TstRowDrag::aHighRowPassesItsNeighboursOnePerHalfOfTheirHeight()
{
    Column column({8, 1, 1, 1});
    RowDrag drag = column.take(0);
    QVector<int> given;
    for (int offset = 1; offset <= 150; ++offset) {
        const int gaveWay = column.moveTo(drag, offset);
        if (gaveWay >= 0) {
            given << gaveWay << drag.wantedY - 1;
        }
    }
    QCOMPARE(given, (QVector<int>{1, 26, 2, 76, 3, 126}));
    QCOMPARE(column.tops(), (QVector<int>{0, 50, 100, 150}));
    QCOMPARE(draggedTop(column.layout, drag), 150);
}

void TstRowDrag::aLowRowPassesAHighOneAtItsMiddleAndComesBack()
{
    Column column({1, 8, 1});
    RowDrag drag = column.take(0);
    drag.wantedY = 200;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), -1);
    drag.wantedY = 201;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), 1);
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), -1); // it does not come back by itself
    drag.wantedY = 200;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), -1);
    drag.wantedY = 199;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), 1);
    QCOMPARE(column.order(), (QVector<int>{0, 1, 2}));
}

void TstRowDrag::aLowRowGetsBelowALastRowOfEightTimesItsHeight()
{
    // Shown no lower than the last row's top, it never passes that row's middle; the pointer does.
    Column column({1, 8});
    RowDrag drag = column.take(0);
    drag.wantedY = 150;
    QCOMPARE(draggedTop(column.layout, drag), 50);
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), -1);
    drag.wantedY = 201;
    QCOMPARE(exchangeOnce(column.layout, column.rows, drag), 1);
    QCOMPARE(draggedTop(column.layout, drag), 201);
}

void TstRowDrag::theRowStopsAtTheAnalogAreaAndAtTheLastRowsTop()
{
    Column column({1, 1, 1}, 8);
    RowDrag drag = column.take(1);
    drag.wantedY = 399;
    QCOMPARE(draggedTop(column.layout, drag), 400);
    drag.wantedY = 401;
    QCOMPARE(draggedTop(column.layout, drag), 401);
    drag.wantedY = 500;
    QCOMPARE(draggedTop(column.layout, drag), 500);
    drag.wantedY = 501;
    QCOMPARE(draggedTop(column.layout, drag), 500);
}

void TstRowDrag::theOnlyRowStaysWhereItIs()
{
    Column column({1});
    RowDrag drag = column.take(0);
    for (const int offset : {1000, -1000, 0}) {
        QCOMPARE(column.moveTo(drag, offset), -1);
        QCOMPARE(draggedTop(column.layout, drag), 0);
    }
    QVERIFY(!moveByOne(column.layout, column.rows, 0, 1));
}

void TstRowDrag::offsetsAtTheEndsOfTheirTypeDoNotOverflow()
{
    using Limits = std::numeric_limits<int>;
    Column column({1, 1, 1}, 8);
    RowDrag drag = column.take(1);
    QCOMPARE(wantedTop(drag, Limits::max()), Limits::max());
    (void)column.moveTo(drag, Limits::max());
    QCOMPARE(column.moveTo(drag, Limits::min()), 2);
    QCOMPARE(draggedTop(column.layout, drag), 400);
    QCOMPARE(column.moveTo(drag, Limits::min()), 2);
    QCOMPARE(column.moveTo(drag, Limits::min()), 0);
    QCOMPARE(column.order(), (QVector<int>{1, 0, 2}));
}

void TstRowDrag::anyWayOfThePointerKeepsThePermutationAndTheSums()
{
    const std::vector<int> factors{1, 0, 8, 1, 0, 0, 2, 4, 1, 0};
    quint32 random = 12345;
    for (int chn = 0; chn < int(factors.size()); ++chn) {
        Column column(factors);
        const int total = column.layout.totalHeight;
        RowDrag drag = column.take(chn);
        for (int i = 0; i < 500; ++i) {
            random = random * 1664525u + 1013904223u;
            (void)column.moveTo(drag, int(random >> 16) % 2400 - 1200);
            QVERIFY(!column.order().contains(-1));
            int top = 0;
            for (std::size_t row = 0; row < factors.size(); ++row) {
                QCOMPARE(column.layout.tops[row], top);
                top += column.layout.heights[row];
            }
            QCOMPARE(top, total);
        }
        for (const ChannelRow &row : column.rows) { // each height went along with its channel
            QCOMPARE(column.layout.heights[std::size_t(row.showIndex)], row.enabled ? 50 * row.multiplier : 0);
        }
    }
}

void TstRowDrag::oneStepByKeyExchangesNeighbours()
{
    Column column({1, 2, 4});
    QVERIFY(moveByOne(column.layout, column.rows, 0, 1));
    QCOMPARE(column.order(), (QVector<int>{1, 0, 2}));
    QCOMPARE(column.tops(), (QVector<int>{0, 100, 150}));
    QVERIFY(moveByOne(column.layout, column.rows, 2, -1));
    QCOMPARE(column.order(), (QVector<int>{1, 2, 0}));
    QCOMPARE(column.tops(), (QVector<int>{0, 100, 300}));
}

void TstRowDrag::oneStepByKeyPassesEmptyRows()
{
    Column column({1, 0, 0, 1, 1});
    QVERIFY(moveByOne(column.layout, column.rows, 0, 1));
    QCOMPARE(column.order(), (QVector<int>{1, 2, 3, 0, 4}));
    QVERIFY(moveByOne(column.layout, column.rows, 4, -1));
    QCOMPARE(column.order(), (QVector<int>{1, 2, 3, 4, 0}));
}

void TstRowDrag::oneStepByKeyEndsAtTheEnds()
{
    Column column({0, 1, 1, 0});
    QVERIFY(!moveByOne(column.layout, column.rows, 1, -1));
    QVERIFY(!moveByOne(column.layout, column.rows, 2, 1));
    QVERIFY(!moveByOne(column.layout, column.rows, 9, 1));
    QVERIFY(!moveByOne(column.layout, column.rows, 1, 0));
    QCOMPARE(column.order(), (QVector<int>{0, 1, 2, 3}));
}

QTEST_APPLESS_MAIN(TstRowDrag)
#include "tst_RowDrag.moc"
