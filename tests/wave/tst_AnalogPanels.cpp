// The words, looks and signals of the analog panels, each by itself: what AnalogControls does through the main view.

#include "wave/AChnParameterSet.h"
#include "wave/AChnTriggerSet.h"
#include "wave/AnalogColor.h"
#include "wave/AnalogDesk.h"

#include <QGroupBox>
#include <QLabel>
#include <QtTest>

namespace {

using Told = QList<QVariantList>;

QStringList entriesOf(const QComboBox &box)
{
    QStringList entries;
    for (int i = 0; i < box.count(); ++i) {
        entries << box.itemText(i);
    }
    return entries;
}

/// All texts of labels below `widget`.
QStringList labelsOf(const QWidget &widget)
{
    QStringList texts;
    for (const QLabel *label : widget.findChildren<QLabel *>()) {
        texts << label->text();
    }
    return texts;
}

/// One signal of the trigger's panel.
Told toldOnce(int type, const char *text)
{
    return {QVariantList{type, QString::fromLatin1(text)}};
}

/// What stands between the commas.
QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(','));
}

/// What a panel has told since the last call.
Told taken(QSignalSpy &spy)
{
    const Told told = spy;
    spy.clear();
    return told;
}

} // namespace

class TstAnalogPanels : public QObject {
    Q_OBJECT
private slots:
    void init();
    void aChannelsPanelHasItsNumberAndItsLists();
    void aChannelsPanelTellsTypeChannelAndValue();
    void aChannelsPanelTellsAllThatTheViewNeedsOnEachRebuild();
    void theTriggerPanelHasItsWordsAndToolTips();
    void theTriggerPanelTellsWhatHasChanged();
    void anEdgeThatIsTakenBackIsNotTold();
    void theMenusHaveTheirTitles();
    void theSidebarsNumberStandsOnTheLastColour();
    void aFlagIsAnArrowInTheColourOfItsChannel_data();
    void aFlagIsAnArrowInTheColourOfItsChannel();
    void theTriggersFlagTakesTheColourOfItsChannel();
    void overAFlagThePointerTellsThatItMovesUpAndDown();
};

void TstAnalogPanels::init()
{
    QFile::remove(configPath());
    resetProgram();
    QCursor::setPos(5000, 5000);
}

void TstAnalogPanels::aChannelsPanelHasItsNumberAndItsLists()
{
    const AnalogDesk desk;
    for (int chn = 0; chn < 2; ++chn) {
        QCOMPARE(desk.part<QLabel>(chn, "name")->text(), QStringLiteral("<%1>").arg(chn + 1));
        QCOMPARE(entriesOf(*desk.part<QComboBox>(chn, "volt")),
                 words("50mV/div,100mV/div,200mV/div,500mV/div,1V/div,2V/div,5V/div,10V/div,20V/div,50V/div"));
        QCOMPARE(desk.part<QComboBox>(chn, "volt")->currentText(), QStringLiteral("1V/div"));
        AnalogDesk::clickOn(desk.part<QWidget>(chn, "setting"));
        auto *menu = desk.part<MenuDialog>(chn, "extend");
        QCOMPARE(entriesOf(*menu->findChild<QComboBox *>()), words("AC,DC,GND"));
        menu->close();
    }
}

void TstAnalogPanels::aChannelsPanelTellsTypeChannelAndValue()
{
    const AnalogDesk desk;
    auto *panel = desk.part<AChnParameterSet>("aChn1");
    QSignalSpy spy(panel, &AChnParameterSet::chnSetChanged);
    AnalogDesk::clickOn(desk.part<QWidget>(1, "enable"));
    QCOMPARE(taken(spy), (Told{{10, 1, 0}}));
    AnalogDesk::clickOn(desk.part<QWidget>(1, "enable"));
    QCOMPARE(taken(spy), (Told{{10, 1, 1}}));
    for (const int factor : {10, 100, 1}) {
        AnalogDesk::clickOn(desk.part<QWidget>(1, "probe"));
        QCOMPARE(taken(spy), (Told{{11, 1, factor}}));
    }
    desk.part<QComboBox>(1, "volt")->setCurrentText(QStringLiteral("200mV/div"));
    QCOMPARE(taken(spy), (Told{{13, 1, 2000}}));

    AnalogDesk::clickOn(desk.part<QWidget>(1, "setting"));
    auto *menu = desk.part<MenuDialog>(1, "extend");
    QTest::keyClick(menu->findChild<QCheckBox *>(), Qt::Key_Space);
    QCOMPARE(taken(spy), (Told{{12, 1, 1}}));
    QTest::keyClick(menu->findChild<QCheckBox *>(), Qt::Key_Space);
    QCOMPARE(taken(spy), (Told{{12, 1, 0}}));
    AnalogDesk::choose(menu->findChild<QComboBox *>(), QStringLiteral("GND"));
    QCOMPARE(taken(spy), Told()); // the coupling is only stored
    menu->close();
}

void TstAnalogPanels::aChannelsPanelTellsAllThatTheViewNeedsOnEachRebuild()
{
    deviceSet(QStringLiteral("RV2720"), QStringLiteral("AChnVoltDiv"), QStringLiteral("1000,5000"));
    deviceSet(QStringLiteral("RV2720"), QStringLiteral("AChnEnable"), QStringLiteral("1,0"));
    AnalogDesk desk;
    QSignalSpy spy(desk.part<AChnParameterSet>("aChn1"), &AChnParameterSet::chnSetChanged);
    desk.view.rebuildChannels(*gDev);
    QCOMPARE(taken(spy), (Told{{10, 1, 0}, {13, 1, 50'000}}));
}

void TstAnalogPanels::theTriggerPanelHasItsWordsAndToolTips()
{
    const AnalogDesk desk;
    const auto *panel = desk.part<AChnTriggerSet>("aChnTrigger");
    QCOMPARE(desk.part<QCheckBox>("trigEnable")->text(), QStringLiteral("Trigger"));
    const QStringList labels = labelsOf(*panel);
    for (const char *text : {"V:", "mV", "H:", "%"}) {
        QVERIFY2(labels.contains(QLatin1String(text)), text);
    }
    const auto *level = desk.part<QSpinBox>("trigLevel");
    QCOMPARE(level->minimum(), -32768);
    QCOMPARE(level->maximum(), 32767);
    QCOMPARE(level->singleStep(), 1);
    QCOMPARE(level->toolTip(), QStringLiteral("Number between -32768 and 32767."));
    QCOMPARE(desk.part<QLineEdit>("trigPosition")->toolTip(), QStringLiteral("Number between 0 and 100."));
    for (const char *zero : {"trigLevelZero", "trigPositionZero"}) {
        QCOMPARE(desk.part<QPushButton>(zero)->toolTip(), QStringLiteral("Reset to Zero"));
        QVERIFY(!desk.part<QPushButton>(zero)->icon().isNull());
    }
    QVector<int> codes;
    for (const MyButton *edge : desk.part<QWidget>("edges")->findChildren<MyButton *>()) {
        codes << edge->value;
    }
    QCOMPARE(codes, (QVector<int>{3, 4}));
}

void TstAnalogPanels::theTriggerPanelTellsWhatHasChanged()
{
    const AnalogDesk desk;
    QSignalSpy spy(desk.part<AChnTriggerSet>("aChnTrigger"), &AChnTriggerSet::aChnTrigSetChanged);
    AnalogDesk::clickOn(desk.part<QWidget>("trigEnable"));
    QCOMPARE(taken(spy), toldOnce(0, "false"));
    AnalogDesk::clickOn(desk.part<QWidget>("trigEnable"));
    QCOMPARE(taken(spy), toldOnce(0, "true"));
    AnalogDesk::clickOn(desk.part<QWidget>("trigChannel"));
    QCOMPARE(taken(spy), toldOnce(2, "1"));
    AnalogDesk::clickOn(desk.part<QWidget>("edges")->findChild<MyButton *>(QStringLiteral("btnPosEdge")));
    QCOMPARE(taken(spy), toldOnce(1, "1"));
    AnalogDesk::clickOn(desk.part<QWidget>("trigChannel"));
    QCOMPARE(taken(spy), toldOnce(2, "0"));
    AnalogDesk::type(desk.part<QSpinBox>("trigLevel"), QStringLiteral("70"));
    const Told level = taken(spy); // of the value, and of the end of the edit
    QVERIFY(!level.isEmpty());
    for (const QVariantList &one : level) {
        QCOMPARE(Told{one}, toldOnce(3, ""));
    }
    AnalogDesk::clickOn(desk.part<QWidget>("trigLevelZero"));
    QCOMPARE(taken(spy), toldOnce(3, ""));
    AnalogDesk::clickOn(desk.part<QWidget>("trigSetting"));
    AnalogDesk::type(desk.part<QLineEdit>("sense"), QStringLiteral("0.75"));
    QCOMPARE(taken(spy), toldOnce(4, "0.75"));
}

void TstAnalogPanels::anEdgeThatIsTakenBackIsNotTold()
{
    const AnalogDesk desk;
    auto *falling = desk.part<QWidget>("edges")->findChild<MyButton *>(QStringLiteral("btnNegEdge"));
    AnalogDesk::clickOn(falling);
    QSignalSpy spy(desk.part<AChnTriggerSet>("aChnTrigger"), &AChnTriggerSet::aChnTrigSetChanged);
    AnalogDesk::clickOn(falling);
    QCOMPARE(taken(spy), Told());
    QCOMPARE(gDev->aChnTrig, (QVector<int>{0, 0}));
}

void TstAnalogPanels::theMenusHaveTheirTitles()
{
    const AnalogDesk desk;
    AnalogDesk::clickOn(desk.part<QWidget>(0, "setting"));
    auto *channel = desk.part<MenuDialog>(0, "extend");
    QCOMPARE(channel->findChild<QGroupBox *>()->title(), QStringLiteral("  Chn Set  "));
    QCOMPARE(labelsOf(*channel->findChild<QGroupBox *>()), words("Reverse:,Coupling:"));
    channel->close();
    AnalogDesk::clickOn(desk.part<QWidget>("trigSetting"));
    auto *trigger = desk.part<MenuDialog>("trigExtend");
    QCOMPARE(trigger->findChild<QGroupBox *>()->title(), QStringLiteral("  Trigger Set  "));
    QCOMPARE(labelsOf(*trigger->findChild<QGroupBox *>()), words("Sensitivity:,div"));
    QCOMPARE(desk.part<QLineEdit>("sense")->toolTip(), QStringLiteral("Number between 0.0 and 1.0."));
    trigger->close();
}

void TstAnalogPanels::theSidebarsNumberStandsOnTheLastColour()
{
    const AnalogDesk desk;
    const auto *number = desk.column()->findChild<QLabel *>(QStringLiteral("number"), Qt::FindDirectChildrenOnly);
    QCOMPARE(number->width(), dp(18));
    const QImage sidebar = desk.column()->grab().toImage();
    QCOMPARE(sidebar.pixel(1, desk.height() / 2), gChnColors.last().rgb());
    QCOMPARE(sidebar.pixel(dp(18) - 1, desk.height() / 2), gChnColors.last().rgb());
    QVERIFY(sidebar.pixel(dp(18), desk.height() / 2) != gChnColors.last().rgb());
}

void TstAnalogPanels::aFlagIsAnArrowInTheColourOfItsChannel_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstAnalogPanels::aFlagIsAnArrowInTheColourOfItsChannel()
{
    QFETCH(int, dpi);
    resetProgram(dpi);
    const AnalogDesk desk({dp(1190), dp(800)});
    const int side = dp(11);
    for (int chn = 0; chn < 2; ++chn) {
        const QRgb color = gChnColors[chn].lighter(120).rgb();
        QCOMPARE(desk.tag(chn)->size(), QSize(side, side));
        const QImage flag = desk.tag(chn)->grab().toImage();
        QCOMPARE(flag.pixel(0, 0), color); // a square ...
        QCOMPARE(flag.pixel(0, side - 1), color);
        QCOMPARE(flag.pixel(side - 1, (side - 1) / 2), color); // ... with a point to the right
        QVERIFY(flag.pixel(side - 1, 0) != color);
        QVERIFY(flag.pixel(side - 1, side - 1) != color);
        // Sharp: one colour besides the ground's.
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                const QRgb pixel = flag.pixel(x, y);
                QVERIFY(pixel == color || pixel == flag.pixel(side - 1, 0));
            }
        }
    }
}

void TstAnalogPanels::theTriggersFlagTakesTheColourOfItsChannel()
{
    const AnalogDesk desk;
    const auto colorOf = [](AChnTAG *flag) { return flag->grab().toImage().pixel(flag->width() / 2, 5); };
    QCOMPARE(colorOf(desk.trigTag()), aChnColor(0).rgb());
    AnalogDesk::clickOn(desk.part<QWidget>("trigChannel"));
    QCOMPARE(colorOf(desk.trigTag()), aChnColor(1).rgb());
}

void TstAnalogPanels::overAFlagThePointerTellsThatItMovesUpAndDown()
{
    const AnalogDesk desk;
    for (AChnTAG *flag : {desk.tag(0), desk.tag(1), desk.trigTag()}) {
        QEvent enter(QEvent::Enter);
        QCoreApplication::sendEvent(flag, &enter);
        QCOMPARE(flag->cursor().shape(), Qt::SizeVerCursor);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(flag, &leave);
        QCOMPARE(flag->cursor().shape(), Qt::ArrowCursor);
    }
}

QTEST_MAIN(TstAnalogPanels)
#include "tst_AnalogPanels.moc"
