#include "controls/ColorLump.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DeviceGlobals.h"
#include "measure/AnalyzerView.h"
#include "measure/Annotations.h"
#include "measure/MeasureView.h"
#include "measure/MeasureViewAChn.h"
#include "measure/PulseMeasure.h"
#include "measure/TimingMarkerPair.h"
#include "measure/TimingMarkerTip.h"
#include "measure/VoltageMarkerPair.h"
#include "measure/VoltageMeasureView.h"
#include "panels/PanelDevice.h"
#include "support/CaptureBuilder.h"
#include "support/GuiTestMain.h"

#include <QLabel>
#include <QSignalSpy>
#include <QVBoxLayout>

/// The right-hand panel: its column of sections, and the signals through it.
class TstAnalyzerView : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        QFile::remove(configPath());
        configLoad();
    }

    void theSectionsStandInTheirOrderWithASeparatorBetweenEachTwo_data();
    void theSectionsStandInTheirOrderWithASeparatorBetweenEachTwo();
    void everyPlaceOfTheColumnHasItsSeparator();
    void theLastEntryTakesTheSpareHeight();
    void itPaintsItsGroundAndABorder_data();
    void itPaintsItsGroundAndABorder();
    void theRequestsOfThePairsHaveTheirTypes();
    void whatTheViewTellsOfAMarkerReachesThePairs();
    void countsReachTheirRows();
    void aRowThatAsksForCountsIsPassedOn();
    void theHoverReachesTheMeasurements();
    void anotherDeviceLeavesNoPairsAndNoValues();
    void anotherDeviceTakesTheStoredRowsOver();
    void itAsksForNoMoreThanThePanelsWidth_data();
    void itAsksForNoMoreThanThePanelsWidth();
    void theAnalogSectionsComeAndGoWithTheModel();
    void whatIsClickedOfTheVoltagesIsPassedOn();
    void voltagesReachTheirLabels();
    void newParametersReachTheTable();
    void everyControlHasANameAndIsReachedByTab();
};

void TstAnalyzerView::theSectionsStandInTheirOrderWithASeparatorBetweenEachTwo_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<QString>("sections");
    QTest::newRow("digital") << storage16Model << QStringLiteral("MeasureView PulseMeasure Annotations QWidget");
    QTest::newRow("analog") << analogModel
                            << QStringLiteral(
                                   "MeasureViewAChn MeasureView PulseMeasure Annotations VoltageMeasureView QWidget");
}

void TstAnalyzerView::theSectionsStandInTheirOrderWithASeparatorBetweenEachTwo()
{
    QFETCH(int, model);
    QFETCH(QString, sections);
    const PanelDevice device(model);
    AnalyzerView view(*gDev);
    view.reload(*gDev);
    view.resize(240, 600);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QStringList shown;
    for (int i = 0; i < view.layout()->count(); ++i) {
        const QWidget *widget = view.layout()->itemAt(i)->widget();
        if (!widget->isHidden()) {
            shown.append(QString::fromLatin1(widget->metaObject()->className()));
        }
    }
    // The last one is empty here, and has no separator above it.
    const QString line = QStringLiteral(" ColorLump ");
    QString expected = sections;
    expected.replace(QLatin1Char(' '), line).replace(line + QStringLiteral("QWidget"), QStringLiteral(" QWidget"));
    QCOMPARE(shown.join(QLatin1Char(' ')), expected);
}

void TstAnalyzerView::everyPlaceOfTheColumnHasItsSeparator()
{
    const PanelDevice device(storage16Model);
    const AnalyzerView view(*gDev);
    const auto separators = view.findChildren<ColorLump *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(separators.size(), 6); // of seven sections
    for (const ColorLump *separator : separators) {
        QCOMPARE(separator->color, gGreys[5]);
        QCOMPARE(separator->height(), 2);
    }
}

void TstAnalyzerView::theLastEntryTakesTheSpareHeight()
{
    const PanelDevice device(storage16Model);
    AnalyzerView view(*gDev);
    view.resize(240, 900);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto *column = qobject_cast<QVBoxLayout *>(view.layout());
    QCOMPARE(column->stretch(column->count() - 1), 1);
    QCOMPARE(view.measureView->height(), view.measureView->sizeHint().height());
    QCOMPARE(view.annotations->height(), view.annotations->sizeHint().height());
    const QMargins margins = column->contentsMargins();
    QCOMPARE(margins, QMargins(margins.left(), margins.left(), margins.left(), margins.left()));
}

void TstAnalyzerView::itPaintsItsGroundAndABorder_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstAnalyzerView::itPaintsItsGroundAndABorder()
{
    QFETCH(int, dpi);
    const PanelDevice device(storage16Model);
    globalsSetDpi(dpi);
    AnalyzerView view(*gDev);
    view.resize(dp(240), dp(600));
    const QImage image = view.grab().toImage();
    const int right = image.width() - 1;
    const int bottom = image.height() - 1;
    for (const QPoint &place : {QPoint(100, 0), QPoint(100, bottom), QPoint(0, 100), QPoint(right, 100),
                                QPoint(dp(1) - 1, 100), QPoint(right - dp(1) + 1, 100)}) {
        QCOMPARE(image.pixelColor(place), gGreys[9]);
    }
    for (const QPoint &place : {QPoint(100, dp(1)), QPoint(dp(1), 100), QPoint(right - dp(1), 100),
                                QPoint(100, bottom - dp(1)), QPoint(100, bottom - dp(50))}) {
        QCOMPARE(image.pixelColor(place), gGreys[7]);
    }
    globalsSetDpi(96);
}

void TstAnalyzerView::theRequestsOfThePairsHaveTheirTypes()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{}.fill(*gDev->smpData);
    AnalyzerView view(*gDev);
    QSignalSpy clicked(&view, &AnalyzerView::timingMarkerPairClicked);
    QTest::mouseClick(view.annotations->btnAdd, Qt::LeftButton);
    QTest::mouseClick(view.annotations->btnAdd, Qt::LeftButton);
    emit view.slotTimMarkPairChanged(4, 2, QStringLiteral("1us"), QStringLiteral("2us"));
    const TimingMarkerPair *pair = view.annotations->pairs.at(1);
    QTest::mouseClick(pair->btnTiming2, Qt::LeftButton);
    QTest::mouseClick(pair->btnLocation, Qt::LeftButton);
    QTest::mouseClick(pair->btnRemove, Qt::LeftButton);
    const QList<QVariantList> expected{{0, 0}, {0, 2}, {2, 3}, {3, 2}, {1, 2}};
    QCOMPARE(QList<QVariantList>(clicked), expected);
}

void TstAnalyzerView::whatTheViewTellsOfAMarkerReachesThePairs()
{
    const PanelDevice device(storage16Model);
    AnalyzerView view(*gDev);
    emit view.slotTimMarkPairChanged(0, 4, QString(), QString());
    emit view.slotTimMarkPairChanged(4, 5, QStringLiteral("-3ns"), QStringLiteral("###"));
    QCOMPARE(view.annotations->pairs.size(), 1);
    QCOMPARE(view.annotations->pairs.first()->groupId, 2);
    QCOMPARE(view.annotations->pairs.first()->times.at(1)->text(), QStringLiteral("-3ns"));
}

void TstAnalyzerView::countsReachTheirRows()
{
    const PanelDevice device(storage16Model);
    AnalyzerView view(*gDev);
    QTest::mouseClick(view.pulseMeasure->btnAdd, Qt::LeftButton);
    emit view.slotPulseMeasureChangedAll({QStringLiteral("0,0,7,8,9,10")});
    QCOMPARE(view.pulseMeasure->valueLabels.first()->text(), QStringLiteral("7"));
    emit view.slotPulseMeasureChangedbyTimeMarker(0, {});
    QCOMPARE(view.pulseMeasure->valueLabels.first()->text(), QStringLiteral("7"));
    emit view.slotPulseMeasureChangedAll({});
    QCOMPARE(view.pulseMeasure->valueLabels.first()->text(), QStringLiteral("###"));
}

void TstAnalyzerView::aRowThatAsksForCountsIsPassedOn()
{
    const PanelDevice device(storage16Model);
    AnalyzerView view(*gDev);
    QSignalSpy changed(&view, &AnalyzerView::pulseMeasureChanged);
    QTest::mouseClick(view.pulseMeasure->btnAdd, Qt::LeftButton);
    QCOMPARE(changed.count(), 1);
}

void TstAnalyzerView::theHoverReachesTheMeasurements()
{
    const PanelDevice device(storage16Model);
    AnalyzerView view(*gDev);
    emit view.slotLogMeasureChanged({QStringLiteral("5ns")});
    QCOMPARE(view.measureView->valueLabels.first()->text(), QStringLiteral("5ns"));
}

void TstAnalyzerView::anotherDeviceLeavesNoPairsAndNoValues()
{
    PanelDevice device(storage16Model);
    AnalyzerView view(*gDev);
    for (int i = 0; i < 3; ++i) {
        QTest::mouseClick(view.annotations->btnAdd, Qt::LeftButton);
    }
    QTest::mouseClick(view.pulseMeasure->btnAdd, Qt::LeftButton);
    emit view.slotPulseMeasureChangedAll({QStringLiteral("0,0,7,8,9,10")});
    view.annotations->slotBtnDeployClicked();
    QSignalSpy clicked(&view, &AnalyzerView::timingMarkerPairClicked);
    device.replace(analogModel);
    view.reload(*gDev);
    QVERIFY(view.annotations->pairs.isEmpty());
    QVERIFY(view.annotations->expanded);
    QCOMPARE(view.pulseMeasure->valueLabels.first()->text(), QStringLiteral("###"));
    QCOMPARE(clicked.count(), 0);
}

void TstAnalyzerView::anotherDeviceTakesTheStoredRowsOver()
{
    const PanelDevice device(storage16Model);
    AnalyzerView view(*gDev);
    globalSet(QStringLiteral("DisPeriod"), QStringLiteral("1"));
    view.reload(*gDev);
    QVERIFY(view.measureView->nameLabels.at(1)->isHidden());
    QVERIFY(!view.measureView->nameLabels.at(0)->isHidden());
}

void TstAnalyzerView::theAnalogSectionsComeAndGoWithTheModel()
{
    PanelDevice device(storage16Model);
    AnalyzerView view(*gDev);
    view.reload(*gDev);
    QVERIFY(view.measureViewAChn->isHidden() && view.voltageMeasureView->isHidden());
    device.replace(analogModel);
    view.reload(*gDev);
    QVERIFY(!view.measureViewAChn->isHidden() && !view.voltageMeasureView->isHidden());
    device.replace(storage16Model);
    view.reload(*gDev);
    QVERIFY(view.measureViewAChn->isHidden() && view.voltageMeasureView->isHidden());
    QVERIFY(!view.measureView->isHidden());
}

void TstAnalyzerView::whatIsClickedOfTheVoltagesIsPassedOn()
{
    const PanelDevice device(analogModel);
    AnalyzerView view(*gDev);
    QSignalSpy markers(&view, &AnalyzerView::voltageMarkerClicked);
    QSignalSpy channels(&view, &AnalyzerView::voltageChnChanged);
    const VoltageMarkerPair *pair = view.voltageMeasureView->pairs.first();
    QTest::mouseClick(pair->markerBtns.last(), Qt::LeftButton);
    QTest::mouseClick(pair->btnChn, Qt::LeftButton);
    QCOMPARE(QList<QVariantList>(markers), (QList<QVariantList>{{1}}));
    QCOMPARE(QList<QVariantList>(channels), (QList<QVariantList>{{1}}));
}

void TstAnalyzerView::voltagesReachTheirLabels()
{
    const PanelDevice device(analogModel);
    AnalyzerView view(*gDev);
    emit view.slotVoltageMarkerValueChanged(
        {QStringLiteral("1.00V"), QStringLiteral("2.00V"), QStringLiteral("-3.00V")});
    const VoltageMarkerPair *pair = view.voltageMeasureView->pairs.first();
    QCOMPARE(pair->valueLabels.at(1)->text(), QStringLiteral("2.00V"));
    QCOMPARE(pair->diffLabel->text(), QStringLiteral("-3.00V"));
    view.reload(*gDev);
    QCOMPARE(pair->diffLabel->text(), QStringLiteral("###"));
}

void TstAnalyzerView::newParametersReachTheTable()
{
    const PanelDevice device(analogModel);
    AnalyzerView view(*gDev);
    view.measureViewAChn->paramText = [](int chn) {
        return chn == 0 ? QString() : QStringLiteral("Period:1ms,Vmax:2V");
    };
    emit view.slotParameterRefreshAch();
    QCOMPARE(view.measureViewAChn->value1Labels.first()->text(), QStringLiteral("--"));
    QCOMPARE(view.measureViewAChn->value2Labels.first()->text(), QStringLiteral("1ms"));
}

void TstAnalyzerView::itAsksForNoMoreThanThePanelsWidth_data()
{
    itPaintsItsGroundAndABorder_data();
}

void TstAnalyzerView::itAsksForNoMoreThanThePanelsWidth()
{
    QFETCH(int, dpi);
    const PanelDevice device(analogModel);
    globalsSetDpi(dpi);
    QFont font = QApplication::font();
    const QFont before = font;
    font.setPointSizeF(font.pointSizeF() * dpi / 96);
    QApplication::setFont(font);
    {
        AnalyzerView view(*gDev);
        for (int i = 0; i < 5; ++i) {
            view.annotations->btnAdd->click();
            view.pulseMeasure->btnAdd->click();
            emit view.slotTimMarkPairChanged(4, 2 * i, QStringLiteral("-54975581.388750002s"),
                                             QStringLiteral("54975581388750000000ps"));
        }
        emit view.slotPulseMeasureChangedAll({QStringLiteral("0,0,549755813887,1,1,1")});
        emit view.slotLogMeasureChanged({QString(200, QLatin1Char('9'))});
        view.ensurePolished();
        QVERIFY(view.minimumSizeHint().width() <= dp(240));
    }
    QApplication::setFont(before);
    globalsSetDpi(96);
}

void TstAnalyzerView::everyControlHasANameAndIsReachedByTab()
{
    const PanelDevice device(storage16Model);
    AnalyzerView view(*gDev);
    view.annotations->btnAdd->click();
    view.pulseMeasure->btnAdd->click();
    const auto buttons = view.findChildren<QAbstractButton *>();
    QCOMPARE(buttons.size(), 6 + 5 + 4 + 2 + 5);
    for (const QAbstractButton *button : buttons) {
        QVERIFY((button->focusPolicy() & Qt::TabFocus) != 0);
        QVERIFY(!button->text().isEmpty() || !button->accessibleName().isEmpty());
    }
}

LUX_GUI_TEST(TstAnalyzerView)
#include "tst_AnalyzerView.moc"
