#include "support/BoxCloser.h"
#include "wave/AChnParameterSet.h"
#include "wave/AnalogDesk.h"

#include <QPointer>
#include <QTimer>
#include <QtTest>

namespace {

const QString positionError = QStringLiteral("Trigger position setting failed.");

/// The mixed-signal model, closed and started once more with what was stored.
class TwoStarts {
public:
    TwoStarts() : m_first(std::make_unique<AnalogDesk>()) {}
    AnalogDesk &desk() { return *m_first; }
    AnalogDesk &next()
    {
        configSave(configPath());
        m_first.reset();
        resetProgram();
        m_first = std::make_unique<AnalogDesk>();
        return *m_first;
    }

private:
    std::unique_ptr<AnalogDesk> m_first;
};

} // namespace

class TstAnalogControls : public QObject {
    Q_OBJECT
private slots:
    void init();

    // A channel's settings.
    void theVoltsOfADivisionAreChosenAndStored_data();
    void theVoltsOfADivisionAreChosenAndStored();
    void storedVoltsThatAreNoEntryLeaveTheChoiceAndAreReplaced();
    void theProbeGoesRoundAndOnlyIsStored();
    void aStoredProbeIsShownByItsZeros_data();
    void aStoredProbeIsShownByItsZeros();
    void theMenuHoldsReverseAndCoupling();
    void groundIsOnlyAStoredValue();
    void theMenuOpensByEnterBelowItsButton();
    void aStoredCouplingThatIsNoneShowsTheNearest();
    void aChannelIsSwitchedOffAndOnWithTheDevice();
    void aChannelBeyondTheDevicesListChangesNoDevice();
    void theProbeGoesToNoOtherChannel();

    // The analog trigger.
    void anEdgeIsChosenAndTakenBack();
    void anAnalogEdgeTakesTheEdgesOffTheDigitalChannelsAndBack();
    void theChannelOfTheTriggerGoesRoundTwoWhateverTheModel();
    void theChosenEdgeMovesWithTheChannel();
    void theLevelIsTakenByEnterAndByTheArrows();
    void aLevelBeyondTheRangeIsNotTaken();
    void whatIsTypedIsTakenAtItsEndOnly();
    void withoutATriggerItsControlsAndItsFlagAreOff();
    void anEmptySensitivityReadsAsAHalf();
    void aSensitivityIsTakenByEnterAndClosesTheMenu();
    void aCommaIsTheDecimalPointOfASensitivity();
    void onlyASensitivityBelowOneCanBeTyped();
    void theWheelChangesNoFieldThatHasNotTheFocus();

    // The place of the trigger.
    void aPositionIsTaken_data();
    void aPositionIsTaken();
    void aRefusedPositionIsToldOnceAndTheDevicesIsShown_data();
    void aRefusedPositionIsToldOnceAndTheDevicesIsShown();
    void thePresentPositionWrittenOtherwiseIsShownAsItIs();
    void zeroingThePositionPassesTheCheckBy();
    void escapeGivesUpAnEdit();
    void theDeviceMayGoWhileARefusalIsTold_data();
    void theDeviceMayGoWhileARefusalIsTold();
    void anotherDeviceClosesTheMenusWithoutTakingWhatWasTyped();

    // The next start.
    void allComesBackAtTheNextStart();
};

void TstAnalogControls::init()
{
    QFile::remove(configPath());
    resetProgram();
    QCursor::setPos(5000, 5000);
}

// ---- a channel's settings

void TstAnalogControls::theVoltsOfADivisionAreChosenAndStored_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("millivolts");
    QTest::newRow("least") << "50mV/div" << 50;
    QTest::newRow("millivolts") << "500mV/div" << 500;
    QTest::newRow("volts") << "2V/div" << 2000;
    QTest::newRow("most") << "50V/div" << 50'000;
}

void TstAnalogControls::theVoltsOfADivisionAreChosenAndStored()
{
    QFETCH(QString, text);
    QFETCH(int, millivolts);
    AnalogDesk desk;
    QSignalSpy told(&desk.view, &MainView::aChnScaleChanged);
    AnalogDesk::choose(desk.part<QComboBox>(1, "volt"), text);
    QCOMPARE(gDev->aChnVoltDiv, (QVector<int>{1000, millivolts}));
    QCOMPARE(storedOfDevice("AChnVoltDiv"), QStringLiteral("1000,%1").arg(millivolts));
    QCOMPARE(desk.area().fullScaleMv(1), 10 * millivolts);
    QCOMPARE(desk.area().fullScaleMv(0), 10'000);
    QVERIFY(!told.isEmpty());
}

void TstAnalogControls::storedVoltsThatAreNoEntryLeaveTheChoiceAndAreReplaced()
{
    deviceSet(QStringLiteral("RV2720"), QStringLiteral("AChnVoltDiv"), QStringLiteral("123,2000"));
    const AnalogDesk desk;
    QCOMPARE(desk.part<QComboBox>(0, "volt")->currentText(), QStringLiteral("50mV/div"));
    QCOMPARE(desk.part<QComboBox>(1, "volt")->currentText(), QStringLiteral("2V/div"));
    QCOMPARE(gDev->aChnVoltDiv, (QVector<int>{50, 2000})); // what is shown is what the device has
}

void TstAnalogControls::theProbeGoesRoundAndOnlyIsStored()
{
    AnalogDesk desk;
    auto *probe = desk.part<QPushButton>(0, "probe");
    QCOMPARE(probe->text(), QStringLiteral("X1"));
    const int scale = desk.area().fullScaleMv(0);
    for (const auto &[text, factor] : {std::pair{"X10", 10}, std::pair{"X100", 100}, std::pair{"X1", 1}}) {
        QTest::ignoreMessage(QtDebugMsg, "???? > --- AChnProbe, update Y1Y2 information and VoltageDiv");
        AnalogDesk::pressKey(probe, Qt::Key_Return);
        QCOMPARE(probe->text(), QLatin1String(text));
        QVERIFY(probe->accessibleName().endsWith(QLatin1String(text)));
        QCOMPARE(gDev->aChnProbe.at(0), factor);
        QCOMPARE(storedOfDevice("AChnProbe"), QStringLiteral("%1,1").arg(factor));
    }
    QCOMPARE(desk.area().fullScaleMv(0), scale);
}

void TstAnalogControls::aStoredProbeIsShownByItsZeros_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("text");
    QTest::newRow("one") << "1"
                         << "X1";
    QTest::newRow("ten") << "10"
                         << "X10";
    QTest::newRow("a hundred") << "100"
                               << "X100";
    QTest::newRow("no multiple of ten") << "15"
                                        << "X1";
    QTest::newRow("a multiple of ten") << "250"
                                       << "X10";
    QTest::newRow("zero is a multiple of all") << "0"
                                               << "X100";
}

void TstAnalogControls::aStoredProbeIsShownByItsZeros()
{
    QFETCH(QString, stored);
    deviceSet(QStringLiteral("RV2720"), QStringLiteral("AChnProbe"), stored);
    const AnalogDesk desk;
    QTEST(desk.part<QPushButton>(0, "probe")->text(), "text");
}

void TstAnalogControls::theMenuHoldsReverseAndCoupling()
{
    AnalogDesk desk;
    AnalogDesk::clickOn(desk.part<QWidget>(1, "setting"));
    auto *menu = desk.part<MenuDialog>(1, "extend");
    QVERIFY(menu->isVisible());
    QCOMPARE(menu->findChild<QComboBox *>()->width(), dp(66));
    QTest::keyClick(menu->findChild<QCheckBox *>(), Qt::Key_Space);
    QCOMPARE(gDev->aChnReverse, (QVector<bool>{false, true}));
    QCOMPARE(storedOfDevice("AChnReverse"), QStringLiteral("0,1"));
    AnalogDesk::choose(menu->findChild<QComboBox *>(), QStringLiteral("DC"));
    QCOMPARE(gDev->aChnCouple, (QVector<int>{0, 1}));
    QTest::keyClick(menu, Qt::Key_Escape);
    QVERIFY(!menu->isVisible());
}

void TstAnalogControls::groundIsOnlyAStoredValue()
{
    AnalogDesk desk;
    desk.fill(
        1000, [](int, int) { return 25; }, capture().channels(16, 2));
    const QImage before = desk.picture();
    AnalogDesk::clickOn(desk.part<QWidget>(0, "setting"));
    auto *menu = desk.part<MenuDialog>(0, "extend");
    AnalogDesk::choose(menu->findChild<QComboBox *>(), QStringLiteral("GND"));
    menu->close();
    QCOMPARE(storedOfDevice("AChnCouple"), QStringLiteral("2,0"));
    QCOMPARE(desk.picture(), before);
}

void TstAnalogControls::theMenuOpensByEnterBelowItsButton()
{
    const AnalogDesk desk;
    auto *button = desk.part<QPushButton>(0, "setting");
    AnalogDesk::pressKey(button, Qt::Key_Return);
    auto *menu = desk.part<MenuDialog>(0, "extend");
    QVERIFY(menu->isVisible());
    QCOMPARE(menu->pos().x(), button->mapToGlobal(QPoint(0, 0)).x());
    QVERIFY(menu->findChild<QCheckBox *>()->hasFocus());
    menu->close();
}

void TstAnalogControls::aStoredCouplingThatIsNoneShowsTheNearest()
{
    deviceSet(QStringLiteral("RV2720"), QStringLiteral("AChnCouple"), QStringLiteral("7,-1"));
    const AnalogDesk desk;
    for (int chn = 0; chn < 2; ++chn) {
        AnalogDesk::clickOn(desk.part<QWidget>(chn, "setting"));
        auto *menu = desk.part<MenuDialog>(chn, "extend");
        QCOMPARE(menu->findChild<QComboBox *>()->currentText(), QLatin1String(chn == 0 ? "GND" : "AC"));
        menu->close();
    }
}

void TstAnalogControls::aChannelIsSwitchedOffAndOnWithTheDevice()
{
    AnalogDesk desk;
    auto *box = desk.part<QCheckBox>(1, "enable");
    QVERIFY(box->isChecked());
    const double ratio = desk.gen.ratioSasPix();
    AnalogDesk::pressKey(box, Qt::Key_Space);
    QCOMPARE(gDev->aChnEnable, (QVector<bool>{true, false}));
    QCOMPARE(storedOfDevice("AChnEnable"), QStringLiteral("1,0"));
    AnalogDesk::pressKey(box, Qt::Key_Space);
    QCOMPARE(gDev->aChnEnable, (QVector<bool>{true, true}));
    QCOMPARE(desk.gen.ratioSasPix(), ratio);
}

void TstAnalogControls::aChannelBeyondTheDevicesListChangesNoDevice()
{
    AnalogDesk desk;
    for (const int id : {-1, 2, 1000}) {
        for (const int type : {10, 11, 12, 13, 14, 15, 99}) {
            desk.view.slotChnSetChangedACH(type, id, 0);
        }
    }
    QCOMPARE(gDev->aChnEnable, (QVector<bool>{true, true}));
    QCOMPARE(desk.area().fullScaleMv(2), 0);
    QCOMPARE(desk.area().zeroY(-1), 0);
}

void TstAnalogControls::theProbeGoesToNoOtherChannel()
{
    const AnalogDesk desk;
    AnalogDesk::clickOn(desk.part<QWidget>(1, "probe"));
    QCOMPARE(desk.part<QPushButton>(0, "probe")->text(), QStringLiteral("X1"));
    QCOMPARE(gDev->aChnProbe, (QVector<int>{1, 10}));
}

// ---- the analog trigger

void TstAnalogControls::anEdgeIsChosenAndTakenBack()
{
    const AnalogDesk desk;
    auto *frame = desk.part<QWidget>("edges");
    auto *rising = frame->findChild<MyButton *>(QStringLiteral("btnPosEdge"));
    auto *falling = frame->findChild<MyButton *>(QStringLiteral("btnNegEdge"));
    AnalogDesk::clickOn(rising);
    QCOMPARE(gDev->aChnTrig, (QVector<int>{3, 0}));
    AnalogDesk::pressKey(falling, Qt::Key_Return);
    QCOMPARE(gDev->aChnTrig, (QVector<int>{4, 0}));
    QVERIFY(falling->selected && !rising->selected);
    AnalogDesk::clickOn(falling);
    QCOMPARE(gDev->aChnTrig, (QVector<int>{0, 0}));
    QVERIFY(!falling->selected);
    QCOMPARE(storedOfDevice("AChnTrig"), QStringLiteral("0,0"));
}

void TstAnalogControls::anAnalogEdgeTakesTheEdgesOffTheDigitalChannelsAndBack()
{
    const AnalogDesk desk;
    auto *digital = desk.sidebar(3).findChild<MyButton *>(QStringLiteral("btnNegEdge"));
    auto *analog = desk.part<QWidget>("edges")->findChild<MyButton *>(QStringLiteral("btnPosEdge"));
    AnalogDesk::clickOn(digital);
    AnalogDesk::clickOn(analog);
    QVERIFY(!digital->selected);
    QCOMPARE(gDev->chnTrig.at(3), 0);
    AnalogDesk::clickOn(digital);
    QVERIFY(!analog->selected);
    QCOMPARE(gDev->aChnTrig, (QVector<int>{0, 0}));
}

void TstAnalogControls::theChannelOfTheTriggerGoesRoundTwoWhateverTheModel()
{
    const AnalogDesk desk;
    auto *button = desk.part<QPushButton>("trigChannel");
    AnalogDesk::clickOn(button);
    QCOMPARE(button->text(), QStringLiteral("CH2"));
    QCOMPARE(storedOfDevice("ATrigChn"), QStringLiteral("1"));
    AnalogDesk::pressKey(button, Qt::Key_Return);
    QCOMPARE(button->text(), QStringLiteral("CH1"));
    QCOMPARE(storedOfDevice("ATrigChn"), QStringLiteral("0"));
    QVERIFY(button->accessibleName().endsWith(QStringLiteral("CH1")));
}

void TstAnalogControls::theChosenEdgeMovesWithTheChannel()
{
    const AnalogDesk desk;
    AnalogDesk::clickOn(desk.part<QWidget>("edges")->findChild<MyButton *>(QStringLiteral("btnNegEdge")));
    AnalogDesk::clickOn(desk.part<QWidget>("trigChannel"));
    QCOMPARE(gDev->aChnTrig, (QVector<int>{0, 4}));
}

void TstAnalogControls::theLevelIsTakenByEnterAndByTheArrows()
{
    AnalogDesk desk;
    auto *level = desk.part<QSpinBox>("trigLevel");
    const double ratio = desk.gen.ratioSasPix();
    AnalogDesk::type(level, QStringLiteral("-250"));
    QVERIFY(!level->hasFocus());
    QCOMPARE(storedOfDevice("ATrigValue"), QStringLiteral("-250"));
    AnalogDesk::pressKey(level, Qt::Key_Up);
    QCOMPARE(storedOfDevice("ATrigValue"), QStringLiteral("-249"));
    AnalogDesk::clickOn(desk.part<QWidget>("trigLevelZero"));
    QCOMPARE(storedOfDevice("ATrigValue"), QStringLiteral("0"));
    QCOMPARE(level->value(), 0);
    QCOMPARE(desk.gen.ratioSasPix(), ratio);
}

void TstAnalogControls::aLevelBeyondTheRangeIsNotTaken()
{
    AnalogDesk desk;
    auto *level = desk.part<QSpinBox>("trigLevel");
    AnalogDesk::type(level, QStringLiteral("99999"));
    QVERIFY(level->value() <= 32'767);
    QCOMPARE(storedOfDevice("ATrigValue"), QString::number(level->value()));
    deviceSet(gDev->name, QStringLiteral("ATrigValue"), QStringLiteral("-99999"));
    desk.view.rebuildChannels(*gDev);
    QCOMPARE(level->value(), -32'768);
}

void TstAnalogControls::whatIsTypedIsTakenAtItsEndOnly()
{
    const AnalogDesk desk;
    auto *level = desk.part<QSpinBox>("trigLevel");
    AnalogDesk::type(level, QStringLiteral("5"));
    level->setFocus();
    level->selectAll();
    QTest::keyClicks(level, QStringLiteral("100"));
    QCOMPARE(storedOfDevice("ATrigValue"), QStringLiteral("5"));
    desk.part<QWidget>("trigPosition")->setFocus();
    QCOMPARE(storedOfDevice("ATrigValue"), QStringLiteral("100"));
}

void TstAnalogControls::withoutATriggerItsControlsAndItsFlagAreOff()
{
    const AnalogDesk desk;
    auto *box = desk.part<QCheckBox>("trigEnable");
    QVERIFY(box->isChecked());
    QVERIFY(desk.trigTag()->isVisible());
    const auto controls = {"trigChannel", "trigLevel", "trigLevelZero", "trigPosition", "trigPositionZero"};
    AnalogDesk::pressKey(box, Qt::Key_Space);
    QCOMPARE(storedOfDevice("ATrigDisab"), QStringLiteral("1"));
    QVERIFY(!desk.trigTag()->isVisible());
    for (const char *name : controls) {
        QVERIFY2(!desk.part<QWidget>(name)->isEnabled(), name);
    }
    for (const MyButton *edge : desk.part<QWidget>("edges")->findChildren<MyButton *>()) {
        QVERIFY(!edge->isEnabled());
    }
    QVERIFY(desk.part<QWidget>("trigSetting")->isEnabled()); // the sensitivity may be set all the same
    AnalogDesk::pressKey(box, Qt::Key_Space);
    QCOMPARE(storedOfDevice("ATrigDisab"), QStringLiteral("0"));
    QVERIFY(desk.trigTag()->isVisible());
    QVERIFY(desk.part<QWidget>("trigLevel")->isEnabled());
}

void TstAnalogControls::anEmptySensitivityReadsAsAHalf()
{
    const AnalogDesk desk;
    QCOMPARE(storedOfDevice("ATrigSenstivity"), QString());
    AnalogDesk::clickOn(desk.part<QWidget>("trigSetting"));
    QCOMPARE(desk.part<QLineEdit>("sense")->text(), QStringLiteral("0.5"));
    QCOMPARE(desk.part<QLineEdit>("sense")->size(), QSize(dp(56), dp(21)));
    desk.part<MenuDialog>("trigExtend")->close();
}

void TstAnalogControls::aSensitivityIsTakenByEnterAndClosesTheMenu()
{
    const AnalogDesk desk;
    AnalogDesk::pressKey(desk.part<QWidget>("trigSetting"), Qt::Key_Return);
    auto *field = desk.part<QLineEdit>("sense");
    QVERIFY(field->hasFocus());
    QTest::keyClicks(field, QStringLiteral("0.25"));
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(storedOfDevice("ATrigSenstivity"), QStringLiteral("0.25"));
    QVERIFY(!desk.part<MenuDialog>("trigExtend")->isVisible());
    AnalogDesk::clickOn(desk.part<QWidget>("trigSetting"));
    QCOMPARE(field->text(), QStringLiteral("0.25"));
    desk.part<MenuDialog>("trigExtend")->close();
}

void TstAnalogControls::aCommaIsTheDecimalPointOfASensitivity()
{
    const AnalogDesk desk;
    AnalogDesk::clickOn(desk.part<QWidget>("trigSetting"));
    AnalogDesk::type(desk.part<QLineEdit>("sense"), QStringLiteral("0,25"));
    QCOMPARE(storedOfDevice("ATrigSenstivity"), QStringLiteral("0.25"));
}

void TstAnalogControls::onlyASensitivityBelowOneCanBeTyped()
{
    const AnalogDesk desk;
    AnalogDesk::clickOn(desk.part<QWidget>("trigSetting"));
    auto *field = desk.part<QLineEdit>("sense");
    QTest::keyClicks(field, QStringLiteral("1a0.x12345678"));
    QCOMPARE(field->text(), QStringLiteral("0.1234"));
    desk.part<MenuDialog>("trigExtend")->close();
}

void TstAnalogControls::theWheelChangesNoFieldThatHasNotTheFocus()
{
    AnalogDesk desk;
    for (const char *name : {"trigLevel", "volt"}) {
        auto *field = desk.part<QWidget>(name);
        field->clearFocus();
        const QPointF middle = field->rect().center();
        QWheelEvent event(middle, field->mapToGlobal(middle.toPoint()), {}, QPoint(0, 120), Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(field, &event);
    }
    QCOMPARE(desk.part<QSpinBox>("trigLevel")->value(), 0);
    QCOMPARE(desk.area().fullScaleMv(0), 10'000);
}

// ---- the place of the trigger

void TstAnalogControls::aPositionIsTaken_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("percent");
    QTest::newRow("least") << "0" << 0;
    QTest::newRow("most") << "99" << 99;
    QTest::newRow("between") << "50" << 50;
    QTest::newRow("with blanks") << " 30 " << 30;
}

void TstAnalogControls::aPositionIsTaken()
{
    QFETCH(QString, text);
    QFETCH(int, percent);
    const AnalogDesk desk;
    const BoxCloser closer;
    auto *field = desk.part<QLineEdit>("trigPosition");
    QCOMPARE(field->text(), QStringLiteral("5"));
    AnalogDesk::type(field, text);
    QCOMPARE(gDev->trgPosition, percent);
    QCOMPARE(storedOfDevice("trgPosition"), QString::number(percent));
    QCOMPARE(field->text(), QString::number(percent));
    QCOMPARE(closer.seen.count, 0);
}

void TstAnalogControls::thePresentPositionWrittenOtherwiseIsShownAsItIs()
{
    const AnalogDesk desk;
    const BoxCloser closer;
    auto *field = desk.part<QLineEdit>("trigPosition");
    for (const char *text : {"05", "+5", " 5 "}) {
        AnalogDesk::type(field, QLatin1String(text));
        QCOMPARE(field->text(), QStringLiteral("5"));
    }
    QCOMPARE(gDev->trgPosition, 5);
    QCOMPARE(closer.seen.count, 0);
}

void TstAnalogControls::aRefusedPositionIsToldOnceAndTheDevicesIsShown_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("above") << "100";
    QTest::newRow("below") << "-1";
    QTest::newRow("no number") << "half";
    QTest::newRow("nothing") << "";
    QTest::newRow("more than fits") << "99999999999999999999";
}

void TstAnalogControls::aRefusedPositionIsToldOnceAndTheDevicesIsShown()
{
    QFETCH(QString, text);
    const AnalogDesk desk;
    auto *field = desk.part<QLineEdit>("trigPosition");
    AnalogDesk::type(field, QStringLiteral("40"));
    const BoxCloser closer;
    field->setFocus();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.title, QStringLiteral("An error occurred"));
    QCOMPARE(closer.seen.text, positionError);
    QCOMPARE(closer.seen.icon, QMessageBox::Warning);
    QCOMPARE(closer.seen.button, QStringLiteral("Close"));
    QCOMPARE(gDev->trgPosition, 5); // what a refusal leaves
    QCOMPARE(field->text(), QStringLiteral("5"));
}

void TstAnalogControls::zeroingThePositionPassesTheCheckBy()
{
    const AnalogDesk desk;
    const BoxCloser closer;
    auto *field = desk.part<QLineEdit>("trigPosition");
    AnalogDesk::type(field, QStringLiteral("40"));
    AnalogDesk::pressKey(desk.part<QWidget>("trigPositionZero"), Qt::Key_Return);
    QCOMPARE(gDev->trgPosition, 0);
    QCOMPARE(storedOfDevice("trgPosition"), QStringLiteral("0"));
    QCOMPARE(field->text(), QStringLiteral("0"));
    QCOMPARE(closer.seen.count, 0);
}

void TstAnalogControls::escapeGivesUpAnEdit()
{
    const AnalogDesk desk;
    auto *field = desk.part<QLineEdit>("trigPosition");
    field->setFocus();
    QTest::keyClicks(field, QStringLiteral("4"));
    QTest::keyClick(field, Qt::Key_Escape);
    QCOMPARE(field->text(), QStringLiteral("5"));
    QCOMPARE(gDev->trgPosition, 5);
    QVERIFY(!field->hasFocus());
}

void TstAnalogControls::theDeviceMayGoWhileARefusalIsTold_data()
{
    QTest::addColumn<int>("model");
    QTest::newRow("for one without analog channels") << 0;
    QTest::newRow("for one of the same model") << analogModel;
}

void TstAnalogControls::theDeviceMayGoWhileARefusalIsTold()
{
    QFETCH(int, model);
    AnalogDesk desk;
    const BoxCloser closer;
    const QPointer<ItemAChnSidebar> former = desk.column();
    QTimer::singleShot(0, &desk.view, [&desk, model] { desk.replaceDevice(model); });
    AnalogDesk::type(desk.part<QLineEdit>("trigPosition"), QStringLiteral("100"));
    QCOMPARE(closer.seen.count, 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(former.isNull(), model != analogModel);
    QCOMPARE(desk.area().exists(), model == analogModel);
    if (model == analogModel) {
        QCOMPARE(desk.part<QLineEdit>("trigPosition")->text(), QStringLiteral("5"));
    }
}

void TstAnalogControls::anotherDeviceClosesTheMenusWithoutTakingWhatWasTyped()
{
    AnalogDesk desk;
    AnalogDesk::clickOn(desk.part<QWidget>("trigSetting"));
    QTest::keyClicks(desk.part<QLineEdit>("sense"), QStringLiteral("0.9"));
    desk.replaceDevice(analogModel);
    QVERIFY(!desk.part<MenuDialog>("trigExtend")->isVisible());
    QCOMPARE(storedOfDevice("ATrigSenstivity"), QString());
    AnalogDesk::clickOn(desk.part<QWidget>(0, "setting"));
    desk.replaceDevice(analogModel);
    QVERIFY(!desk.part<MenuDialog>(0, "extend")->isVisible());
}

// ---- the next start

void TstAnalogControls::allComesBackAtTheNextStart()
{
    TwoStarts starts;
    AnalogDesk &desk = starts.desk();
    AnalogDesk::clickOn(desk.part<QWidget>("edges")->findChild<MyButton *>(QStringLiteral("btnNegEdge")));
    AnalogDesk::clickOn(desk.part<QWidget>("trigChannel"));
    AnalogDesk::choose(desk.part<QComboBox>(1, "volt"), QStringLiteral("5V/div"));
    AnalogDesk::clickOn(desk.part<QWidget>(1, "probe"));
    AnalogDesk::clickOn(desk.part<QWidget>(1, "setting"));
    AnalogDesk::choose(desk.part<MenuDialog>(1, "extend")->findChild<QComboBox *>(), QStringLiteral("GND"));
    QTest::keyClick(desk.part<MenuDialog>(1, "extend")->findChild<QCheckBox *>(), Qt::Key_Space);
    desk.part<MenuDialog>(1, "extend")->close();
    AnalogDesk::pressKey(desk.part<QCheckBox>(0, "enable"), Qt::Key_Space);
    AnalogDesk::drag(desk.tag(1), -30);
    AnalogDesk::type(desk.part<QSpinBox>("trigLevel"), QStringLiteral("-4000"));
    AnalogDesk::type(desk.part<QLineEdit>("trigPosition"), QStringLiteral("60"));
    AnalogDesk::clickOn(desk.part<QWidget>("trigSetting"));
    AnalogDesk::type(desk.part<QLineEdit>("sense"), QStringLiteral("0.3"));
    const int zero = desk.area().zeroY(1);
    const int level = desk.trigTag()->centre();
    AnalogDesk::pressKey(desk.part<QCheckBox>("trigEnable"), Qt::Key_Space);

    AnalogDesk &next = starts.next();
    QCOMPARE(gDev->aChnTrig, (QVector<int>{0, 4}));
    QVERIFY(next.part<QWidget>("edges")->findChild<MyButton *>(QStringLiteral("btnNegEdge"))->selected);
    QCOMPARE(next.part<QPushButton>("trigChannel")->text(), QStringLiteral("CH2"));
    QCOMPARE(next.area().fullScaleMv(1), 50'000);
    QCOMPARE(next.part<QPushButton>(1, "probe")->text(), QStringLiteral("X10"));
    QCOMPARE(gDev->aChnReverse, (QVector<bool>{false, true}));
    QCOMPARE(gDev->aChnCouple, (QVector<int>{0, 2}));
    QVERIFY(!next.part<QCheckBox>(0, "enable")->isChecked());
    QVERIFY(!next.tag(0)->isVisible());
    QCOMPARE(next.area().zeroY(1), zero);
    QCOMPARE(next.part<QSpinBox>("trigLevel")->value(), -4000);
    QCOMPARE(next.part<QLineEdit>("trigPosition")->text(), QStringLiteral("60"));
    QVERIFY(!next.part<QCheckBox>("trigEnable")->isChecked());
    QVERIFY(!next.trigTag()->isVisible());
    AnalogDesk::pressKey(next.part<QCheckBox>("trigEnable"), Qt::Key_Space);
    QCOMPARE(next.trigTag()->centre(), level);
    AnalogDesk::clickOn(next.part<QWidget>("trigSetting"));
    QCOMPARE(next.part<QLineEdit>("sense")->text(), QStringLiteral("0.3"));
    next.part<MenuDialog>("trigExtend")->close();
}

QTEST_MAIN(TstAnalogControls)
#include "tst_AnalogControls.moc"
