#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DeviceGlobals.h"
#include "panels/PanelDevice.h"
#include "panels/SmpCtrl.h"

#include <QProgressBar>
#include <QSignalSpy>
#include <QTest>

class TstSmpCtrl : public QObject {
    Q_OBJECT
private slots:
    void theAnalogModelHasThreeButtonsAndABar();
    void otherModelsHaveOneWideButtonAndNoBar();
    void theLookTellsWhetherAnInstrumentIsThere();
    void aPressAsksForACaptureAlsoWithoutAnInstrument();
    void theStopButtonAsksForAStop();
    void autoAndNormalDoNothing();
    void theBarIsShownFromZeroOnTheAnalogModelOnly();
    void theBarsValueIsLimited();
    void everyControlHasANameAndIsReachedByTab();
};

void TstSmpCtrl::theAnalogModelHasThreeButtonsAndABar()
{
    const PanelDevice device(analogModel);
    const SmpCtrl ctrl;
    QCOMPARE(ctrl.findChildren<MyButton *>().size(), 3);
    for (const MyButton *button : {ctrl.btnSingle, ctrl.btnAuto, ctrl.btnStop}) {
        QVERIFY(button);
        QCOMPARE(button->minimumWidth(), button->minimumHeight() * 12 / 10);
        QCOMPARE(button->faceColor, gGreys[8]);
        QCOMPARE(button->hoverColor, gGreys[6]);
    }
    QVERIFY(ctrl.smpBar->maximumHeight() > 0);
    QCOMPARE(ctrl.smpBar->minimum(), 0);
    QCOMPARE(ctrl.smpBar->maximum(), 100);
    QVERIFY(!ctrl.smpBar->isTextVisible());
    QCOMPARE(ctrl.smpBar->styleSheet(), QStringLiteral("background-color:#afafaf;border:0px;"));
}

void TstSmpCtrl::otherModelsHaveOneWideButtonAndNoBar()
{
    const PanelDevice device(storage16Model);
    const SmpCtrl ctrl;
    QCOMPARE(ctrl.findChildren<MyButton *>().size(), 1);
    QVERIFY(!ctrl.btnAuto && !ctrl.btnStop);
    QCOMPARE(ctrl.btnSingle->minimumWidth(), ctrl.btnSingle->minimumHeight() * 2);
    QCOMPARE(ctrl.smpBar->maximumHeight(), 0);
    QVERIFY(ctrl.smpBar->isHidden());
    QCOMPARE(ctrl.sizeHint().width(), ctrl.btnSingle->minimumWidth());
}

void TstSmpCtrl::theLookTellsWhetherAnInstrumentIsThere()
{
    const PanelDevice device(analogModel);
    SmpCtrl ctrl;
    QVERIFY(ctrl.btnSingle->useCheckedIcon && ctrl.btnAuto->useCheckedIcon);
    QVERIFY(!ctrl.btnSingle->checkedIcon.isNull() && !ctrl.btnAuto->checkedIcon.isNull());
    QVERIFY(!ctrl.btnStop->useCheckedIcon);
    QVERIFY(ctrl.btnSingle->isEnabled());
    ctrl.showConnected(true);
    QVERIFY(!ctrl.btnSingle->useCheckedIcon && !ctrl.btnAuto->useCheckedIcon);
    gDev->connected = true;
    const SmpCtrl second;
    QVERIFY(!second.btnSingle->useCheckedIcon);
    gDev->connected = false;
}

void TstSmpCtrl::aPressAsksForACaptureAlsoWithoutAnInstrument()
{
    const PanelDevice device(storage16Model);
    const SmpCtrl ctrl;
    QSignalSpy asked(&ctrl, &SmpCtrl::startAsked);
    QTest::mouseClick(ctrl.btnSingle, Qt::LeftButton);
    QCOMPARE(asked.size(), 1);
    QVERIFY(!gDev->isCapturing()); // that is for whoever is asked
}

void TstSmpCtrl::theStopButtonAsksForAStop()
{
    const PanelDevice device(analogModel);
    const SmpCtrl ctrl;
    QSignalSpy asked(&ctrl, &SmpCtrl::stopAsked);
    QTest::mouseClick(ctrl.btnStop, Qt::LeftButton);
    QCOMPARE(asked.size(), 1);
}

void TstSmpCtrl::autoAndNormalDoNothing()
{
    const PanelDevice device(analogModel);
    SmpCtrl ctrl;
    QSignalSpy asked(&ctrl, &SmpCtrl::startAsked);
    QTest::mouseClick(ctrl.btnAuto, Qt::LeftButton);
    ctrl.normalClickedSlot();
    QCOMPARE(asked.size(), 0);
    QVERIFY(ctrl.smpBar->isHidden());
}

void TstSmpCtrl::theBarIsShownFromZeroOnTheAnalogModelOnly()
{
    PanelDevice device(analogModel);
    {
        SmpCtrl ctrl;
        ctrl.setProgress(70);
        ctrl.beginProgress();
        QCOMPARE(ctrl.smpBar->value(), 0);
        QVERIFY(!ctrl.smpBar->isHidden());
        ctrl.hideProgress();
        QVERIFY(ctrl.smpBar->isHidden());
    }
    device.replace(storage16Model);
    SmpCtrl ctrl;
    ctrl.beginProgress();
    QVERIFY(ctrl.smpBar->isHidden());
}

void TstSmpCtrl::theBarsValueIsLimited()
{
    const PanelDevice device(analogModel);
    SmpCtrl ctrl;
    ctrl.setProgress(120);
    QCOMPARE(ctrl.smpBar->value(), 100);
    ctrl.setProgress(-3);
    QCOMPARE(ctrl.smpBar->value(), 0);
    ctrl.setProgress(55);
    QCOMPARE(ctrl.smpBar->value(), 55);
}

void TstSmpCtrl::everyControlHasANameAndIsReachedByTab()
{
    const PanelDevice device(analogModel);
    SmpCtrl ctrl;
    ctrl.show();
    QVERIFY(QTest::qWaitForWindowActive(&ctrl));
    ctrl.btnSingle->setFocus();
    for (MyButton *next : {ctrl.btnAuto, ctrl.btnStop}) {
        QTest::keyClick(ctrl.focusWidget(), Qt::Key_Tab);
        QCOMPARE(ctrl.focusWidget(), next);
    }
    for (const MyButton *button : {ctrl.btnSingle, ctrl.btnAuto, ctrl.btnStop}) {
        QVERIFY(!button->accessibleName().isEmpty());
        QVERIFY(!button->toolTip().isEmpty());
    }
    QCOMPARE(ctrl.btnSingle->toolTip(), QStringLiteral("Start a capture (F5)"));
}

QTEST_MAIN(TstSmpCtrl)
#include "tst_SmpCtrl.moc"
