#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DeviceGlobals.h"
#include "panels/PanelDevice.h"
#include "panels/SmpCtrl.h"
#include "panels/SmpSetting.h"
#include "panels/Toolbar.h"
#include "panels/VthSetting.h"
#include "wave/SmpZoom.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPointer>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>

class TstToolbar : public QObject {
    Q_OBJECT
private slots:
    void itIsAFixedBarInTheWindowsShade_data();
    void itIsAFixedBarInTheWindowsShade();
    void theGroupsStandInTheirOrder();
    void zoomsAndRatesArePassedOn();
    void reloadBuildsEverythingAnewAndTellsTheRate();
    void afterAReplacementNothingKnowsTheOldDevice();
    void theGroupsFollowTheModel();
    void onlyModelsWithThresholdsOfferThem();
    void f5AsksForACaptureAlsoFromAComboBox();
    void aBarThatWasBuiltAnewStillAsks();
    void theShownRatioComesBackAfterAReload();
    void everyControlIsReachedByTabInReadingOrder();
};

void TstToolbar::itIsAFixedBarInTheWindowsShade_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstToolbar::itIsAFixedBarInTheWindowsShade()
{
    QFETCH(int, dpi);
    const PanelDevice device(storage16Model);
    globalsSetDpi(dpi);
    Toolbar bar;
    bar.resize(dp(900), bar.height());
    QCOMPARE(bar.minimumHeight(), dp(48));
    QCOMPARE(bar.maximumHeight(), dp(48));
    QCOMPARE(bar.contentsMargins(), QMargins(dp(2), dp(2), dp(2), dp(2)));
    const QImage image = bar.grab().toImage();
    QCOMPARE(image.pixelColor(0, 0), gGreys[5]);
    QCOMPARE(image.pixelColor(image.width() - 2, image.height() / 2), gGreys[5]);
    globalsSetDpi(96);
}

void TstToolbar::theGroupsStandInTheirOrder()
{
    const PanelDevice device(storage16Model);
    Toolbar bar;
    bar.resize(900, bar.height());
    bar.show();
    QCoreApplication::processEvents();
    QCOMPARE(bar.layout->spacing(), 8);
    QCOMPARE(bar.layout->contentsMargins(), QMargins(0, 0, 0, 0));
    QVERIFY(bar.smpSetting->geometry().right() < bar.vthSetting->x());
    QVERIFY(bar.vthSetting->geometry().right() < bar.smpCtrl->x());
    QVERIFY(bar.smpCtrl->geometry().right() < bar.smpZoom->x());
    QVERIFY(bar.smpZoom->geometry().right() < bar.width());
}

void TstToolbar::zoomsAndRatesArePassedOn()
{
    const PanelDevice device(storage16Model);
    Toolbar bar;
    QSignalSpy zooms(&bar, &Toolbar::zoomValued);
    QSignalSpy rates(&bar, &Toolbar::frequViewChanged);
    bar.smpZoom->slotZoomOut();
    QCOMPARE(zooms.size(), 1);
    QCOMPARE(zooms.at(0).at(0).toString(), QStringLiteral("Out"));
    bar.smpSetting->frequBox->setCurrentIndex(gDev->smpFrequIndex == 0 ? 1 : 0);
    QCOMPARE(rates.size(), 1);
}

void TstToolbar::reloadBuildsEverythingAnewAndTellsTheRate()
{
    const PanelDevice device(storage16Model);
    Toolbar bar;
    const QPointer<QObject> setting = bar.smpSetting;
    const QPointer<QObject> thresholds = bar.vthSetting;
    const QPointer<QObject> ctrl = bar.smpCtrl;
    const QPointer<QObject> zoom = bar.smpZoom;
    QSignalSpy rates(&bar, &Toolbar::frequViewChanged);
    bar.reload();
    QVERIFY(setting.isNull() && thresholds.isNull() && ctrl.isNull() && zoom.isNull());
    QCOMPARE(rates.size(), 1);
    QCOMPARE(bar.findChildren<SmpSetting *>().size(), 1);
    QCOMPARE(bar.findChildren<VthSetting *>().size(), 1);
    QCOMPARE(bar.findChildren<SmpCtrl *>().size(), 1);
    QCOMPARE(bar.findChildren<SmpZoom *>().size(), 1);
}

void TstToolbar::afterAReplacementNothingKnowsTheOldDevice()
{
    PanelDevice device(streaming16Model);
    Toolbar bar;
    QSignalSpy rates(&bar, &Toolbar::frequViewChanged);
    device.replace(storage16Model);
    bar.reload();
    QCOMPARE(rates.size(), 1);
    QCOMPARE(bar.smpSetting->frequBox->count(), gDev->smpFrequTexts().size());
    const int other = gDev->smpFrequIndex == 2 ? 3 : 2;
    bar.smpSetting->frequBox->setCurrentIndex(other);
    QCOMPARE(gDev->smpFrequIndex, other);
    QCOMPARE(rates.size(), 2);
}

void TstToolbar::theGroupsFollowTheModel()
{
    PanelDevice device(analogModel);
    Toolbar bar;
    QVERIFY(bar.smpCtrl->btnStop);
    device.replace(storage16Model);
    bar.reload();
    QVERIFY(!bar.smpCtrl->btnStop);
}

void TstToolbar::onlyModelsWithThresholdsOfferThem()
{
    PanelDevice device(storage16Model);
    Toolbar bar;
    const QMap<int, int> rows{{0, 1}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 1}, {6, 1}, {7, 1}, {8, 1}, {9, 2}, {97, 1}};
    for (auto row = rows.cbegin(); row != rows.cend(); ++row) {
        device.replace(row.key());
        bar.reload();
        QCOMPARE(bar.vthSetting != nullptr ? bar.vthSetting->labels.size() : 0, row.value());
        QCOMPARE(bar.findChildren<VthSetting *>().size(), row.value() > 0 ? 1 : 0);
    }
}

void TstToolbar::f5AsksForACaptureAlsoFromAComboBox()
{
    const PanelDevice device(storage16Model);
    QWidget window;
    Toolbar bar(&window);
    auto *shortcut = new QShortcut(QKeySequence(Qt::Key_F5), &window);
    connect(shortcut, &QShortcut::activated, &bar, &Toolbar::slotShortcutF5);
    window.resize(900, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    bar.smpSetting->depthBox->setFocus();
    QVERIFY(bar.smpSetting->depthBox->hasFocus());
    QSignalSpy asked(&bar, &Toolbar::startAsked);
    QTest::keyClick(bar.smpSetting->depthBox, Qt::Key_F5);
    QCOMPARE(asked.size(), 1);
}

void TstToolbar::aBarThatWasBuiltAnewStillAsks()
{
    PanelDevice device(storage16Model);
    Toolbar bar;
    device.replace(analogModel);
    bar.reload();
    QSignalSpy starts(&bar, &Toolbar::startAsked);
    QSignalSpy stops(&bar, &Toolbar::stopAsked);
    bar.smpCtrl->btnSingle->click();
    bar.smpCtrl->btnStop->click();
    QCOMPARE(starts.size(), 1);
    QCOMPARE(stops.size(), 1);
}

void TstToolbar::theShownRatioComesBackAfterAReload()
{
    const PanelDevice device(storage16Model);
    Toolbar bar;
    bar.showRatio(12.5);
    QCOMPARE(bar.smpZoom->findChild<QLineEdit *>()->text(), QStringLiteral("12.5"));
    bar.reload();
    QCOMPARE(bar.smpZoom->findChild<QLineEdit *>()->text(), QStringLiteral("12.5"));
}

void TstToolbar::everyControlIsReachedByTabInReadingOrder()
{
    const PanelDevice device(storage16Model);
    Toolbar bar;
    bar.resize(900, bar.height());
    bar.reload();
    bar.show();
    QVERIFY(QTest::qWaitForWindowActive(&bar));
    QWidgetList expected{bar.smpSetting->depthBox, bar.smpSetting->frequBox, bar.vthSetting->levelBoxes.at(0),
                         bar.smpCtrl->btnSingle};
    const QList<MyButton *> zooms = bar.smpZoom->findChildren<MyButton *>();
    for (MyButton *button : zooms) {
        expected.append(button);
    }
    expected.append(bar.smpZoom->findChild<QLineEdit *>());
    expected.first()->setFocus();
    for (int i = 1; i < expected.size(); ++i) {
        QTest::keyClick(bar.focusWidget(), Qt::Key_Tab);
        QCOMPARE(bar.focusWidget(), expected[i]);
    }
}

QTEST_MAIN(TstToolbar)
#include "tst_Toolbar.moc"
