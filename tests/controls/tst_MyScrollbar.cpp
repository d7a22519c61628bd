#include "controls/Contrast.h"
#include "controls/Look.h"
#include "controls/MyScrollbar.h"

#include <QImage>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>

#include <limits>

class TstMyScrollbar : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void itIsHiddenUntilThereIsSomethingToScroll();
    void aRangeWithoutAPositiveMaximumHidesIt();
    void theHandleTakesThePagesShareOfTheTrack();
    void theHandleFillsTheTrackWhenThereIsNoRange();
    void aMinimumHandleStillReachesBothEndsOfItsTrack();
    void aMinimumHandleTakesItsPlaceFromTheShorterTravel();
    void extremeRangesNeitherOverflowNorDivideByZero();
    void aDragIsScaledByTheHandleInProportionToThePage();
    void aDragWithoutTravelKeepsTheValue();
    void valuesAreCutToTheRangeAndToldOnce();
    void noValueIsTakenWhileTheMaximumIsNotPositive();
    void aValueAtOrPastANewMaximumFollowsIt();
    void aRangeBelowTheValueIsToldAsARangeOnly();
    void theSameRangeIsNotToldTwice();
    void theMouseDragsTheHandleAndStopsAtTheEnds();
    void aDragOfAMinimumHandleGoesByTheHeightInProportion();
    void otherMouseButtonsDoNotDrag();
    void aClickBesideTheHandleMovesByAPage();
    void aDragThatComesBackMovesByNoPage();
    void keysMoveTheHandle();
    void withTheFocusTheKeysAreItsOwnAndNotTheWindows_data();
    void withTheFocusTheKeysAreItsOwnAndNotTheWindows();
    void theHandleIsPaintedGreyAndTheRestIsLeftClear();
};

namespace {
std::unique_ptr<MyScrollbar> bar(qlonglong max, qlonglong page)
{
    auto made = std::make_unique<MyScrollbar>();
    made->resize(10, 200);
    made->setRange(0, max);
    made->setPageStep(page);
    return made;
}

void drag(QWidget &widget, Qt::MouseButton button, int fromY, int toY)
{
    QTest::mousePress(&widget, button, {}, QPoint(5, fromY));
    QMouseEvent move(QEvent::MouseMove, QPointF(5, toY), Qt::NoButton, button, {});
    QCoreApplication::sendEvent(&widget, &move);
    QTest::mouseRelease(&widget, button, {}, QPoint(5, toY));
}
} // namespace

void TstMyScrollbar::initTestCase()
{
    globalsFillTables();
    gDpi = 96;
}

void TstMyScrollbar::itIsHiddenUntilThereIsSomethingToScroll()
{
    MyScrollbar fresh;
    QVERIFY(fresh.isHidden());
    fresh.setRange(0, 1);
    QVERIFY(!fresh.isHidden());
    fresh.setRange(0, 0);
    QVERIFY(fresh.isHidden());
}

void TstMyScrollbar::aRangeWithoutAPositiveMaximumHidesIt()
{
    const auto made = bar(100, 50);
    made->setRange(-5, 0);
    QVERIFY(made->isHidden());
    made->setRange(7, 7);
    QVERIFY(made->isHidden());
    made->setRange(-5, 1);
    QVERIFY(!made->isHidden());
}

void TstMyScrollbar::theHandleTakesThePagesShareOfTheTrack()
{
    QCOMPARE(scrollHandleHeight(200, 0, 300, 100), 50.0);
    const ScrollHandle middle = scrollHandle(200, 12, 0, 300, 100, 150);
    QCOMPARE(middle.height, 50.0);
    QCOMPARE(middle.top, 75);
    QCOMPARE(scrollHandle(200, 12, 0, 300, 100, 1).top, 0); // 0.5 is truncated
}

void TstMyScrollbar::theHandleFillsTheTrackWhenThereIsNoRange()
{
    QCOMPARE(scrollHandleHeight(200, 0, 0, 100), 200.0);
    QCOMPARE(scrollHandleHeight(200, 0, 0, 0), 200.0);
    QCOMPARE(scrollHandle(200, 12, 0, 0, 0, 5).top, 0);
    QCOMPARE(scrollHandle(0, 12, 0, 100, 10, 100).top, 0);
}

void TstMyScrollbar::aMinimumHandleStillReachesBothEndsOfItsTrack()
{
    const qlonglong max = 10'000'000'000;
    const ScrollHandle first = scrollHandle(200, 12, 0, max, 1, 0);
    const ScrollHandle last = scrollHandle(200, 12, 0, max, 1, max);
    QCOMPARE(first.height, 12.0);
    QCOMPARE(first.top, 0);
    QVERIFY(last.top >= 187 && last.top <= 188);
}

void TstMyScrollbar::aMinimumHandleTakesItsPlaceFromTheShorterTravel()
{
    // In proportion 4 high and travelling 196; at the half its top is 98, of the 188 that remain: 94.
    QCOMPARE(scrollHandleHeight(200, 0, 98, 2), 4.0);
    QCOMPARE(scrollHandle(200, 12, 0, 98, 2, 49).top, 94);
    QCOMPARE(scrollHandle(200, 12, 0, 98, 2, 98).top, 188);
}

void TstMyScrollbar::extremeRangesNeitherOverflowNorDivideByZero()
{
    const qlonglong low = std::numeric_limits<qlonglong>::min();
    const qlonglong high = std::numeric_limits<qlonglong>::max();
    const ScrollHandle handle = scrollHandle(200, 12, low, high, high, high);
    QVERIFY(handle.height >= 12.0 && handle.height <= 200.0);
    QVERIFY(handle.top >= 0 && handle.top <= 200);
    QCOMPARE(scrollDragValue(high, 1000, 200, 12.0, low, high), high);
    QCOMPARE(scrollDragValue(low, -1000, 200, 12.0, low, high), low);
    MyScrollbar widget;
    widget.setRange(low, high);
    widget.setPageStep(low);
    widget.setValue(high);
    QCOMPARE(widget.value, high);
}

void TstMyScrollbar::aDragIsScaledByTheHandleInProportionToThePage()
{
    QCOMPARE(scrollDragValue(10, 15, 200, 50.0, 0, 300), 40);
    QCOMPARE(scrollDragValue(10, 1, 200, 4.0, 0, 98), 10); // 10.5 is truncated
    QCOMPARE(scrollDragValue(100, -15, 200, 50.0, 0, 300), 70);
}

void TstMyScrollbar::aDragWithoutTravelKeepsTheValue()
{
    QCOMPARE(scrollDragValue(42, 10, 200, 200.0, 0, 300), 42);
    QCOMPARE(scrollDragValue(42, 10, 0, 0.0, 0, 300), 42);
}

void TstMyScrollbar::valuesAreCutToTheRangeAndToldOnce()
{
    const auto made = bar(100, 50);
    QSignalSpy told(made.get(), &MyScrollbar::valueChanged);
    made->setValue(40);
    made->setValue(40);
    made->setValue(1000);
    made->setValue(101);
    made->setValue(-1);
    QCOMPARE(told.size(), 3);
    QCOMPARE(told.at(0).at(0).toLongLong(), 40);
    QCOMPARE(told.at(1).at(0).toLongLong(), 100);
    QCOMPARE(told.at(2).at(0).toLongLong(), 0);
}

void TstMyScrollbar::noValueIsTakenWhileTheMaximumIsNotPositive()
{
    MyScrollbar fresh;
    QSignalSpy told(&fresh, &MyScrollbar::valueChanged);
    fresh.setValue(5);
    fresh.setRange(-10, 0);
    fresh.setValue(-5);
    QCOMPARE(fresh.value, 0);
    QCOMPARE(told.size(), 0);
}

void TstMyScrollbar::aValueAtOrPastANewMaximumFollowsIt()
{
    const auto made = bar(100, 50);
    made->setValue(80);
    QSignalSpy values(made.get(), &MyScrollbar::valueChanged);
    QSignalSpy ranges(made.get(), &MyScrollbar::rangChanged);
    made->setRange(0, 60);
    QCOMPARE(made->value, 60);
    QCOMPARE(made->maxV, 60);
    QCOMPARE(values.size(), 1);
    QCOMPARE(ranges.size(), 0);
}

void TstMyScrollbar::aRangeBelowTheValueIsToldAsARangeOnly()
{
    const auto made = bar(100, 50);
    made->setValue(10);
    QSignalSpy values(made.get(), &MyScrollbar::valueChanged);
    QSignalSpy ranges(made.get(), &MyScrollbar::rangChanged);
    made->setRange(0, 60);
    made->setRange(0, -1); // told, since the maximum was positive
    made->setRange(0, -2); // not told: neither was positive nor is 0
    made->setRange(0, 0);
    QCOMPARE(values.size(), 0);
    QCOMPARE(ranges.size(), 3);
    QCOMPARE(ranges.at(1).at(1).toLongLong(), -1);
    QCOMPARE(ranges.at(2).at(1).toLongLong(), 0);
    QCOMPARE(made->value, 10);
}

void TstMyScrollbar::theSameRangeIsNotToldTwice()
{
    const auto made = bar(100, 50);
    QSignalSpy ranges(made.get(), &MyScrollbar::rangChanged);
    made->setRange(0, 100);
    QCOMPARE(ranges.size(), 0);
}

void TstMyScrollbar::theMouseDragsTheHandleAndStopsAtTheEnds()
{
    const auto made = bar(300, 100);
    made->resize(10, 200);
    made->show();
    drag(*made, Qt::LeftButton, 20, 35);
    QCOMPARE(made->value, 30);
    drag(*made, Qt::LeftButton, 20, 900);
    QCOMPARE(made->value, 300);
    drag(*made, Qt::LeftButton, 100, -900);
    QCOMPARE(made->value, 0);
}

void TstMyScrollbar::aDragOfAMinimumHandleGoesByTheHeightInProportion()
{
    const auto made = bar(9900, 100); // 2 of 200 pixels, drawn with 12
    made->show();
    drag(*made, Qt::LeftButton, 3, 3 + 99);
    QCOMPARE(made->value, 4950);
}

void TstMyScrollbar::otherMouseButtonsDoNotDrag()
{
    const auto made = bar(300, 100);
    made->show();
    drag(*made, Qt::RightButton, 20, 60);
    QCOMPARE(made->value, 0);
}

void TstMyScrollbar::aClickBesideTheHandleMovesByAPage()
{
    const auto made = bar(300, 100); // a handle of 50 pixels
    made->show();
    const auto click = [&made](int y, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(made.get(), button, {}, QPoint(5, y));
    };
    click(49);
    QCOMPARE(made->value, 0);
    click(50);
    QCOMPARE(made->value, 100);
    click(199);
    click(199);
    click(199);
    QCOMPARE(made->value, 300);
    click(150);
    QCOMPARE(made->value, 300);
    click(149);
    QCOMPARE(made->value, 200);
    click(0, Qt::RightButton);
    QCOMPARE(made->value, 200);
    made->setRange(0, 3'000'000);
    made->setValue(0);
    click(11); // on the handle of the least height
    QCOMPARE(made->value, 0);
    click(12);
    QCOMPARE(made->value, 100);
}

void TstMyScrollbar::aDragThatComesBackMovesByNoPage()
{
    const auto made = bar(300, 100);
    made->show();
    QTest::mousePress(made.get(), Qt::LeftButton, {}, QPoint(5, 120));
    for (const int y : {125, 120}) {
        QMouseEvent move(QEvent::MouseMove, QPointF(5, y), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(made.get(), &move);
    }
    QTest::mouseRelease(made.get(), Qt::LeftButton, {}, QPoint(5, 120));
    QCOMPARE(made->value, 0);
}

void TstMyScrollbar::keysMoveTheHandle()
{
    const auto made = bar(300, 100);
    QTest::keyClick(made.get(), Qt::Key_Down);
    QCOMPARE(made->value, 10);
    QTest::keyClick(made.get(), Qt::Key_PageDown);
    QCOMPARE(made->value, 110);
    QTest::keyClick(made.get(), Qt::Key_Up);
    QCOMPARE(made->value, 100);
    QTest::keyClick(made.get(), Qt::Key_End);
    QCOMPARE(made->value, 300);
    QTest::keyClick(made.get(), Qt::Key_PageUp);
    QCOMPARE(made->value, 200);
    QTest::keyClick(made.get(), Qt::Key_Home);
    QCOMPARE(made->value, 0);
}

void TstMyScrollbar::withTheFocusTheKeysAreItsOwnAndNotTheWindows_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("value");
    QTest::newRow("up") << Qt::Key_Up << 140;
    QTest::newRow("down") << Qt::Key_Down << 160;
    QTest::newRow("page up") << Qt::Key_PageUp << 50;
    QTest::newRow("page down") << Qt::Key_PageDown << 250;
    QTest::newRow("home") << Qt::Key_Home << 0;
    QTest::newRow("end") << Qt::Key_End << 300;
}

void TstMyScrollbar::withTheFocusTheKeysAreItsOwnAndNotTheWindows()
{
    QFETCH(Qt::Key, key);
    QWidget window;
    const auto made = bar(300, 100);
    made->setParent(&window);
    made->setValue(150);
    made->show();
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    int shortcuts = 0;
    const QShortcut shortcut(QKeySequence(key), &window);
    connect(&shortcut, &QShortcut::activated, &window, [&shortcuts] { ++shortcuts; });

    made->setFocus(Qt::TabFocusReason);
    QTest::keyClick(made.get(), key);
    QTEST(int(made->value), "value");
    QCOMPARE(shortcuts, 0);
    made->clearFocus();
    QTest::keyClick(&window, key);
    QCOMPARE(shortcuts, 1);
    QTEST(int(made->value), "value");
}

void TstMyScrollbar::theHandleIsPaintedGreyAndTheRestIsLeftClear()
{
    const auto made = bar(300, 100);
    made->setValue(150); // 75 to 125 of 200
    QImage image(10, 200, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    made->render(&image, {}, {}, {});
    QCOMPARE(image.pixelColor(5, 70).alpha(), 0);
    // Told from the ground and from the light waves that it covers.
    for (const QColor &behind : {gGreys[8], gGreys[7], gGreys[0]}) {
        QImage seen(10, 200, QImage::Format_ARGB32_Premultiplied);
        seen.fill(behind);
        made->render(&seen, {}, {}, {});
        const QColor face = seen.pixelColor(5, 100);
        const double least = behind == gGreys[7] ? 2.7 : 3.0; // that is seen below the last row only
        QVERIFY2(contrastRatio(face, behind) >= least, qPrintable(face.name() + behind.name()));
    }
    QCOMPARE(image.pixelColor(5, 130).alpha(), 0);
    QCOMPARE(image.pixelColor(0, 75).alpha(), 0); // outside the rounded corner
}

QTEST_MAIN(TstMyScrollbar)
#include "tst_MyScrollbar.moc"
