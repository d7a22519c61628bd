#include "controls/MyButton.h"
#include "device/DeviceGlobals.h"
#include "measure/TimingMarkerPair.h"
#include "measure/TimingMarkerTip.h"
#include "panels/PanelDevice.h"
#include "support/CaptureBuilder.h"
#include "support/GuiTestMain.h"

#include <QSignalSpy>

/// One row of the list of timing marker pairs.
class TstTimingMarkerPair : public QObject {
    Q_OBJECT
private slots:
    void thePairsAreNamedAToE();
    void aNewRowIsOpenAndKnowsNoTimes();
    void theMarkerButtonsTellTheirMarkers();
    void withAnEmptyCaptureTheMarkerButtonsDoNothing();
    void theLocationButtonTellsTheFirstMarkerOnceTheDistanceIsKnown();
    void theLocationButtonDoesNothingWithOnlyOneMarkerPlaced();
    void theMarkerButtonsOfADeviceThatHasGoneTellNothing();
    void theRemoveButtonTellsTheGroup();
    void foldingHidesTheTimesOnly();
    void aLongDistanceLeavesTheButtonsInTheRow();
    void theButtonsAreReachedByTabAndHaveNames();
};

void TstTimingMarkerPair::thePairsAreNamedAToE()
{
    QCOMPARE(pairName(0), QStringLiteral("A1-A2"));
    QCOMPARE(pairName(1), QStringLiteral("B1-B2"));
    QCOMPARE(pairName(4), QStringLiteral("E1-E2"));
    QCOMPARE(pairLetter(3), QStringLiteral("D"));
}

void TstTimingMarkerPair::aNewRowIsOpenAndKnowsNoTimes()
{
    const PanelDevice device(storage16Model);
    const TimingMarkerPair pair(*gDev, 2);
    QVERIFY(pair.expanded);
    QVERIFY(!pair.detail->isHidden());
    QCOMPARE(pair.pairTotal->text(), QStringLiteral("###"));
    QCOMPARE(pair.times.size(), 2);
    QCOMPARE(pair.times.at(0)->text(), QStringLiteral("###"));
    QCOMPARE(pair.times.at(1)->text(), QStringLiteral("###"));
    QCOMPARE(pair.btnTiming1->text(), QStringLiteral("C1"));
    QCOMPARE(pair.btnTiming2->text(), QStringLiteral("C2"));
    QStringList texts;
    for (const QLabel *label : pair.findChildren<QLabel *>()) {
        if (qobject_cast<const TimingMarkerTip *>(label) == nullptr) {
            QCOMPARE(label->styleSheet(), QStringLiteral("background-color:transparent;color:#dfdfdf;"));
            texts.append(label->text());
        }
    }
    texts.sort();
    QCOMPARE(texts.join(QLatin1Char(' ')), QStringLiteral("- = @ @ C1 C2 | |"));
}

void TstTimingMarkerPair::theMarkerButtonsTellTheirMarkers()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{1}.fill(*gDev->smpData);
    TimingMarkerPair pair(*gDev, 2);
    QSignalSpy clicked(&pair, &TimingMarkerPair::markerClicked);
    QTest::mouseClick(pair.btnTiming1, Qt::LeftButton);
    QTest::mouseClick(pair.btnTiming2, Qt::LeftButton);
    QCOMPARE(clicked.count(), 2);
    QCOMPARE(clicked.at(0).first().toInt(), 4);
    QCOMPARE(clicked.at(1).first().toInt(), 5);
}

void TstTimingMarkerPair::withAnEmptyCaptureTheMarkerButtonsDoNothing()
{
    const PanelDevice device(storage16Model);
    TimingMarkerPair pair(*gDev, 0);
    QSignalSpy clicked(&pair, &TimingMarkerPair::markerClicked);
    QTest::mouseClick(pair.btnTiming1, Qt::LeftButton);
    QTest::keyClick(pair.btnTiming2, Qt::Key_Space);
    QCOMPARE(clicked.count(), 0);
}

void TstTimingMarkerPair::theLocationButtonTellsTheFirstMarkerOnceTheDistanceIsKnown()
{
    const PanelDevice device(storage16Model);
    TimingMarkerPair pair(*gDev, 4);
    pair.pairTotal->setText(QStringLiteral("0ps"));
    QSignalSpy clicked(&pair, &TimingMarkerPair::locationClicked);
    QTest::mouseClick(pair.btnLocation, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(clicked.first().first().toInt(), 8);
}

void TstTimingMarkerPair::theLocationButtonDoesNothingWithOnlyOneMarkerPlaced()
{
    const PanelDevice device(storage16Model);
    TimingMarkerPair pair(*gDev, 0);
    pair.times.at(0)->setText(QStringLiteral("1us"));
    QSignalSpy clicked(&pair, &TimingMarkerPair::locationClicked);
    QTest::mouseClick(pair.btnLocation, Qt::LeftButton);
    QCOMPARE(clicked.count(), 0);
}

void TstTimingMarkerPair::theMarkerButtonsOfADeviceThatHasGoneTellNothing()
{
    PanelDevice device(storage16Model);
    CaptureBuilder{1}.fill(*gDev->smpData);
    TimingMarkerPair pair(*gDev, 2);
    device.replace(storage16Model);
    CaptureBuilder{1}.fill(*gDev->smpData); // of another device
    QSignalSpy clicked(&pair, &TimingMarkerPair::markerClicked);
    QTest::mouseClick(pair.btnTiming1, Qt::LeftButton);
    QCOMPARE(clicked.count(), 0);
}

void TstTimingMarkerPair::theRemoveButtonTellsTheGroup()
{
    const PanelDevice device(storage16Model);
    TimingMarkerPair pair(*gDev, 3);
    QSignalSpy clicked(&pair, &TimingMarkerPair::deleteClicked);
    QTest::mouseClick(pair.btnRemove, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(clicked.first().first().toInt(), 3);
}

void TstTimingMarkerPair::foldingHidesTheTimesOnly()
{
    const PanelDevice device(storage16Model);
    TimingMarkerPair pair(*gDev, 0);
    pair.show();
    QVERIFY(QTest::qWaitForWindowExposed(&pair));
    QTest::mouseClick(pair.btnDeploy, Qt::LeftButton);
    QVERIFY(!pair.expanded);
    QVERIFY(pair.detail->isHidden());
    QVERIFY(pair.pairTotal->isVisible());
    QTest::mouseClick(pair.btnDeploy, Qt::LeftButton);
    QVERIFY(pair.expanded);
    QVERIFY(pair.detail->isVisible());
}

void TstTimingMarkerPair::aLongDistanceLeavesTheButtonsInTheRow()
{
    const PanelDevice device(storage16Model);
    TimingMarkerPair pair(*gDev, 3);
    pair.resize(230, pair.height());
    pair.show();
    QVERIFY(QTest::qWaitForWindowExposed(&pair));
    // 2^40 - 1 samples at 20 kHz, in picoseconds and in their text
    pair.pairTotal->setText(QStringLiteral("54975581388750000000ps"));
    pair.times.at(1)->setText(QStringLiteral("-54975581.388750002s"));
    QCoreApplication::processEvents();
    QVERIFY(pair.minimumSizeHint().width() <= 230);
    QCOMPARE(pair.btnRemove->geometry().right(), 229);
    QVERIFY(pair.pairTotal->geometry().right() < pair.btnDeploy->geometry().left());
    QVERIFY(pair.pairTotal->width() > 60);
}

void TstTimingMarkerPair::theButtonsAreReachedByTabAndHaveNames()
{
    const PanelDevice device(storage16Model);
    const TimingMarkerPair pair(*gDev, 0);
    for (const MyButton *button : pair.findChildren<MyButton *>()) {
        QVERIFY((button->focusPolicy() & Qt::TabFocus) != 0);
        QVERIFY(!button->text().isEmpty() || !button->accessibleName().isEmpty());
    }
}

LUX_GUI_TEST(TstTimingMarkerPair)
#include "tst_TimingMarkerPair.moc"
