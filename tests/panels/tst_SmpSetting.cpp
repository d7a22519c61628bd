#include "controls/Look.h"
#include "device/DeviceGlobals.h"
#include "panels/PanelDevice.h"
#include "panels/SmpSetting.h"

#include <QComboBox>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

#include <limits>

class TstSmpSetting : public QObject {
    Q_OBJECT
private slots:
    void theSampleTimeTakesItsUnitFromItsSize_data();
    void theSampleTimeTakesItsUnitFromItsSize();
    void theTimeGoesBeforeAClosingParenthesis_data();
    void theTimeGoesBeforeAClosingParenthesis();
    void theBoxesOfferWhatTheModelCan();
    void theBoxesShowTheDevicesChoice();
    void theLabelTellsTheTimeOfTheChoice();
    void aChangeOfTheDepthChangesDeviceAndLabelButNotTheRates();
    void aChangeOfTheRateIsTold();
    void aRefusedRateIsNotTold();
    void aRateThatTheDeviceLowersIsShown();
    void aRateMaySwitchChannelsOffWithoutANoticeHere();
    void aSettingOutlivesItsDevice();
    void everyControlHasANameAndIsReachedByTab();
    void theMarkOfADepthIsExplainedWhereItIsShown();
    void longTextsAreNotClipped_data();
    void longTextsAreNotClipped();
};

void TstSmpSetting::theSampleTimeTakesItsUnitFromItsSize_data()
{
    QTest::addColumn<qint64>("depth");
    QTest::addColumn<qint64>("rate");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, qint64 depth, qint64 rate, const char *text) {
        QTest::newRow(name) << depth << rate << QString::fromLatin1(text);
    };
    row("milliseconds", 2000000, 100000000, ": 20ms");
    row("one second", 1000, 1000, ": 1s");
    row("just below a second", 999, 1000, ": 999ms");
    row("one millisecond", 1, 1000, ": 1ms");
    row("just below a millisecond", 999, 1000000, ": 999us");
    row("below a microsecond", 1, 4000000, ": 0.25us");
    row("six digits", 10000000000, 24000000, ": 416.667s");
    row("long", 10000000000, 1000, ": 1e+07s");
    row("no depth", 0, 1000, ": 0us");
    row("no rate", 1000, 0, "");
    row("bad rate", 1000, -5, "");
}

void TstSmpSetting::theSampleTimeTakesItsUnitFromItsSize()
{
    QFETCH(qint64, depth);
    QFETCH(qint64, rate);
    QFETCH(QString, text);
    QCOMPARE(sampleTimeText(depth, rate), text);
}

void TstSmpSetting::theTimeGoesBeforeAClosingParenthesis_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("text");
    QTest::newRow("English") << QStringLiteral("Depth(Sample time)") << QStringLiteral("Depth(Sample time: 20ms)");
    QTest::newRow("German") << QStringLiteral("Tiefe (Abtastzeit)") << QStringLiteral("Tiefe (Abtastzeit: 20ms)");
    QTest::newRow("full width") << QStringLiteral("A\uff08B\uff09") << QStringLiteral("A\uff08B: 20ms\uff09");
    QTest::newRow("none") << QStringLiteral("Depth") << QStringLiteral("Depth: 20ms");
    QTest::newRow("not at the end") << QStringLiteral("Depth (time) now") << QStringLiteral("Depth (time) now: 20ms");
    QTest::newRow("parenthesis alone") << QStringLiteral(")") << QStringLiteral(": 20ms)");
    QTest::newRow("empty") << QString() << QStringLiteral(": 20ms");
}

void TstSmpSetting::theTimeGoesBeforeAClosingParenthesis()
{
    QFETCH(QString, label);
    QFETCH(QString, text);
    QCOMPARE(withPartInParenthesis(label, QStringLiteral(": 20ms")), text);
}

void TstSmpSetting::theBoxesOfferWhatTheModelCan()
{
    const PanelDevice device(storage16Model);
    const SmpSetting setting;
    const auto texts = [](const QComboBox *box) {
        QStringList list;
        for (int i = 0; i < box->count(); ++i) {
            list.append(box->itemText(i));
        }
        return list;
    };
    QCOMPARE(texts(setting.frequBox), gDev->smpFrequTexts());
    QCOMPARE(texts(setting.depthBox), gDev->smpDepthTexts());
    QVERIFY(setting.frequBox->count() > 1 && setting.depthBox->count() > 1);
    QCOMPARE(setting.frequBox->maxVisibleItems(), 20);
    QCOMPARE(setting.depthBox->maxVisibleItems(), 20);
}

void TstSmpSetting::theBoxesShowTheDevicesChoice()
{
    const PanelDevice device(storage16Model);
    QVERIFY(gDev->setSmpFrequIndex(3));
    QVERIFY(gDev->setSmpDepthIndex(2));
    const SmpSetting setting;
    QCOMPARE(setting.frequBox->currentIndex(), 3);
    QCOMPARE(setting.depthBox->currentIndex(), 2);
    QCOMPARE(gDev->smpFrequIndex, 3);
    QCOMPARE(gDev->smpDepthIndex, 2);
}

void TstSmpSetting::theLabelTellsTheTimeOfTheChoice()
{
    const PanelDevice device(storage16Model);
    const SmpSetting setting;
    const QString time = sampleTimeText(gDev->smpDepth(), gDev->smpFrequ());
    QVERIFY(!time.isEmpty());
    QCOMPARE(setting.depthLabel->text(), QStringLiteral("Depth(Sample time%1)").arg(time));
}

void TstSmpSetting::aChangeOfTheDepthChangesDeviceAndLabelButNotTheRates()
{
    const PanelDevice device(storage16Model);
    const SmpSetting setting;
    QSignalSpy told(&setting, &SmpSetting::frequViewChanged);
    const QString before = setting.depthLabel->text();
    const int rate = setting.frequBox->currentIndex();
    const int rates = setting.frequBox->count();
    const int other = setting.depthBox->currentIndex() == 0 ? 1 : 0;
    setting.depthBox->setCurrentIndex(other);
    QCOMPARE(gDev->smpDepthIndex, other);
    QVERIFY(setting.depthLabel->text() != before);
    QCOMPARE(setting.frequBox->currentIndex(), rate);
    QCOMPARE(setting.frequBox->count(), rates);
    QCOMPARE(told.size(), 0);
}

void TstSmpSetting::aChangeOfTheRateIsTold()
{
    const PanelDevice device(storage16Model);
    const SmpSetting setting;
    QSignalSpy told(&setting, &SmpSetting::frequViewChanged);
    const QString before = setting.depthLabel->text();
    const int other = setting.frequBox->currentIndex() == 0 ? 1 : 0;
    setting.frequBox->setCurrentIndex(other);
    QCOMPARE(gDev->smpFrequIndex, other);
    QCOMPARE(told.size(), 1);
    QVERIFY(setting.depthLabel->text() != before);
}

void TstSmpSetting::aRefusedRateIsNotTold()
{
    const PanelDevice device(storage16Model);
    SmpSetting setting;
    QSignalSpy told(&setting, &SmpSetting::frequViewChanged);
    setting.sampleFrequClickedSlot(-1);
    setting.sampleFrequClickedSlot(std::numeric_limits<int>::max());
    QCOMPARE(told.size(), 0);
}

void TstSmpSetting::aRateThatTheDeviceLowersIsShown()
{
    const PanelDevice device(streaming16Model);
    QVERIFY(gDev->setSmpFrequIndex(0));
    const SmpSetting setting;
    QSignalSpy told(&setting, &SmpSetting::frequViewChanged);
    QCOMPARE(setting.frequBox->currentIndex(), 0);
    gDev->setChnEnable(QVector<bool>(gDev->chnEnable.size(), true));
    QVERIFY(gDev->smpFrequIndex > 0);
    QCOMPARE(setting.frequBox->currentIndex(), gDev->smpFrequIndex);
    QCOMPARE(told.size(), 1);
    QVERIFY(setting.depthLabel->text().contains(sampleTimeText(gDev->smpDepth(), gDev->smpFrequ())));
}

void TstSmpSetting::aRateMaySwitchChannelsOffWithoutANoticeHere()
{
    const PanelDevice device(streaming16Model);
    const SmpSetting setting;
    const int rates = setting.frequBox->count();
    const int depth = setting.depthBox->currentIndex();
    QVERIFY(gDev->chnEnableCount() > 3);
    setting.frequBox->setCurrentIndex(0);
    QCOMPARE(gDev->chnEnableCount(), 3);
    QCOMPARE(setting.frequBox->count(), rates);
    QCOMPARE(setting.frequBox->currentIndex(), 0);
    QCOMPARE(setting.depthBox->currentIndex(), depth);
}

void TstSmpSetting::aSettingOutlivesItsDevice()
{
    PanelDevice device(streaming16Model);
    const SmpSetting setting;
    QSignalSpy told(&setting, &SmpSetting::frequViewChanged);
    device.replace(storage16Model);
    QVERIFY(gDev->setSmpFrequIndex(2));
    QCOMPARE(told.size(), 0);
}

void TstSmpSetting::everyControlHasANameAndIsReachedByTab()
{
    const PanelDevice device(storage16Model);
    SmpSetting setting;
    setting.show();
    QVERIFY(QTest::qWaitForWindowActive(&setting));
    QVERIFY(setting.depthBox->accessibleName().startsWith(QStringLiteral("Depth(Sample time")));
    QCOMPARE(setting.frequBox->accessibleName(), QStringLiteral("Speed(Sample rate)"));
    QVERIFY(!setting.frequBox->toolTip().isEmpty());
    QVERIFY(setting.depthBox->toolTip().startsWith(QStringLiteral("Samples of each channel")));
    setting.depthBox->setFocus();
    QTest::keyClick(setting.focusWidget(), Qt::Key_Tab);
    QCOMPARE(setting.focusWidget(), setting.frequBox);
}

void TstSmpSetting::longTextsAreNotClipped_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstSmpSetting::longTextsAreNotClipped()
{
    QFETCH(int, dpi);
    const PanelDevice device(storage16Model);
    globalsSetDpi(dpi);
    SmpSetting setting;
    QFont font = setting.font();
    font.setPixelSize(dp(13));
    setting.setFont(font);
    const QList<QLabel *> labels = setting.findChildren<QLabel *>();
    QCOMPARE(labels.size(), 2);
    for (QLabel *label : labels) {
        label->setText(label == setting.depthLabel ? QStringLiteral("Tiefe (Abtastzeit: 416.667s)")
                                                   : QStringLiteral("Geschwindigkeit (Abtastrate)"));
    }
    setting.resize(setting.sizeHint().width(), dp(44));
    setting.show();
    QCoreApplication::processEvents();
    QCOMPARE(setting.height(), dp(44)); // as high as the bar leaves it
    for (const QLabel *label : labels) {
        QVERIFY(label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
        QVERIFY(label->height() >= label->fontMetrics().height());
    }
    for (const QComboBox *box : {setting.depthBox, setting.frequBox}) {
        QVERIFY(box->height() >= box->fontMetrics().height() + 2);
        QVERIFY(box->geometry().bottom() < dp(44));
    }
    globalsSetDpi(96);
}

void TstSmpSetting::theMarkOfADepthIsExplainedWhereItIsShown()
{
    const QString plain = depthToolTip({QStringLiteral("50 M Samples")});
    const QString marked = depthToolTip({QStringLiteral("50 M Samples"), QStringLiteral("200 M* Samples")});
    QVERIFY(!plain.contains(QLatin1Char('*')));
    QVERIFY(marked.startsWith(plain + QStringLiteral("\n* ")));
    const PanelDevice device(storage16Model);
    const SmpSetting setting;
    QCOMPARE(setting.depthBox->toolTip(), depthToolTip(gDev->smpDepthTexts()));
    QVERIFY(setting.depthBox->toolTip().contains(QLatin1Char('*')));
    QCOMPARE(setting.frequBox->toolTip(), QStringLiteral("Samples per second of the next capture"));
}

QTEST_MAIN(TstSmpSetting)
#include "tst_SmpSetting.moc"
