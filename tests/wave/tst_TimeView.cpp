#include "controls/Look.h"
#include "wave/CursorHandle.h"
#include "wave/MarkerChange.h"
#include "wave/PointerTag.h"
#include "wave/TimeView.h"
#include "wave/WaveCapture.h"
#include "wave/WaveDataGen.h"

#include <QtTest>

#include <algorithm>

class TstTimeView : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { globalsFillTables(); }
    void init() { gDpi = 96; }
    void cleanup() { gDpi = 96; }
    void theRulerIs36UnitsHighAndAsWideAsItMay();
    void theRulerTracksTheMouse();
    void aDecadeTickStandsUnderItsLabel();
    void aRelativeTickIsShorterAndItsLabelLower();
    void labelsAtTheLeftEndAreNotCut();
    void aLabelGivesWayToTheFlagsThatWouldCoverIt();
    void aLabelIsLeftOutWhereItWouldBeMovedOntoAnother();
    void noLabelIsPaintedBelowAFlag();
    void theTagOfThePointerStandsWhereNoFlagCoversIt();
    void onAScaledScreenTicksStandOnScaledColumns();
    void eachTickIsPaintedAtItsColumn_data();
    void eachTickIsPaintedAtItsColumn();
    void withoutTicksOnlyTheGroundIsPainted();
};

namespace {

TimeTick tick(int x, int kind)
{
    return {x, kind, "+1us"};
}

bool isLit(const QImage &image, int x, int y)
{
    return image.pixelColor(x, y) == gGreys[0];
}

/// The ruler alone, without the flags that stand in it.
QImage paintedBelowFlags(TimeView &ruler)
{
    QImage image(ruler.size(), QImage::Format_RGB32);
    ruler.render(&image, {}, {}, QWidget::RenderFlags());
    return image;
}

/// Pixels of that part that are no ground.
int inked(const QImage &image, const QRect &part)
{
    int count = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            count += image.pixelColor(x, y) != gGreys[8] ? 1 : 0;
        }
    }
    return count;
}

} // namespace

void TstTimeView::theRulerIs36UnitsHighAndAsWideAsItMay()
{
    gDpi = 144;
    const WaveDataGen gen;
    const TimeView ruler(&gen);
    QCOMPARE(ruler.minimumHeight(), 54);
    QCOMPARE(ruler.maximumHeight(), 54);
    QCOMPARE(ruler.sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
}

void TstTimeView::theRulerTracksTheMouse()
{
    const WaveDataGen gen;
    QVERIFY(TimeView(&gen).hasMouseTracking());
}

void TstTimeView::aDecadeTickStandsUnderItsLabel()
{
    const RulerMark mark = rulerMark(tick(100, 0), 96, 36);
    QCOMPARE(mark.text, QPoint(97, 16));
    QCOMPARE(mark.line, QLine(100, 21, 100, 34));
}

void TstTimeView::aRelativeTickIsShorterAndItsLabelLower()
{
    const RulerMark mark = rulerMark(tick(100, 1), 96, 36);
    QCOMPARE(mark.text, QPoint(96, 28));
    QCOMPARE(mark.line, QLine(100, 31, 100, 34));
}

void TstTimeView::labelsAtTheLeftEndAreNotCut()
{
    for (const int dpi : {96, 144, 192}) {
        for (const int kind : {tickKind::decade, tickKind::relative, tickKind::base}) {
            QVERIFY(rulerMark(tick(0, kind), dpi, 36 * dpi / 96).text.x() >= 1);
        }
    }
    QVERIFY(rulerMark(tick(0, tickKind::base), 96, 36).line.isNull());
}

void TstTimeView::aLabelGivesWayToTheFlagsThatWouldCoverIt()
{
    const QRect label(96, 20, 30, 8);
    const std::vector<QRect> flags{QRect(93, 19, 15, 17), QRect(105, 19, 15, 17), QRect(300, 19, 15, 17)};
    QCOMPARE(besideFlags(label, {}, 2), 96);
    QCOMPARE(besideFlags(label, std::span(flags).first(1), 2), 110);
    QCOMPARE(besideFlags(label, flags, 2), 122);
    QCOMPARE(besideFlags(QRect(96, 6, 30, 10), flags, 2), 96); // above the flags
}

void TstTimeView::aLabelIsLeftOutWhereItWouldBeMovedOntoAnother()
{
    using Places = std::vector<std::optional<int>>;
    const std::vector<QRect> labels{QRect(10, 20, 30, 8), QRect(60, 20, 30, 8), QRect(110, 20, 30, 8)};
    QCOMPARE(labelsBesideFlags(labels, {}, 2), (Places{10, 60, 110}));
    const std::vector<QRect> flags{QRect(65, 19, 15, 17), QRect(105, 19, 15, 17)};
    // Behind the first flag there is no room before the second, and behind that stands the last label.
    QCOMPARE(labelsBesideFlags(labels, flags, 2), (Places{10, std::nullopt, 122}));
    QCOMPARE(labelsBesideFlags(labels, std::span(flags).first(1), 2), (Places{10, std::nullopt, 110})); // 82 to 112
    const std::vector<QRect> apart{labels[0], labels[1], QRect(200, 20, 30, 8)};
    QCOMPARE(labelsBesideFlags(apart, flags, 2), (Places{10, 122, 200}));
    // Without a flag nothing is left out, however close.
    const std::vector<QRect> close{QRect(10, 20, 30, 8), QRect(30, 20, 30, 8)};
    QCOMPARE(labelsBesideFlags(close, flags, 2), (Places{10, 30}));
}

void TstTimeView::noLabelIsPaintedBelowAFlag()
{
    const auto data = capture().samples(500).build();
    WaveDataGen gen;
    gen.setDataSource(data.get());
    gen.setViewWidth(500);
    gen.zoomFit();
    TimeView ruler(&gen);
    ruler.resize(500, dp(36));
    const auto ticks = gen.timeTicks();
    const auto tick = std::find_if(ticks.begin(), ticks.end(),
                                   [](const TimeTick &each) { return each.kind == tickKind::relative && each.x > 50; });
    QVERIFY(tick != ticks.end());
    ruler.slotMainViewMarkerChanged(markerChange::state, 0, int(MarkerState::placed));
    ruler.slotMainViewMarkerChanged(markerChange::place, 0, 5);
    const auto flags = ruler.findChildren<CursorHandle *>();
    const auto flag =
        std::find_if(flags.begin(), flags.end(), [](const CursorHandle *each) { return each->id() == 0; });
    const int baseline = rulerMark(*tick, gDpi, ruler.height()).text.y();
    const auto room = [&] { return QRect((*flag)->x(), baseline - 7, (*flag)->width(), 7).translated(tick->x - 5, 0); };
    const QRect covered = room();
    QVERIFY(inked(paintedBelowFlags(ruler), covered) > 0); // its label stands there
    ruler.slotMainViewMarkerChanged(markerChange::place, 0, tick->x);
    QCOMPARE((*flag)->x(), covered.x());
    QCOMPARE(inked(paintedBelowFlags(ruler), covered), 0);
}

void TstTimeView::theTagOfThePointerStandsWhereNoFlagCoversIt()
{
    const WaveDataGen gen;
    TimeView ruler(&gen);
    ruler.resize(600, 36);
    const auto *tag = ruler.findChild<PointerTag *>();
    const auto point = [&](int x) {
        ruler.slotPointerMoved(x, QStringLiteral("1us  [100]"));
        return tag->geometry();
    };
    const auto isRightOf = [&](int x) { return point(x).left() > x; };
    QVERIFY(isRightOf(0));
    QVERIFY(isRightOf(300));
    QVERIFY(!isRightOf(590)); // the ruler ends there

    ruler.slotMainViewMarkerChanged(markerChange::state, 0, int(MarkerState::placed));
    ruler.slotMainViewMarkerChanged(markerChange::place, 0, 300);
    QVERIFY(isRightOf(300)); // beside its own column the flag is clear of it
    QVERIFY(!isRightOf(290));
    QVERIFY(isRightOf(320));
    QVERIFY(isRightOf(100));
    const QRect flag = ruler.findChild<CursorHandle *>()->geometry();
    for (int x = 200; x <= 400; ++x) {
        QVERIFY2(!point(x).intersects(flag), qPrintable(QString::number(x)));
    }
    QVERIFY(ruler.rect().contains(point(0)));

    // Flags on both sides, or no room: it stands where it would without them.
    ruler.slotMainViewMarkerChanged(markerChange::state, 1, int(MarkerState::placed));
    ruler.slotMainViewMarkerChanged(markerChange::place, 1, 260);
    QVERIFY(isRightOf(280));
    ruler.slotMainViewMarkerChanged(markerChange::place, 1, 60);
    QVERIFY(isRightOf(30));
}

void TstTimeView::onAScaledScreenTicksStandOnScaledColumns()
{
    QCOMPARE(rulerMark(tick(100, 0), 192, 72).text, QPoint(194, 32));
    QCOMPARE(rulerMark(tick(100, 0), 192, 72).line, QLine(201, 42, 201, 70));
    QCOMPARE(rulerMark(tick(100, 1), 192, 72).text, QPoint(192, 56));
    QCOMPARE(rulerMark(tick(100, 1), 192, 72).line, QLine(201, 62, 201, 70));
    // Between whole scales the columns keep the lower one.
    QCOMPARE(rulerMark(tick(100, 1), 144, 54).line, QLine(100, 46, 100, 52));
    QCOMPARE(rulerMark(tick(100, 0), 144, 54).text, QPoint(96, 24));
}

void TstTimeView::eachTickIsPaintedAtItsColumn_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96 dpi") << 96;
    QTest::newRow("192 dpi") << 192;
}

void TstTimeView::eachTickIsPaintedAtItsColumn()
{
    QFETCH(int, dpi);
    gDpi = dpi;
    const auto data = capture().samples(500).build();
    WaveDataGen gen;
    gen.setDataSource(data.get());
    gen.setViewWidth(500);
    gen.zoomFit();
    QVERIFY(gen.timeTicks().size() >= 2);

    TimeView ruler(&gen);
    const int scale = uiScale();
    ruler.resize(500 * scale, dp(36));
    const QImage image = ruler.grab().toImage().convertToFormat(QImage::Format_RGB32);
    const int bottom = ruler.height() - 2;
    for (const TimeTick &each : gen.timeTicks()) {
        const int left = each.x * scale;
        for (int x = left; x < left + scale; ++x) {
            QVERIFY(isLit(image, x, bottom));
            QVERIFY(isLit(image, x, dp(31)));
        }
        QVERIFY(!isLit(image, left + scale, bottom));
        if (left > 0) {
            QVERIFY(!isLit(image, left - 1, bottom));
        }
        QCOMPARE(isLit(image, left, dp(29)), each.kind == 0);
    }
}

void TstTimeView::withoutTicksOnlyTheGroundIsPainted()
{
    const WaveDataGen gen;
    TimeView ruler(&gen);
    ruler.resize(50, 36);
    const QImage image = ruler.grab().toImage().convertToFormat(QImage::Format_RGB32);
    for (int x = 0; x < 50; ++x) {
        for (int y = 0; y < 35; ++y) {
            QCOMPARE(image.pixelColor(x, y), gGreys[8]);
        }
        QCOMPARE(image.pixelColor(x, 35), gGreys[3]);
    }
}

QTEST_MAIN(TstTimeView)
#include "tst_TimeView.moc"
