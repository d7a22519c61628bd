#include "controls/Contrast.h"
#include "controls/MyButton.h"
#include "measure/VoltageMarkerPair.h"
#include "measure/VoltageMeasureView.h"
#include "panels/PanelDevice.h"
#include "support/GuiTestMain.h"

#include <QLabel>
#include <QSignalSpy>

/// The section "Voltage Marker Pairs".
class TstVoltageMeasureView : public QObject {
    Q_OBJECT
private slots:
    void itHoldsOnePairOfUnknownVoltages();
    void theButtonsHaveTheColoursOfTheirMarkersAndCanBeRead();
    void theButtonsTellTheirMarkers();
    void theChannelButtonChangesBetweenTwoChannels();
    void voltagesAndDifferenceAreShown();
    void aListOfAnotherLengthLeavesTheLabels_data();
    void aListOfAnotherLengthLeavesTheLabels();
    void anotherDeviceLeavesNoVoltageButItsChannel();
    void foldingThePairHidesTheVoltagesOnly();
    void foldingTheSectionLeavesItsTitle();

private:
    static QStringList shown(const VoltageMeasureView &view)
    {
        const VoltageMarkerPair &pair = *view.pairs.first();
        return {pair.valueLabels.at(0)->text(), pair.valueLabels.at(1)->text(), pair.diffLabel->text()};
    }
    static QStringList list(const char *words) { return QString::fromLatin1(words).split(QLatin1Char(' ')); }
};

void TstVoltageMeasureView::itHoldsOnePairOfUnknownVoltages()
{
    const VoltageMeasureView view;
    QCOMPARE(view.pairs.size(), 1);
    const VoltageMarkerPair &pair = *view.pairs.first();
    QCOMPARE(pair.index, 0);
    QCOMPARE(pair.markerBtns.first()->text(), QStringLiteral("Y1"));
    QCOMPARE(pair.markerBtns.last()->text(), QStringLiteral("Y2"));
    QCOMPARE(pair.btnChn->text(), QStringLiteral("CH1"));
    QCOMPARE(shown(view), list("### ### ###"));
}

void TstVoltageMeasureView::theButtonsHaveTheColoursOfTheirMarkersAndCanBeRead()
{
    const VoltageMeasureView view;
    const VoltageMarkerPair &pair = *view.pairs.first();
    for (int marker = 0; marker < 2; ++marker) {
        const MyButton *button = pair.markerBtns.at(marker);
        QCOMPARE(button->faceColor, gChnColors.at(marker));
        QVERIFY(contrastRatio(button->textColor, button->faceColor) >= leastTextContrast);
        QVERIFY(contrastRatio(button->textColor, button->hoverColor) >= leastTextContrast);
    }
    QCOMPARE(pair.markerBtns.first()->size(), pair.markerBtns.last()->size());
}

void TstVoltageMeasureView::theButtonsTellTheirMarkers()
{
    const VoltageMeasureView view;
    const VoltageMarkerPair &pair = *view.pairs.first();
    QSignalSpy clicked(&view, &VoltageMeasureView::markerPairClicked);
    QTest::mouseClick(pair.markerBtns.last(), Qt::LeftButton);
    QTest::mouseClick(pair.markerBtns.first(), Qt::LeftButton);
    QTest::keyClick(pair.markerBtns.last(), Qt::Key_Space);
    QCOMPARE(QList<QVariantList>(clicked), (QList<QVariantList>{{1}, {0}, {1}}));
}

void TstVoltageMeasureView::theChannelButtonChangesBetweenTwoChannels()
{
    const VoltageMeasureView view;
    const VoltageMarkerPair &pair = *view.pairs.first();
    QSignalSpy chosen(&view, &VoltageMeasureView::chnBtnClicked);
    const QString name = pair.btnChn->accessibleName();
    QTest::mouseClick(pair.btnChn, Qt::LeftButton);
    QCOMPARE(pair.btnChn->text(), QStringLiteral("CH2"));
    QVERIFY(pair.btnChn->accessibleName() != name);
    QTest::keyClick(pair.btnChn, Qt::Key_Space);
    QCOMPARE(pair.btnChn->text(), QStringLiteral("CH1"));
    QCOMPARE(pair.btnChn->accessibleName(), name);
    QCOMPARE(QList<QVariantList>(chosen), (QList<QVariantList>{{1}, {0}}));
}

void TstVoltageMeasureView::voltagesAndDifferenceAreShown()
{
    VoltageMeasureView view;
    view.slotValueChanged(list("1.00V -20.00mV 1.02V"));
    QCOMPARE(shown(view), list("1.00V -20.00mV 1.02V"));
    view.slotValueChanged(list("### 5.00mV ###"));
    QCOMPARE(shown(view), list("### 5.00mV ###"));
}

void TstVoltageMeasureView::aListOfAnotherLengthLeavesTheLabels_data()
{
    QTest::addColumn<int>("count");
    for (const int count : {0, 1, 2, 4, 100}) {
        QTest::addRow("%d", count) << count;
    }
}

void TstVoltageMeasureView::aListOfAnotherLengthLeavesTheLabels()
{
    QFETCH(int, count);
    VoltageMeasureView view;
    view.slotValueChanged(list("1.00V 2.00V 1.00V"));
    QStringList values;
    for (int i = 0; i < count; ++i) {
        values.append(QStringLiteral("9.00V"));
    }
    view.slotValueChanged(values);
    QCOMPARE(shown(view), list("1.00V 2.00V 1.00V"));
}

void TstVoltageMeasureView::anotherDeviceLeavesNoVoltageButItsChannel()
{
    VoltageMeasureView view;
    view.slotValueChanged(list("1.00V 2.00V 1.00V"));
    view.pairs.first()->btnChn->click();
    view.reload();
    QCOMPARE(shown(view), list("### ### ###"));
    QCOMPARE(view.pairs.first()->btnChn->text(), QStringLiteral("CH2"));
}

void TstVoltageMeasureView::foldingThePairHidesTheVoltagesOnly()
{
    VoltageMeasureView view;
    view.resize(240, 120);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const VoltageMarkerPair &pair = *view.pairs.first();
    QTest::mouseClick(pair.btnDeploy, Qt::LeftButton);
    QVERIFY(!pair.expanded && pair.detail->isHidden() && pair.diffLabel->isVisible());
    QTest::keyClick(pair.btnDeploy, Qt::Key_Space);
    QVERIFY(pair.expanded && pair.detail->isVisible());
}

void TstVoltageMeasureView::foldingTheSectionLeavesItsTitle()
{
    VoltageMeasureView view;
    view.resize(240, 120);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QTest::mouseClick(view.btnExpand, Qt::LeftButton);
    QVERIFY(!view.expanded && view.pairsWidget->isHidden() && view.btnExpand->isVisible());
    QTest::keyClick(view.btnExpand, Qt::Key_Space);
    QVERIFY(view.expanded && view.pairsWidget->isVisible());
}

LUX_GUI_TEST(TstVoltageMeasureView)
#include "tst_VoltageMeasureView.moc"
