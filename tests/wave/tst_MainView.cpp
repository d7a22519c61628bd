#include "controls/Look.h"
#include "controls/MyScrollbar.h"
#include "device/DeviceGlobals.h"
#include "store/SmpWriter.h"
#include "wave/DecodedSource.h"
#include "wave/MainViewDesk.h"

#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QtTest>

namespace {

constexpr int analogModel = 97;
constexpr int eightChannelModel = 1;
constexpr int thirtyTwoChannelModel = 9;

/// 1,000 samples at 1 MHz; channel 0 changes at 100, 200, 300 and so on and is low at first.
WaveCapture squareWave()
{
    return capture().samples(1000).rate(1000000).pulses(0, std::vector<std::int32_t>(9, 100));
}

QStringList unknown()
{
    return QVector<QString>(4, QStringLiteral("###")).toList();
}

/// The last column of the arrow in the first of 16 rows that share 800 pixels, -1 for none.
int arrowEnd(const MainViewDesk &desk)
{
    const QImage image = desk.waves->grab().toImage();
    const int y = 2 + (4 + 46) / 2;
    int last = -1;
    for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, y) == gGreys[2]) {
            last = x;
        }
    }
    return last;
}

} // namespace

class TstMainView : public QObject {
    Q_OBJECT
private slots:
    void init();

    void thePointerToTheOneViewIsGlobal();
    void eachChannelHasASidebarABackgroundAndALine();
    void sidebarAndItemsOfAChannelLieSideBySide();
    void theStoredOrderDecidesTheRows();
    void theStoredMultipliersDecideTheHeights();
    void namesComeFromTheConfiguration();
    void switchingAChannelOffClosesItsRowAndMovesTheRestUp();
    void withEveryChannelOffNothingIsShownAndNothingBreaks();
    void anotherDeviceReplacesAllItems();
    void theAnalogAreaStaysEmptyAboveTheRows();
    void theAnalogModelStartsAtOneSamplePerPixelWithTimeZeroInTheMiddle();
    void resizingTheAnalogModelKeepsTheSeenTimeSpan();
    void onAScaledScreenResizingTheAnalogModelKeepsTheSpanToo();
    void theGeneratorIsToldTheWidthInLogicalPixels_data();
    void theGeneratorIsToldTheWidthInLogicalPixels();
    void resizingTheViewSharesTheNewHeight();
    void sidebarsAndWavesScrollTogether();
    void labelsOfDecodersAreTakenOnlyForAllChannelsAtOnce();

    void aLeftClickZoomsInAndARightClickZoomsOutAtThePointer();
    void theSampleUnderThePointerStaysThere();
    void theMiddleButtonDoesNothing();
    void aClickWithoutACaptureDoesNothing();
    void theAnalogModelZoomsWithoutACapture();
    void theWheelZoomsAtThePointer_data();
    void theWheelZoomsAtThePointer();
    void aClickInTheSidebarColumnDoesNotZoom();
    void aDragPansStepByStepAndDoesNotZoom();
    void atScaleTwoAPanIsHalvedAndLosesOddPixels();
    void aDragWithoutACaptureDoesNotPan();
    void draggingWithAnotherButtonDoesNotPan();
    void keysZoomAboutTheMiddle_data();
    void keysZoomAboutTheMiddle();
    void homeAndEndPassTheEndsOfTheDataBeforeTheViewSettles();
    void keysDoNothingWithoutACapture();
    void onlyKeysThatMoveRepeatByThemselves();
    void besideTheSidebarsTabStopsOnlyAtTheBarThatShowsItsFocus();
    void aClickInTheWavesTakesTheFocusFromAField();

    void hoveringTellsThePulseUnderThePointer();
    void hoveringOutsideTheDataTellsNothing();
    void hoveringWithoutACaptureTellsNothing();
    void hoveringBelowTheLastRowHidesTheArrowAndComingBackShowsIt();
    void theArrowLiesInTheRowOfItsChannel();
    void leavingTheViewHidesTheArrow();
    void aNewFrameRepeatsTheHoverWhereThePointerIs();
    void aNewRatioRedrawsTheArrowOfTheSamePulse();
    void aNewStartRedrawsTheArrowOfTheSamePulse();
    void newDataTakesOffTheHover();
    void aChannelThatTheCaptureDoesNotHaveTellsNothing();
};

void TstMainView::init()
{
    resetProgram();
    QCursor::setPos(5000, 5000);
}

void TstMainView::thePointerToTheOneViewIsGlobal()
{
    {
        const MainViewDesk desk;
        QCOMPARE(gMainView, &desk.view);
    }
    QCOMPARE(gMainView, nullptr);
}

void TstMainView::eachChannelHasASidebarABackgroundAndALine()
{
    const MainViewDesk desk;
    QVERIFY(desk.shown);
    QCOMPARE(desk.view.findChildren<ItemChnSidebar *>().size(), 16);
    QCOMPARE(desk.items<ItemWaveBackground>().size(), 16);
    QCOMPARE(desk.items<ItemWaveLine>().size(), 16);
}

void TstMainView::sidebarAndItemsOfAChannelLieSideBySide()
{
    const MainViewDesk desk;
    for (int chn = 0; chn < 16; ++chn) {
        QCOMPARE(desk.sidebar(chn).geometry(), QRect(0, chn * 50, 190, 50));
        QCOMPARE(desk.place<ItemWaveBackground>(chn), QRect(0, chn * 50, 1000, 50));
        QCOMPARE(desk.place<ItemWaveLine>(chn), QRect(0, chn * 50, 1000, 50));
    }
    QCOMPARE(desk.waves->geometry(), QRect(190, 0, 1000, 800));
    QCOMPARE(desk.waves->sceneRect(), QRectF(0, 0, 1000, 800));
}

void TstMainView::theStoredOrderDecidesTheRows()
{
    globalSet(QStringLiteral("chnShowIndex"), QStringLiteral("7,6,5,4,3,2,1,0"));
    const MainViewDesk desk(eightChannelModel);
    for (int chn = 0; chn < 8; ++chn) {
        QCOMPARE(desk.sidebar(chn).y(), (7 - chn) * 100);
        QCOMPARE(desk.place<ItemWaveLine>(chn).y(), (7 - chn) * 100);
    }
}

void TstMainView::theStoredMultipliersDecideTheHeights()
{
    globalSet(QStringLiteral("chnShowMultip"), QStringLiteral("1,2,3,0,-4,1,1,8"));
    const MainViewDesk desk(eightChannelModel);
    const QVector<int> factors{1, 2, 1, 1, 1, 1, 1, 8};
    for (int chn = 0; chn < 8; ++chn) {
        QCOMPARE(desk.sidebar(chn).height(), 50 * factors[chn]);
    }
}

void TstMainView::namesComeFromTheConfiguration()
{
    globalSet(QStringLiteral("chnShowName1"), QStringLiteral("SPI <b>clock</b>"));
    const MainViewDesk desk;
    const auto name = [&desk](int chn) { return desk.sidebar(chn).findChild<QLineEdit *>(QStringLiteral("name")); };
    QCOMPARE(name(0)->text(), QStringLiteral("Channel 0"));
    QCOMPARE(name(1)->text(), QStringLiteral("SPI <b>clock</b>"));
    globalSet(QStringLiteral("chnShowName1"), QString());
}

void TstMainView::switchingAChannelOffClosesItsRowAndMovesTheRestUp()
{
    MainViewDesk desk(eightChannelModel);
    QVector<bool> enable(8, true);
    enable[2] = enable[3] = false;
    gDev->setChnEnable(enable);
    desk.view.slotChnEnaChanged();
    QCOMPARE(desk.sidebar(1).geometry(), QRect(0, 120, 190, 120));
    QCOMPARE(desk.sidebar(2).height(), 0);
    QCOMPARE(desk.place<ItemWaveLine>(2).height(), 0);
    QCOMPARE(desk.sidebar(4).geometry(), QRect(0, 240, 190, 120));
    QCOMPARE(desk.place<ItemWaveLine>(4), QRect(0, 240, 1000, 120));
}

void TstMainView::withEveryChannelOffNothingIsShownAndNothingBreaks()
{
    MainViewDesk desk(eightChannelModel);
    desk.load(squareWave());
    gDev->chnEnable.fill(false);
    desk.view.slotChnEnaChanged();
    desk.move(100, 20);
    QCOMPARE(desk.waves->sceneRect().height(), 0.0);
    QCOMPARE(desk.texts, unknown());
    QVERIFY(!desk.view.grab().isNull());
}

void TstMainView::anotherDeviceReplacesAllItems()
{
    MainViewDesk desk(eightChannelModel);
    desk.load(squareWave());
    desk.move(150, 10);
    QVERIFY(desk.arrow().isVisible());
    desk.replaceDevice(thirtyTwoChannelModel);
    QCOMPARE(desk.view.findChildren<ItemChnSidebar *>().size(), 32);
    QCOMPARE(desk.items<ItemWaveLine>().size(), 32);
    QCOMPARE(desk.items<ItemWaveBackground>().size(), 32);
    QVERIFY(!desk.arrow().isVisible());
    QTRY_VERIFY(desk.sidebar(31).isVisible());
}

void TstMainView::theAnalogAreaStaysEmptyAboveTheRows()
{
    const MainViewDesk desk(analogModel, {1190, 1200}); // 24 units of 50
    QCOMPARE(desk.sidebar(0).y(), 400);
    QCOMPARE(desk.place<ItemWaveLine>(0), QRect(0, 400, 1000, 50));
    QCOMPARE(desk.waves->grab().toImage().pixelColor(500, 200), gGreys[7]);
}

void TstMainView::theAnalogModelStartsAtOneSamplePerPixelWithTimeZeroInTheMiddle()
{
    const MainViewDesk desk(analogModel);
    QCOMPARE(desk.gen.viewWidth(), 1000);
    QCOMPARE(desk.gen.ratioSasPix(), 1.0);
    const double middle = desk.gen.viewStart() + 500 * desk.gen.ratioSasPix();
    QCOMPARE(middle + 1.0, 1.0);
}

void TstMainView::resizingTheAnalogModelKeepsTheSeenTimeSpan()
{
    MainViewDesk desk(analogModel);
    const double span = desk.gen.viewWidth() * desk.gen.ratioSasPix();
    desk.view.resize(190 + 500, 800);
    QCOMPARE(desk.gen.viewWidth(), 500);
    QCOMPARE(desk.gen.viewWidth() * desk.gen.ratioSasPix(), span);
}

void TstMainView::onAScaledScreenResizingTheAnalogModelKeepsTheSpanToo()
{
    resetProgram(192);
    MainViewDesk desk(analogModel);
    const double span = desk.gen.viewWidth() * desk.gen.ratioSasPix();
    desk.view.resize(2 * 190 + 600, 800);
    QCOMPARE(desk.gen.viewWidth(), 300);
    QCOMPARE(desk.gen.viewWidth() * desk.gen.ratioSasPix(), span);
}

void TstMainView::theGeneratorIsToldTheWidthInLogicalPixels_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("width");
    QTest::newRow("96") << 96 << 1000;
    QTest::newRow("144 has scale one") << 144 << 1190 - 285;
    QTest::newRow("192") << 192 << (1190 - 380) / 2;
}

void TstMainView::theGeneratorIsToldTheWidthInLogicalPixels()
{
    QFETCH(int, dpi);
    resetProgram(dpi);
    const MainViewDesk desk;
    QTEST(desk.gen.viewWidth(), "width");
}

void TstMainView::resizingTheViewSharesTheNewHeight()
{
    MainViewDesk desk(eightChannelModel);
    desk.view.resize(890, 400);
    QCOMPARE(desk.sidebar(1).geometry(), QRect(0, 50, 190, 50));
    QCOMPARE(desk.place<ItemWaveLine>(1), QRect(0, 50, 700, 50));
    QCOMPARE(desk.gen.viewWidth(), 700);
}

void TstMainView::sidebarsAndWavesScrollTogether()
{
    const MainViewDesk desk(thirtyTwoChannelModel);
    QScrollBar *sidebars = desk.view.findChild<QScrollArea *>()->verticalScrollBar();
    QScrollBar *waves = desk.waves->verticalScrollBar();
    const int beyond = 32 * 42 - 800;
    QCOMPARE(sidebars->maximum(), beyond);
    QCOMPARE(waves->maximum(), beyond);
    QCOMPARE(waves->pageStep(), 800);
    sidebars->setValue(100);
    QCOMPARE(waves->value(), 100);
    waves->setValue(beyond);
    QCOMPARE(sidebars->value(), beyond);
}

void TstMainView::labelsOfDecodersAreTakenOnlyForAllChannelsAtOnce()
{
    MainViewDesk desk(eightChannelModel);
    const auto label = [&desk](int chn) {
        return desk.sidebar(chn).findChild<QLineEdit *>(QStringLiteral("analyzer"));
    };
    QVector<QPair<int, QString>> labels;
    for (int chn = 0; chn < 8; ++chn) {
        labels.append({chn, chn == 2 ? QStringLiteral("I2C - SDA") : QString()});
    }
    desk.view.slotAnalyzerItemChanged(labels.mid(0, 7));
    QCOMPARE(label(2)->text(), QString());
    desk.view.slotAnalyzerItemChanged(labels);
    QCOMPARE(label(2)->text(), QStringLiteral("I2C - SDA"));
    QCOMPARE(label(2)->toolTip(), QStringLiteral("I2C - SDA"));
    QCOMPARE(label(3)->text(), QString());
}

void TstMainView::aLeftClickZoomsInAndARightClickZoomsOutAtThePointer()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.click(250, 10);
    QCOMPARE(desk.zooms, (QVector<QPair<int, QPoint>>{{1, {250, 10}}}));
    QCOMPARE(desk.gen.ratioSasPix(), 0.5);
    desk.click(300, 20, Qt::RightButton);
    QCOMPARE(desk.zooms.last(), qMakePair(2, QPoint(300, 20)));
    QCOMPARE(desk.gen.ratioSasPix(), 1.0);
}

void TstMainView::theSampleUnderThePointerStaysThere()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.click(250, 10);
    QCOMPARE(desk.gen.viewStart() + 250 * desk.gen.ratioSasPix(), 250.0);
}

void TstMainView::theMiddleButtonDoesNothing()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.click(250, 10, Qt::MiddleButton);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainView::aClickWithoutACaptureDoesNothing()
{
    MainViewDesk desk;
    desk.click(250, 10);
    desk.click(250, 10, Qt::RightButton);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainView::theAnalogModelZoomsWithoutACapture()
{
    MainViewDesk desk(analogModel);
    desk.click(250, 10);
    QCOMPARE(desk.zooms, (QVector<QPair<int, QPoint>>{{1, {250, 10}}}));
}

void TstMainView::theWheelZoomsAtThePointer_data()
{
    QTest::addColumn<int>("angle");
    QTest::addColumn<int>("flag");
    QTest::newRow("forward zooms in") << 120 << 1;
    QTest::newRow("backward zooms out") << -120 << 2;
}

void TstMainView::theWheelZoomsAtThePointer()
{
    QFETCH(int, angle);
    QFETCH(int, flag);
    MainViewDesk desk;
    desk.load(squareWave());
    QWheelEvent event(QPointF(70, 80), QPointF(70, 80), QPoint(), QPoint(0, angle), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(desk.waves->viewport(), &event);
    QCOMPARE(desk.zooms, (QVector<QPair<int, QPoint>>{{flag, {70, 80}}}));
}

void TstMainView::aClickInTheSidebarColumnDoesNotZoom()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.click(-50, 10);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainView::aDragPansStepByStepAndDoesNotZoom()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.gen.zoomSetRatio(0.1);
    const double start = desk.gen.viewStart();
    desk.move(500, 10);
    desk.press(500, 10);
    desk.move(480, 10);
    desk.move(510, 10);
    desk.release(510, 10);
    QCOMPARE(desk.drags, (QVector<int>{-20, 30}));
    QCOMPARE(desk.gen.viewStart(), start - 10 * 0.1);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainView::atScaleTwoAPanIsHalvedAndLosesOddPixels()
{
    resetProgram(192);
    MainViewDesk desk;
    desk.load(squareWave());
    desk.move(200, 10);
    desk.press(200, 10);
    desk.move(205, 10);
    desk.move(206, 10);
    desk.move(200, 10);
    desk.release(200, 10);
    QCOMPARE(desk.drags, (QVector<int>{2, 0, -3}));
}

void TstMainView::aDragWithoutACaptureDoesNotPan()
{
    MainViewDesk desk;
    desk.press(500, 10);
    desk.move(480, 10);
    desk.release(480, 10);
    QVERIFY(desk.drags.isEmpty());
}

void TstMainView::draggingWithAnotherButtonDoesNotPan()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.move(500, 10);
    desk.press(500, 10, Qt::RightButton);
    desk.move(480, 10);
    desk.release(480, 10, Qt::RightButton);
    QVERIFY(desk.drags.isEmpty());
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainView::keysZoomAboutTheMiddle_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("flag");
    QTest::newRow("up") << Qt::Key_Up << 1;
    QTest::newRow("plus") << Qt::Key_Plus << 1;
    QTest::newRow("equal") << Qt::Key_Equal << 1;
    QTest::newRow("down") << Qt::Key_Down << 2;
    QTest::newRow("minus") << Qt::Key_Minus << 2;
}

void TstMainView::keysZoomAboutTheMiddle()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, flag);
    MainViewDesk desk;
    desk.load(squareWave());
    desk.key(key);
    QCOMPARE(desk.zooms, (QVector<QPair<int, QPoint>>{{flag, {500, 0}}}));
}

void TstMainView::homeAndEndPassTheEndsOfTheDataBeforeTheViewSettles()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.gen.zoomSetRatio(0.1);
    desk.key(Qt::Key_Home);
    QCOMPARE(desk.gen.viewStart(), -1000.0);
    QTRY_COMPARE(desk.gen.viewStart(), 0.0);
    desk.key(Qt::Key_End);
    QCOMPARE(desk.gen.viewStart(), 1000 - 1000 * 0.1 + 1000);
    QTRY_COMPARE(desk.gen.viewStart(), 900.0);
}

void TstMainView::keysDoNothingWithoutACapture()
{
    MainViewDesk desk;
    const double start = desk.gen.viewStart();
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End}) {
        desk.key(key);
    }
    QVERIFY(desk.zooms.isEmpty());
    QCOMPARE(desk.gen.viewStart(), start);
}

void TstMainView::onlyKeysThatMoveRepeatByThemselves()
{
    const MainViewDesk desk;
    const auto shortcuts = desk.view.findChildren<QShortcut *>();
    QCOMPARE(shortcuts.size(), 29);
    for (const QShortcut *shortcut : shortcuts) {
        const int key = shortcut->key()[0] & ~int(Qt::KeyboardModifierMask);
        // Held down they go on: the view and the markers.
        const bool isUpOrDown = key == Qt::Key_Up || key == Qt::Key_Down;
        const bool moves = key == Qt::Key_Left || key == Qt::Key_Right || (isUpOrDown && key != shortcut->key()[0]);
        QCOMPARE(shortcut->autoRepeat(), moves);
    }
}

void TstMainView::besideTheSidebarsTabStopsOnlyAtTheBarThatShowsItsFocus()
{
    const MainViewDesk desk(thirtyTwoChannelModel);
    QVector<QWidget *> stops;
    for (QWidget *widget : desk.view.findChildren<QWidget *>()) {
        const bool inSidebar = qobject_cast<ItemChnSidebar *>(widget->parentWidget()) != nullptr ||
                               qobject_cast<ItemChnSidebar *>(widget->parentWidget()->parentWidget()) != nullptr;
        if (!inSidebar && widget->isVisible() && widget->focusPolicy() & Qt::TabFocus) {
            stops.append(widget);
        }
    }
    QCOMPARE(stops, QVector<QWidget *>{desk.waves->findChild<MyScrollbar *>()});
}

void TstMainView::aClickInTheWavesTakesTheFocusFromAField()
{
    MainViewDesk desk;
    QLineEdit field(&desk.view);
    field.show();
    field.setFocus();
    QVERIFY(field.hasFocus());
    desk.click(500, 400);
    QVERIFY(desk.waves->hasFocus());
}

void TstMainView::hoveringTellsThePulseUnderThePointer()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.move(150, 10);
    QCOMPARE(desk.texts, (QStringList{QStringLiteral("100us"), QStringLiteral("200us"), QStringLiteral("50%"),
                                      QStringLiteral("5KHz")}));
    QVERIFY(desk.arrow().isVisible());
    desk.move(950, 10); // the last pulse ends with the data
    QCOMPARE(desk.texts[0], QStringLiteral("100us"));
    QCOMPARE(desk.texts[1], QStringLiteral("###"));
}

void TstMainView::hoveringOutsideTheDataTellsNothing()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.gen.zoomSetRatio(0.1);
    desk.gen.setViewStart(-50.0);
    desk.move(499, 10); // sample -0.1 truncates to 0
    QVERIFY(desk.arrow().isVisible());
    desk.move(480, 10);
    QCOMPARE(desk.texts, unknown());
    QVERIFY(!desk.arrow().isVisible());
}

void TstMainView::hoveringWithoutACaptureTellsNothing()
{
    MainViewDesk desk;
    desk.move(150, 10);
    QCOMPARE(desk.texts, unknown());
    QVERIFY(!desk.arrow().isVisible());
}

void TstMainView::hoveringBelowTheLastRowHidesTheArrowAndComingBackShowsIt()
{
    MainViewDesk desk(eightChannelModel, {1190, 1200}); // eight rows of 120
    desk.load(squareWave());
    desk.move(150, 10);
    desk.move(150, 1000);
    QVERIFY(!desk.arrow().isVisible());
    QCOMPARE(desk.texts, unknown());
    desk.move(150, 10);
    QVERIFY(desk.arrow().isVisible());
}

void TstMainView::theArrowLiesInTheRowOfItsChannel()
{
    resetProgram(192);
    MainViewDesk desk;
    desk.load(capture().channels(16).samples(1000).pulses(2, {100, 100}));
    desk.move(20, 2 * 84 + 10);
    QVERIFY(desk.arrow().isVisible());
    QCOMPARE(desk.arrow().sceneBoundingRect(), QRectF(0, 2 * 84 + 4, 1190 - 380, 84 - 8));
}

void TstMainView::leavingTheViewHidesTheArrow()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.move(150, 10);
    desk.move(-50, 10);
    QVERIFY(!desk.arrow().isVisible());
    QCOMPARE(desk.texts, unknown());
}

void TstMainView::aNewFrameRepeatsTheHoverWhereThePointerIs()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.move(150, 10);
    desk.texts.clear();
    desk.gen.zoomSetRatio(0.5);
    QCOMPARE(desk.texts.value(0), QStringLiteral("100us"));
    QCursor::setPos(5000, 5000);
    desk.gen.zoomSetRatio(0.25);
    QCOMPARE(desk.texts, unknown());
    QVERIFY(!desk.arrow().isVisible());
}

void TstMainView::aNewRatioRedrawsTheArrowOfTheSamePulse()
{
    MainViewDesk desk(0, {1190, 800});
    desk.load(squareWave());
    desk.move(20, 25);
    const int before = arrowEnd(desk);
    desk.gen.zoomInAt(0); // the start stays 0, and so does the pulse
    QVERIFY(before > 20);
    QVERIFY(arrowEnd(desk) > before);
}

void TstMainView::aNewStartRedrawsTheArrowOfTheSamePulse()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.gen.zoomSetRatio(0.5);
    desk.gen.setViewStart(0.0);
    desk.move(50, 25); // the pulse of samples 0 to 99, with its second arrow to 199
    QCOMPARE(arrowEnd(desk), 398);
    desk.gen.setViewStart(20.0);
    QCOMPARE(arrowEnd(desk), 358);
}

void TstMainView::newDataTakesOffTheHover()
{
    MainViewDesk desk;
    desk.load(squareWave());
    desk.move(150, 10);
    desk.view.clearForNewData();
    QVERIFY(!desk.arrow().isVisible());
    QCOMPARE(desk.texts, unknown());
}

void TstMainView::aChannelThatTheCaptureDoesNotHaveTellsNothing()
{
    MainViewDesk desk;
    desk.load(squareWave());
    const std::vector<std::uint8_t> onlyFirst{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    gDev->smpData->begin(0, 1000000, onlyFirst);
    SmpWriter(*gDev->smpData).setSmpCount(1000);
    gDev->smpData->finish(1000);
    desk.gen.dataReady();
    desk.move(150, 60);
    QCOMPARE(desk.texts, unknown());
    desk.move(150, 10);
    QCOMPARE(desk.texts[0], QStringLiteral("1ms"));
}

QTEST_MAIN(TstMainView)
#include "tst_MainView.moc"
