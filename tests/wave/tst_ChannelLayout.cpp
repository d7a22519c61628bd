#include "wave/ChannelLayout.h"

#include <QtTest>

namespace {

constexpr UnitBounds bounds96{42, 120};

/// `count` enabled channels of single height in their own order.
std::vector<ChannelRow> plainRows(int count)
{
    std::vector<ChannelRow> rows;
    for (int i = 0; i < count; ++i) {
        rows.push_back({i, 1, true});
    }
    return rows;
}

} // namespace

class TstChannelLayout : public QObject {
    Q_OBJECT
private slots:
    void rowsShareTheHeightAndLeaveNoGap();
    void aUnitIsNeverBelowItsLeastSoTheColumnOutgrowsTheArea();
    void aUnitIsNeverAboveItsMostSoRoomIsLeftBelow();
    void aMultiplierMakesARowThatManyTimesAsHigh();
    void disabledChannelsHaveHeightZeroSoTheirNeighboursTouch();
    void theShowIndexDecidesThePlaceNotThePhysicalChannel();
    void theAnalogAreaTakesEightUnitsAboveTheFirstRow();
    void fractionsAreTruncatedPerRowAndMadeUpInTheLast();
    void withEveryChannelDisabledTheUnitIsTheUpperBoundAndNothingIsShown();
    void withEveryChannelDisabledTheAnalogAreaStands();
    void noChannelsAndNoHeightGiveAnEmptyLayout();
    void multipliersPassFromOneToFifteen_data();
    void multipliersPassFromOneToFifteen();
    void aPointBelongsToTheRowThatHoldsIt();
    void scrollingMovesTheRowsUnderThePoint();
    void aPointOutsideTheViewIsNoChannel_data();
    void aPointOutsideTheViewIsNoChannel();
    void aPointOnTheAnalogAreaOrBelowTheRowsIsNoChannel();
    void aDisabledChannelIsNeverUnderAPoint();
};

void TstChannelLayout::rowsShareTheHeightAndLeaveNoGap()
{
    const ChannelLayout layout = layoutChannels(plainRows(8), 0, 800, bounds96);
    QCOMPARE(layout.aChnHeight, 0);
    for (std::size_t p = 0; p < 8; ++p) {
        QCOMPARE(layout.tops[p], int(p) * 100);
        QCOMPARE(layout.heights[p], 100);
    }
    QCOMPARE(layout.totalHeight, 800);
}

void TstChannelLayout::aUnitIsNeverBelowItsLeastSoTheColumnOutgrowsTheArea()
{
    const ChannelLayout layout = layoutChannels(plainRows(32), 0, 800, bounds96);
    QCOMPARE(layout.heights[0], 42);
    QCOMPARE(layout.totalHeight, 32 * 42);
}

void TstChannelLayout::aUnitIsNeverAboveItsMostSoRoomIsLeftBelow()
{
    const ChannelLayout layout = layoutChannels(plainRows(2), 0, 800, bounds96);
    QCOMPARE(layout.heights[1], 120);
    QCOMPARE(layout.totalHeight, 240);
}

void TstChannelLayout::aMultiplierMakesARowThatManyTimesAsHigh()
{
    std::vector<ChannelRow> rows = plainRows(3);
    rows[1].multiplier = 8;
    const ChannelLayout layout = layoutChannels(rows, 0, 500, bounds96);
    QCOMPARE(layout.heights, (std::vector<int>{50, 400, 50}));
    QCOMPARE(layout.tops, (std::vector<int>{0, 50, 450}));
}

void TstChannelLayout::disabledChannelsHaveHeightZeroSoTheirNeighboursTouch()
{
    std::vector<ChannelRow> rows = plainRows(4);
    rows[1].enabled = rows[3].enabled = false;
    const ChannelLayout layout = layoutChannels(rows, 0, 200, bounds96);
    QCOMPARE(layout.heights, (std::vector<int>{100, 0, 100, 0}));
    QCOMPARE(layout.tops, (std::vector<int>{0, 100, 100, 200}));
}

void TstChannelLayout::theShowIndexDecidesThePlaceNotThePhysicalChannel()
{
    const std::vector<ChannelRow> rows{{2, 1, true}, {0, 2, true}, {1, 1, false}};
    const ChannelLayout layout = layoutChannels(rows, 0, 300, bounds96);
    QCOMPARE(layout.heights, (std::vector<int>{200, 0, 100}));
    QCOMPARE(layout.tops, (std::vector<int>{0, 200, 200}));
}

void TstChannelLayout::theAnalogAreaTakesEightUnitsAboveTheFirstRow()
{
    const ChannelLayout layout = layoutChannels(plainRows(2), 8, 500, bounds96);
    QCOMPARE(layout.aChnHeight, 400);
    QCOMPARE(layout.tops, (std::vector<int>{400, 450}));
    QCOMPARE(layout.totalHeight, 500);
}

void TstChannelLayout::fractionsAreTruncatedPerRowAndMadeUpInTheLast()
{
    const ChannelLayout layout = layoutChannels(plainRows(3), 0, 200, bounds96); // unit 66.67
    QCOMPARE(layout.tops, (std::vector<int>{0, 66, 133}));
    QCOMPARE(layout.heights, (std::vector<int>{66, 67, 67}));
    QCOMPARE(layout.totalHeight, 200);

    const ChannelLayout analog = layoutChannels(plainRows(2), 8, 505, bounds96); // unit 50.5
    QCOMPARE(analog.aChnHeight, 404);
    QCOMPARE(analog.tops, (std::vector<int>{404, 454}));
    QCOMPARE(analog.heights, (std::vector<int>{50, 51}));
}

void TstChannelLayout::withEveryChannelDisabledTheUnitIsTheUpperBoundAndNothingIsShown()
{
    std::vector<ChannelRow> rows = plainRows(4);
    for (ChannelRow &row : rows) {
        row.enabled = false;
    }
    const ChannelLayout layout = layoutChannels(rows, 0, 800, bounds96);
    QCOMPARE(layout.tops, (std::vector<int>{0, 0, 0, 0}));
    QCOMPARE(layout.heights, (std::vector<int>{0, 0, 0, 0}));
    QCOMPARE(layout.totalHeight, 0);
}

void TstChannelLayout::withEveryChannelDisabledTheAnalogAreaStands()
{
    const std::vector<ChannelRow> rows{{0, 1, false}};
    const ChannelLayout layout = layoutChannels(rows, 8, 800, bounds96);
    QCOMPARE(layout.aChnHeight, 800);
    QCOMPARE(layout.heights, (std::vector<int>{0}));
    QCOMPARE(layout.totalHeight, 800);
}

void TstChannelLayout::noChannelsAndNoHeightGiveAnEmptyLayout()
{
    const ChannelLayout layout = layoutChannels({}, 0, 0, bounds96);
    QVERIFY(layout.tops.empty());
    QCOMPARE(layout.totalHeight, 0);
}

void TstChannelLayout::multipliersPassFromOneToFifteen_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("used");
    for (const int passes : {1, 2, 3, 4, 7, 8, 15}) {
        QTest::addRow("%d passes", passes) << passes << passes;
    }
    for (const int refused : {0, -1, -8, 16, 1000, INT_MAX, INT_MIN}) {
        QTest::addRow("%d becomes 1", refused) << refused << 1;
    }
}

void TstChannelLayout::multipliersPassFromOneToFifteen()
{
    QFETCH(int, stored);
    QFETCH(int, used);
    QCOMPARE(validMultiplier(stored), used);
}

void TstChannelLayout::aPointBelongsToTheRowThatHoldsIt()
{
    const std::vector<ChannelRow> rows{{1, 1, true}, {0, 1, true}};
    const ChannelLayout layout = layoutChannels(rows, 0, 200, bounds96);
    const QSize view(500, 300);
    QCOMPARE(channelUnderPoint(layout, rows, {0, 0}, view, 0), 1);
    QCOMPARE(channelUnderPoint(layout, rows, {499, 99}, view, 0), 1);
    QCOMPARE(channelUnderPoint(layout, rows, {10, 100}, view, 0), 0);
    QCOMPARE(channelUnderPoint(layout, rows, {10, 199}, view, 0), 0);
}

void TstChannelLayout::scrollingMovesTheRowsUnderThePoint()
{
    const std::vector<ChannelRow> rows = plainRows(20);
    const ChannelLayout layout = layoutChannels(rows, 0, 420, bounds96);
    QCOMPARE(channelUnderPoint(layout, rows, {5, 0}, {500, 420}, 0), 0);
    QCOMPARE(channelUnderPoint(layout, rows, {5, 0}, {500, 420}, 41), 0);
    QCOMPARE(channelUnderPoint(layout, rows, {5, 0}, {500, 420}, 42), 1);
    QCOMPARE(channelUnderPoint(layout, rows, {5, 419}, {500, 420}, 420), 19);
}

void TstChannelLayout::aPointOutsideTheViewIsNoChannel_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::newRow("left") << QPoint(-1, 50);
    QTest::newRow("right") << QPoint(500, 50);
    QTest::newRow("above") << QPoint(50, -1);
    QTest::newRow("below, over a row that is scrolled out") << QPoint(50, 150);
}

void TstChannelLayout::aPointOutsideTheViewIsNoChannel()
{
    QFETCH(QPoint, point);
    const std::vector<ChannelRow> rows = plainRows(8);
    const ChannelLayout layout = layoutChannels(rows, 0, 150, bounds96);
    QCOMPARE(channelUnderPoint(layout, rows, point, {500, 150}, 20), -1);
}

void TstChannelLayout::aPointOnTheAnalogAreaOrBelowTheRowsIsNoChannel()
{
    const std::vector<ChannelRow> rows = plainRows(2);
    const ChannelLayout layout = layoutChannels(rows, 8, 500, bounds96);
    QCOMPARE(channelUnderPoint(layout, rows, {5, 399}, {500, 900}, 0), -1);
    QCOMPARE(channelUnderPoint(layout, rows, {5, 400}, {500, 900}, 0), 0);
    QCOMPARE(channelUnderPoint(layout, rows, {5, 500}, {500, 900}, 0), -1);
}

void TstChannelLayout::aDisabledChannelIsNeverUnderAPoint()
{
    std::vector<ChannelRow> rows = plainRows(3);
    rows[1].enabled = false;
    const ChannelLayout layout = layoutChannels(rows, 0, 200, bounds96);
    for (int y = 0; y < 200; ++y) {
        QVERIFY(channelUnderPoint(layout, rows, {5, y}, {500, 200}, 0) != 1);
    }
}

QTEST_APPLESS_MAIN(TstChannelLayout)
#include "tst_ChannelLayout.moc"
