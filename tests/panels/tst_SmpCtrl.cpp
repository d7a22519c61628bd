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
    void aPressStartsACaptureAlsoWithoutAnInstrument();
    void stopEndsTheCapture();
    void theStopButtonAsksForAStop();
    void autoAndNormalDoNothing();
    void theBarIsShownFromZeroOnTheAnalogModelOnly();
    void theBarsValueIsLimited();
    void everyControlHasANameAndIsReachedByTab();
};

namespace {
/// What a capture has told so far.
struct Watch : QObject {
    Watch()
    {
        connect(gDev, &DevBase::sigSmpSta, this, [this](int sta, int, int) { last = sta; });
        connect(gDev, &DevBase::sigSmpDataReady, this, [this] { ready = true; });
    }
    int last = -1;
    bool ready = false;
};
} // namespace

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

void TstSmpCtrl::aPressStartsACaptureAlsoWithoutAnInstrument()
{
    const PanelDevice device(storage16Model);
    QVERIFY(gDev->setSmpDepthIndex(0));
    const SmpCtrl ctrl;
    const Watch watch;
    QTest::mouseClick(ctrl.btnSingle, Qt::LeftButton);
    QTRY_VERIFY(watch.ready);
    QCOMPARE(gDev->smpData->sampleCount(), gDev->smpDepth());
}

void TstSmpCtrl::stopEndsTheCapture()
{
    const PanelDevice device(storage16Model);
    QVERIFY(gDev->setSmpFrequIndex(gDev->smpFrequs.size() - 1));
    QVERIFY(gDev->setSmpDepthIndex(3)); // longer than anyone waits
    SmpCtrl ctrl;
    const Watch watch;
    ctrl.singleClickedSlot();
    QTRY_VERIFY(watch.last == 3); // sampling
    QVERIFY(!watch.ready);
    ctrl.stopClickedSlot();
    QTRY_VERIFY(watch.ready);
    QVERIFY(gDev->smpData->sampleCount() < gDev->smpDepth());
}

void TstSmpCtrl::theStopButtonAsksForAStop()
{
    const PanelDevice device(analogModel);
    const SmpCtrl ctrl;
    QVERIFY(!gDev->smpStop.load());
    QTest::mouseClick(ctrl.btnStop, Qt::LeftButton);
    QVERIFY(gDev->smpStop.load());
}

void TstSmpCtrl::autoAndNormalDoNothing()
{
    const PanelDevice device(analogModel);
    SmpCtrl ctrl;
    QSignalSpy starts(gDev, &DevBase::sigCaptureStarts);
    QTest::mouseClick(ctrl.btnAuto, Qt::LeftButton);
    ctrl.normalClickedSlot();
    QCOMPARE(starts.size(), 0);
    QVERIFY(ctrl.smpBar->isHidden());
}

void TstSmpCtrl::theBarIsShownFromZeroOnTheAnalogModelOnly()
{
    PanelDevice device(analogModel);
    QVERIFY(gDev->setSmpDepthIndex(0));
    {
        SmpCtrl ctrl;
        const Watch watch;
        ctrl.setProgress(70);
        ctrl.singleClickedSlot();
        QCOMPARE(ctrl.smpBar->value(), 0);
        QVERIFY(!ctrl.smpBar->isHidden());
        ctrl.hideProgress();
        QVERIFY(ctrl.smpBar->isHidden());
        QTRY_VERIFY(watch.ready);
    }
    device.replace(storage16Model);
    QVERIFY(gDev->setSmpDepthIndex(0));
    SmpCtrl ctrl;
    const Watch watch;
    ctrl.singleClickedSlot();
    QVERIFY(ctrl.smpBar->isHidden());
    QTRY_VERIFY(watch.ready);
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
