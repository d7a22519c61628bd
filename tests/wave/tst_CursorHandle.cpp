#include "controls/Look.h"
#include "wave/CursorHandle.h"
#include "wave/TimeView.h"
#include "wave/WaveDataGen.h"

#include <QCursor>
#include <QWindow>
#include <QtTest>

#include <algorithm>
#include <array>

namespace {

/// What the ruler has told: kind, position, state, place.
using Told = QVector<std::array<int, 4>>;

/// A shown ruler of 400 columns without a capture. Input takes the way of the window system's.
struct Ruler {
    WaveDataGen gen;
    TimeView view{&gen};
    Told told;
    bool shown = false;

    Ruler()
    {
        QObject::connect(&view, &TimeView::timeMarkerChanged, &view, [this](int type, int index, int state, int x) {
            told.append({type, index, state, x});
        });
        view.resize(400, dp(36));
        view.show();
        shown = QTest::qWaitForWindowExposed(&view);
    }
    /// As the main view tells it.
    void state(int id, int value) { view.slotMainViewMarkerChanged(7, id, value); }
    void place(int position, int x) { view.slotMainViewMarkerChanged(8, position, x); }

    [[nodiscard]] QVector<int> ids() const
    {
        QVector<int> all;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (const CursorHandle *handle : view.findChildren<CursorHandle *>()) {
            all.append(handle->id());
        }
        std::sort(all.begin(), all.end());
        return all;
    }
    [[nodiscard]] CursorHandle *handle(int id) const
    {
        const auto all = view.findChildren<CursorHandle *>();
        const auto found = std::find_if(all.begin(), all.end(), [id](const auto *each) { return each->id() == id; });
        return found == all.end() ? nullptr : *found;
    }
    [[nodiscard]] MarkerState stateOf(int id) const { return handle(id)->markerState(); }

    void move(int x, int y)
    {
        QCursor::setPos(view.mapToGlobal({x, y}));
        QCoreApplication::processEvents();
    }
    void press(int x, int y, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mousePress(view.windowHandle(), button, {}, {x, y});
    }
    void release(int x, int y, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseRelease(view.windowHandle(), button, {}, {x, y});
    }
    /// Without the moves on the way there.
    void click(int x, int y, Qt::MouseButton button = Qt::LeftButton)
    {
        move(x, y);
        told.clear();
        press(x, y, button);
        release(x, y, button);
    }
};

QColor pixel(const QWidget &widget, int x, int y)
{
    return const_cast<QWidget &>(widget).grab().toImage().pixelColor(x, y);
}

} // namespace

class TstCursorHandle : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { globalsFillTables(); }
    void init();
    void cleanup() { gDpi = 96; }

    void aMarkersFirstStateMakesTheFlagsOfItsPair();
    void aFlagIsSeenUnlessItsMarkerIsOff();
    void positionsCountInTheOrderOfTheIds();
    void aFlagStandsAtTheBottomWithItsTipOnTheLine_data();
    void aFlagStandsAtTheBottomWithItsTipOnTheLine();
    void aPairThatIsGoneTakesItsFlagsAlong();
    void positionsAndIdsThatAreNoneAreIgnored();
    void anotherDeviceTakesAllFlagsAway();
    void aFlagIsPaintedByItsState_data();
    void aFlagIsPaintedByItsState();
    void theLabelStandsWithinTheFlag_data();
    void theLabelStandsWithinTheFlag();
    void assistiveSoftwareReadsWhichMarkerItIs();

    void thePointerBrightensAPlacedFlagUntilItLeaves();
    void noFlagIsHoveredWhileAMarkerFollows();
    void aClickOnAHoveredFlagPicksItsMarkerUp();
    void aFollowingMarkerIsMovedAlongTheRuler();
    void aClickPutsAFollowingMarkerDownAndARightClickTakesItOff();
    void aReleaseAfterAMoveDoesNothing();
    void aReleaseEitherPicksUpOrPutsDown();
    void ofAFollowingAndAHoveredFlagTheFirstOneDecides();
    void aFlagThatWasPutDownIsHoveredAgainByTheNextMove();
    void aPairThatGoesFromUnderThePointerDoesNotComeBack();
    void withoutAFlagTheMouseDoesNothing();
};

void TstCursorHandle::init()
{
    gDpi = 96;
    QCursor::setPos(5000, 5000);
}

void TstCursorHandle::aMarkersFirstStateMakesTheFlagsOfItsPair()
{
    Ruler ruler;
    QVERIFY(ruler.shown);
    ruler.state(3, 0);
    QCOMPARE(ruler.ids(), (QVector<int>{2, 3}));
    ruler.state(2, 0);
    QCOMPARE(ruler.ids(), (QVector<int>{2, 3}));
}

void TstCursorHandle::aFlagIsSeenUnlessItsMarkerIsOff()
{
    Ruler ruler;
    ruler.state(0, 3);
    QVERIFY(ruler.handle(0)->isVisible());
    QVERIFY(!ruler.handle(1)->isVisible());
    ruler.state(0, 0);
    QVERIFY(!ruler.handle(0)->isVisible());
}

void TstCursorHandle::positionsCountInTheOrderOfTheIds()
{
    Ruler ruler;
    for (const int id : {8, 0, 4}) {
        ruler.state(id, 3);
    }
    ruler.place(2, 100);
    QCOMPARE(ruler.handle(4)->x(), 93);
    ruler.place(5, 200);
    QCOMPARE(ruler.handle(9)->x(), 193);
}

void TstCursorHandle::aFlagStandsAtTheBottomWithItsTipOnTheLine_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<QRect>("place");
    QTest::newRow("96") << 96 << QRect(93, 19, 15, 17);
    QTest::newRow("192") << 192 << QRect(86, 38, 30, 34);
}

void TstCursorHandle::aFlagStandsAtTheBottomWithItsTipOnTheLine()
{
    QFETCH(int, dpi);
    gDpi = dpi;
    Ruler ruler;
    ruler.state(0, 3);
    ruler.place(0, 100);
    QTEST(ruler.handle(0)->geometry(), "place");
}

void TstCursorHandle::aPairThatIsGoneTakesItsFlagsAlong()
{
    Ruler ruler;
    for (const int id : {0, 2, 4}) {
        ruler.state(id, 3);
    }
    ruler.view.slotMainViewMarkerChanged(9, 2, -1);
    QCOMPARE(ruler.ids(), (QVector<int>{0, 1, 4, 5}));
    ruler.view.slotMainViewMarkerChanged(9, 4, -1); // only four are left
    QCOMPARE(ruler.ids(), (QVector<int>{0, 1, 4, 5}));
    ruler.view.slotMainViewMarkerChanged(9, 3, -1); // no pair begins at the last one
    QCOMPARE(ruler.ids(), (QVector<int>{0, 1, 4, 5}));
}

void TstCursorHandle::positionsAndIdsThatAreNoneAreIgnored()
{
    Ruler ruler;
    ruler.state(-1, 3);
    ruler.place(0, 10);
    ruler.place(-1, 10);
    ruler.view.slotMainViewMarkerChanged(9, 0, -1);
    ruler.view.slotMainViewMarkerChanged(10, 0, 0);
    QVERIFY(ruler.ids().isEmpty());
    ruler.state(0, 99);
    QVERIFY(!ruler.handle(0)->isVisible());
    ruler.state(52, 3);
    QCOMPARE(ruler.handle(52)->accessibleName(), QStringLiteral("Timing marker [1"));
}

void TstCursorHandle::anotherDeviceTakesAllFlagsAway()
{
    Ruler ruler;
    ruler.state(0, 1);
    ruler.state(4, 3);
    ruler.view.dropHandles();
    QVERIFY(ruler.ids().isEmpty());
    ruler.move(100, 10);
    ruler.click(100, 10);
    QVERIFY(ruler.told.isEmpty());
}

void TstCursorHandle::aFlagIsPaintedByItsState_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("state");
    QTest::addColumn<QColor>("line");
    QTest::addColumn<QColor>("face");
    for (const int dpi : {96, 192}) {
        QTest::addRow("following, %d", dpi) << dpi << 1 << QColor(0, 255, 0) << QColor(0xf7, 0xf7, 0xf7);
        QTest::addRow("hovered, %d", dpi) << dpi << 2 << QColor(0, 255, 0) << QColor(0xf7, 0xf7, 0xf7);
        QTest::addRow("placed, %d", dpi) << dpi << 3 << QColor(31, 191, 31) << QColor(0xdf, 0xdf, 0xdf);
    }
}

void TstCursorHandle::aFlagIsPaintedByItsState()
{
    QFETCH(int, dpi);
    QFETCH(int, state);
    QFETCH(QColor, line);
    QFETCH(QColor, face);
    gDpi = dpi;
    const int s = uiScale();
    Ruler ruler;
    ruler.state(0, state);
    ruler.place(0, 100);
    const CursorHandle &flag = *ruler.handle(0);
    QCOMPARE(pixel(flag, 0, dp(4)), line);
    QCOMPARE(pixel(flag, flag.width() - 1, dp(4)), line);
    QCOMPARE(pixel(flag, flag.width() / 2, 0), line);
    QCOMPARE(pixel(flag, flag.width() / 2, flag.height() - s), line); // the tip
    QCOMPARE(pixel(flag, s, s), face);
    QCOMPARE(pixel(flag, flag.width() / 2, dp(12)), face);
    // Beside the tip the ruler shows through.
    const QImage whole = ruler.view.grab().toImage();
    QCOMPARE(whole.pixelColor(flag.x() + 1, ruler.view.height() - 3), gGreys[8]);
}

void TstCursorHandle::theLabelStandsWithinTheFlag_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstCursorHandle::theLabelStandsWithinTheFlag()
{
    QFETCH(int, dpi);
    gDpi = dpi;
    Ruler ruler;
    ruler.state(0, 3);
    QCOMPARE(ruler.handle(0)->font().pixelSize(), dp(8));
    QCOMPARE(ruler.handle(0)->font().weight(), int(QFont::Bold));
    const QImage image = ruler.handle(0)->grab().toImage();
    int left = image.width();
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).lightness() < 80) {
                left = qMin(left, x);
                right = qMax(right, x);
                bottom = qMax(bottom, y);
            }
        }
    }
    QVERIFY(right > left);
    QVERIFY(qAbs(left - (image.width() - 1 - right)) <= dp(2)); // in the middle
    QVERIFY(bottom < dp(9));                                    // on the baseline
    QVERIFY(bottom >= dp(9) - dp(2));
}

void TstCursorHandle::assistiveSoftwareReadsWhichMarkerItIs()
{
    Ruler ruler;
    ruler.state(0, 3);
    ruler.state(9, 3);
    QCOMPARE(ruler.handle(0)->accessibleName(), QStringLiteral("Timing marker A1"));
    QCOMPARE(ruler.handle(9)->accessibleName(), QStringLiteral("Timing marker E2"));
}

void TstCursorHandle::thePointerBrightensAPlacedFlagUntilItLeaves()
{
    Ruler ruler;
    ruler.state(0, 3);
    ruler.place(0, 100);
    ruler.move(100, 25);
    QCOMPARE(ruler.stateOf(0), MarkerState::hovered);
    ruler.move(200, 25);
    QCOMPARE(ruler.stateOf(0), MarkerState::placed);
    QVERIFY(ruler.told.isEmpty()); // the main view is not asked
}

void TstCursorHandle::noFlagIsHoveredWhileAMarkerFollows()
{
    Ruler ruler;
    ruler.state(0, 3);
    ruler.place(0, 100);
    ruler.state(3, 1);
    ruler.move(100, 25);
    QCOMPARE(ruler.stateOf(0), MarkerState::placed);
}

void TstCursorHandle::aClickOnAHoveredFlagPicksItsMarkerUp()
{
    Ruler ruler;
    ruler.state(0, 3);
    ruler.state(2, 3);
    ruler.place(2, 100);
    ruler.move(100, 25);
    ruler.click(100, 25, Qt::RightButton);
    QVERIFY(ruler.told.isEmpty());
    ruler.click(100, 25);
    QCOMPARE(ruler.told, (Told{{5, 2, 1, 0}}));
}

void TstCursorHandle::aFollowingMarkerIsMovedAlongTheRuler()
{
    Ruler ruler;
    ruler.state(1, 1);
    ruler.place(1, 100);
    ruler.move(150, 5);
    QCOMPARE(ruler.told, (Told{{6, 1, 1, 150}}));
    ruler.move(104, 30); // over the flag, whose moves are the ruler's
    QCOMPARE(ruler.told.last(), (std::array<int, 4>{6, 1, 1, 104}));
}

void TstCursorHandle::aClickPutsAFollowingMarkerDownAndARightClickTakesItOff()
{
    Ruler ruler;
    ruler.state(1, 1);
    ruler.place(1, 100);
    ruler.click(50, 5);
    QCOMPARE(ruler.told, (Told{{5, 1, 3, 0}}));
    ruler.click(100, 30, Qt::RightButton); // through the flag
    QCOMPARE(ruler.told, (Told{{5, 1, 0, 0}}));
    ruler.click(50, 5, Qt::MiddleButton);
    QVERIFY(ruler.told.isEmpty());
}

void TstCursorHandle::aReleaseAfterAMoveDoesNothing()
{
    Ruler ruler;
    ruler.state(1, 1);
    ruler.move(50, 5);
    ruler.press(50, 5);
    ruler.move(60, 5);
    ruler.told.clear();
    ruler.release(60, 5);
    QVERIFY(ruler.told.isEmpty());
}

void TstCursorHandle::aReleaseEitherPicksUpOrPutsDown()
{
    Ruler ruler;
    ruler.state(0, 3);
    ruler.place(0, 100);
    ruler.move(100, 25);
    ruler.state(3, 1); // picked up by its key meanwhile
    QCOMPARE(ruler.stateOf(0), MarkerState::hovered);
    ruler.click(100, 25);
    QCOMPARE(ruler.told, (Told{{5, 0, 1, 0}}));
}

void TstCursorHandle::ofAFollowingAndAHoveredFlagTheFirstOneDecides()
{
    Ruler ruler;
    ruler.state(3, 3);
    ruler.place(1, 100);
    ruler.move(100, 25);
    ruler.state(0, 1);
    QCOMPARE(ruler.stateOf(3), MarkerState::hovered);
    ruler.click(100, 25);
    QCOMPARE(ruler.told, (Told{{5, 0, 3, 0}}));
}

void TstCursorHandle::aFlagThatWasPutDownIsHoveredAgainByTheNextMove()
{
    Ruler ruler;
    ruler.state(0, 1);
    ruler.place(0, 100);
    ruler.move(100, 25);
    ruler.state(0, 3);
    QCOMPARE(ruler.stateOf(0), MarkerState::placed);
    ruler.move(101, 25);
    QCOMPARE(ruler.stateOf(0), MarkerState::hovered);
}

void TstCursorHandle::aPairThatGoesFromUnderThePointerDoesNotComeBack()
{
    Ruler ruler;
    QVERIFY(ruler.shown);
    ruler.state(0, 3);
    ruler.place(0, 100);
    ruler.move(100, 25);
    QCOMPARE(ruler.stateOf(0), MarkerState::hovered);
    ruler.view.slotMainViewMarkerChanged(9, 0, -1); // by a key
    ruler.move(300, 25);
    QCOMPARE(ruler.ids(), QVector<int>());
}

void TstCursorHandle::withoutAFlagTheMouseDoesNothing()
{
    Ruler ruler;
    ruler.move(100, 25);
    ruler.click(100, 25);
    ruler.click(100, 25, Qt::RightButton);
    QVERIFY(ruler.told.isEmpty());
}

QTEST_MAIN(TstCursorHandle)
#include "tst_CursorHandle.moc"
