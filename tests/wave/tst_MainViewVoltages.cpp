#include "wave/AChnParameterSet.h"
#include "wave/AChnTAG.h"
#include "wave/AChnTiggerTAG.h"
#include "wave/CursorMarker.h"
#include "wave/MarkerDesk.h"

#include <QComboBox>
#include <QGraphicsView>
#include <QShortcut>
#include <QtTest>

namespace {

constexpr int analogModel = 97;
constexpr QSize deskSize(1190, 800);
constexpr double defaultFullScale = 10000.0; ///< millivolts: ten divisions of 1 V

} // namespace

/// The voltage markers in the main view: what the pointer and the keys do to them.
class TstMainViewVoltages : public QObject {
    Q_OBJECT
private slots:
    void init();

    void aMarkerFollowsThePointerInTheAreaAndAClickLaysItDown();
    void aRightClickTakesTheFollowingMarkerOff();
    void theMiddleButtonLeavesTheFollowingMarker();
    void overTheRowsTheMarkerStaysAndAClickZooms();
    void aDragPansAndDoesNotLayTheMarkerDown();
    void enterLaysTheMarkerDown_data();
    void enterLaysTheMarkerDown();
    void enterIsTheFocusedControlsWhileNoMarkerFollows();
    void thePointerBrightensAMarkerOneStrokeAround();
    void anyButtonTakesUpTheMarkerUnderThePointer_data();
    void anyButtonTakesUpTheMarkerUnderThePointer();
    void leavingTheViewLeavesAMarkerPlain();
    void theShapeOfThePointerTellsThatAMarkerCanBeMoved();
    void withShiftBothMarkersMove();
    void shiftAndArrowsMoveTheMarkerThatWasTouchedLast();
    void aTimingMarkerInTheWayDoesNotHoldTheMarkerUp();
    void aFollowingTimingMarkerIsLaidDownFirst();
    void withoutACaptureTheMarkersWorkAllTheSame();
    void anotherModelTakesTheMarkersAway();
    void aResizedViewKeepsTheMarkersShare();
    void aMarkerOnTheZeroLevelReadsNoVoltageAndAboveItAPositiveOne();
    void anotherVoltsPerDivisionIsReadAtOnce();
    void aZeroLevelThatMovesIsReadAtOnce();
    void anotherChannelIsReadAtOnceByItsScale();

private:
    /// The main view of the analog model, whose area is `height` high.
    struct Desk : MarkerDesk {
        explicit Desk(QSize size = deskSize) : MarkerDesk(analogModel, size)
        {
            QObject::connect(&view, &MainView::voltageMarkerValueChanged, &view,
                             [this](const QStringList &told) { values = told; });
        }
        [[nodiscard]] const CursorMarker &line(int id) const
        {
            const auto all = items<CursorMarker>();
            const auto found =
                std::find_if(all.begin(), all.end(), [id](const auto *each) { return each->id() == id; });
            return **found;
        }
        [[nodiscard]] MarkerState lineState(int id) const { return line(id).markerState(); }
        [[nodiscard]] int areaHeight() const { return line(0).refHeight; }
        void callLine(int id) { view.slotVoltageMarkerClicked(id); }
        void lay(int id, int y)
        {
            callLine(id);
            click(300, y);
        }
        [[nodiscard]] Qt::CursorShape shape() const { return waves->viewport()->cursor().shape(); }

        /// The voltage that a marker reads, millivolts.
        [[nodiscard]] double voltage(int id) const
        {
            const QString &text = values.at(id);
            return text.endsWith(QStringLiteral("mV")) ? text.left(text.size() - 2).toDouble()
                                                       : text.left(text.size() - 1).toDouble() * 1000.0;
        }
        [[nodiscard]] QComboBox *voltsPerDivision(int chn) const
        {
            return view.findChildren<AChnParameterSet *>().at(chn)->findChild<QComboBox *>();
        }
        [[nodiscard]] AChnTAG *zeroFlag(int chn) const
        {
            for (AChnTAG *flag : view.findChildren<AChnTAG *>()) {
                if (flag->channel() == chn && qobject_cast<AChnTiggerTAG *>(flag) == nullptr) {
                    return flag;
                }
            }
            return nullptr;
        }

        QStringList values;
    };
};

void TstMainViewVoltages::init()
{
    resetProgram();
    QCursor::setPos(5000, 5000);
}

void TstMainViewVoltages::aMarkerFollowsThePointerInTheAreaAndAClickLaysItDown()
{
    Desk desk;
    desk.load(squareWave());
    desk.callLine(0);
    desk.move(300, 100);
    QCOMPARE(desk.lineState(0), MarkerState::following);
    QCOMPARE(desk.line(0).position, 100);
    desk.move(310, 120);
    QCOMPARE(desk.line(0).position, 120);
    desk.press(310, 120);
    desk.release(310, 120);
    QCOMPARE(desk.lineState(0), MarkerState::placed);
    desk.move(310, 160);
    QCOMPARE(desk.line(0).position, 120);
    QVERIFY(desk.zooms.isEmpty());
    QVERIFY(desk.values.at(0) != QStringLiteral("###"));
    QCOMPARE(desk.values.mid(1), (QStringList{QStringLiteral("###"), QStringLiteral("###")}));
}

void TstMainViewVoltages::aRightClickTakesTheFollowingMarkerOff()
{
    Desk desk;
    desk.load(squareWave());
    desk.callLine(1);
    desk.click(300, 100, Qt::RightButton);
    QCOMPARE(desk.lineState(1), MarkerState::off);
    QCOMPARE(desk.values.count(QStringLiteral("###")), 3);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainViewVoltages::theMiddleButtonLeavesTheFollowingMarker()
{
    Desk desk;
    desk.load(squareWave());
    desk.callLine(1);
    desk.click(300, 100, Qt::MiddleButton);
    QCOMPARE(desk.lineState(1), MarkerState::following);
}

void TstMainViewVoltages::overTheRowsTheMarkerStaysAndAClickZooms()
{
    Desk desk;
    desk.load(squareWave());
    desk.callLine(0);
    desk.move(300, 100);
    const int row = desk.areaHeight() + 20;
    desk.click(300, row);
    QCOMPARE(desk.line(0).position, 100);
    QCOMPARE(desk.lineState(0), MarkerState::following);
    QCOMPARE(desk.zooms.size(), 1);
    desk.click(300, row, Qt::RightButton);
    QCOMPARE(desk.lineState(0), MarkerState::following);
    QCOMPARE(desk.zooms.size(), 2);
}

void TstMainViewVoltages::aDragPansAndDoesNotLayTheMarkerDown()
{
    Desk desk;
    desk.load(squareWave());
    desk.callLine(0);
    desk.move(300, 100);
    desk.press(300, 100);
    QTest::mouseMove(desk.view.windowHandle(), desk.waves->mapTo(&desk.view, QPoint(320, 100)));
    desk.release(320, 100);
    QCOMPARE(desk.lineState(0), MarkerState::following);
}

void TstMainViewVoltages::enterLaysTheMarkerDown_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Enter") << int(Qt::Key_Enter);
    QTest::newRow("Return") << int(Qt::Key_Return);
}

void TstMainViewVoltages::enterLaysTheMarkerDown()
{
    QFETCH(int, key);
    Desk desk;
    desk.callLine(0);
    desk.key(Qt::Key(key));
    QCOMPARE(desk.lineState(0), MarkerState::placed);
    desk.move(300, 100);
    QCOMPARE(desk.line(0).position, desk.areaHeight() * 3 / 10);
}

void TstMainViewVoltages::enterIsTheFocusedControlsWhileNoMarkerFollows()
{
    Desk desk;
    const auto enter = [&desk] {
        int enabled = 0;
        for (const QShortcut *shortcut : desk.view.findChildren<QShortcut *>()) {
            const int key = shortcut->key()[0];
            enabled += (key == Qt::Key_Return || key == Qt::Key_Enter) && shortcut->isEnabled() ? 1 : 0;
        }
        return enabled;
    };
    QCOMPARE(enter(), 0);
    desk.callLine(0);
    QCOMPARE(enter(), 2);
    desk.key(Qt::Key_Return);
    QCOMPARE(enter(), 0);
    desk.callLine(1);
    desk.replaceDevice(0);
    QCOMPARE(enter(), 0);
}

void TstMainViewVoltages::thePointerBrightensAMarkerOneStrokeAround()
{
    Desk desk;
    desk.load(squareWave());
    desk.lay(0, 100); // three pixels high: 99 to 101
    for (const int y : {97, 103}) {
        desk.move(300, y);
        QCOMPARE(desk.lineState(0), MarkerState::placed);
    }
    for (const int y : {98, 100, 102}) {
        desk.move(300, y);
        QCOMPARE(desk.lineState(0), MarkerState::hovered);
    }
    desk.move(300, desk.areaHeight() + 20);
    QCOMPARE(desk.lineState(0), MarkerState::placed);
}

void TstMainViewVoltages::anyButtonTakesUpTheMarkerUnderThePointer_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("left") << int(Qt::LeftButton);
    QTest::newRow("middle") << int(Qt::MiddleButton);
    QTest::newRow("right") << int(Qt::RightButton);
}

void TstMainViewVoltages::anyButtonTakesUpTheMarkerUnderThePointer()
{
    QFETCH(int, button);
    Desk desk;
    desk.load(squareWave());
    desk.lay(0, 100);
    desk.move(300, 120);
    desk.click(300, 100, Qt::MouseButton(button));
    QCOMPARE(desk.lineState(0), MarkerState::following);
    desk.click(300, 140);
    QCOMPARE(desk.lineState(0), MarkerState::placed);
    QCOMPARE(desk.line(0).position, 140);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainViewVoltages::leavingTheViewLeavesAMarkerPlain()
{
    Desk desk;
    desk.load(squareWave());
    desk.lay(0, 100);
    desk.move(300, 120);
    desk.move(300, 100);
    QCOMPARE(desk.lineState(0), MarkerState::hovered);
    desk.move(-50, 100);
    QCOMPARE(desk.lineState(0), MarkerState::placed);
    QCOMPARE(desk.shape(), Qt::ArrowCursor);
}

void TstMainViewVoltages::theShapeOfThePointerTellsThatAMarkerCanBeMoved()
{
    Desk desk;
    desk.load(squareWave());
    desk.lay(0, 100);
    desk.move(300, 150);
    QCOMPARE(desk.shape(), Qt::ArrowCursor);
    desk.move(300, 100);
    QCOMPARE(desk.shape(), Qt::SizeVerCursor);
    desk.click(300, 100);
    desk.move(300, 150);
    QCOMPARE(desk.shape(), Qt::SizeVerCursor);
    desk.move(300, desk.areaHeight() + 20);
    QCOMPARE(desk.shape(), Qt::ArrowCursor);
}

void TstMainViewVoltages::withShiftBothMarkersMove()
{
    Desk desk;
    desk.load(squareWave());
    desk.lay(0, 100);
    desk.lay(1, 150);
    desk.view.shiftHeld = true;
    desk.callLine(1);
    desk.move(300, 170);
    QCOMPARE(desk.line(0).position, 120);
    QCOMPARE(desk.line(1).position, 170);
    desk.view.shiftHeld = false;
    desk.move(300, 180);
    QCOMPARE(desk.line(0).position, 120);
    QCOMPARE(desk.line(1).position, 180);
}

void TstMainViewVoltages::shiftAndArrowsMoveTheMarkerThatWasTouchedLast()
{
    Desk desk;
    desk.callLine(0);
    const int start = desk.line(0).position;
    desk.key(Qt::Key_Down, Qt::ShiftModifier);
    desk.key(Qt::Key_Down, Qt::ShiftModifier);
    desk.key(Qt::Key_Up, Qt::ShiftModifier);
    QCOMPARE(desk.line(0).position, start + 1);
    QCOMPARE(desk.lineState(0), MarkerState::placed);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainViewVoltages::aTimingMarkerInTheWayDoesNotHoldTheMarkerUp()
{
    Desk desk;
    desk.load(squareWave());
    desk.put(0, 400, desk.areaHeight() + 20);
    QCOMPARE(desk.state(0), MarkerState::placed);
    desk.callLine(0);
    desk.move(300, 100);
    desk.move(desk.x(0), 130);
    QCOMPARE(desk.line(0).position, 130);
    QCOMPARE(desk.state(0), MarkerState::placed);
    desk.click(desk.x(0), 130);
    QCOMPARE(desk.lineState(0), MarkerState::placed);
    QCOMPARE(desk.state(0), MarkerState::placed);
}

void TstMainViewVoltages::aFollowingTimingMarkerIsLaidDownFirst()
{
    Desk desk;
    desk.load(squareWave());
    desk.callLine(0);
    desk.move(300, 100);
    desk.key(MarkerDesk::keyOf(0));
    desk.move(500, 140);
    QCOMPARE(desk.line(0).position, 100);
    desk.press(500, 140);
    desk.release(500, 140);
    QCOMPARE(desk.state(0), MarkerState::placed);
    QCOMPARE(desk.lineState(0), MarkerState::following);
}

void TstMainViewVoltages::withoutACaptureTheMarkersWorkAllTheSame()
{
    Desk desk;
    desk.lay(0, 100);
    QCOMPARE(desk.lineState(0), MarkerState::placed);
    QCOMPARE(desk.line(0).position, 100);
}

void TstMainViewVoltages::anotherModelTakesTheMarkersAway()
{
    Desk desk;
    desk.lay(0, 100);
    desk.replaceDevice(0);
    QVERIFY(desk.items<CursorMarker>().isEmpty());
    desk.callLine(0);
    desk.move(300, 20);
    desk.click(300, 20);
    desk.replaceDevice(analogModel);
    QCOMPARE(desk.items<CursorMarker>().size(), 2);
    QCOMPARE(desk.lineState(0), MarkerState::off);
    QCOMPARE(desk.values.count(QStringLiteral("###")), 3);
}

void TstMainViewVoltages::aResizedViewKeepsTheMarkersShare()
{
    Desk desk;
    desk.lay(0, desk.areaHeight() / 4);
    const double share = double(desk.line(0).position) / desk.line(0).refHeight;
    const double before = desk.voltage(0);
    desk.view.resize(900, 1600);
    QTRY_COMPARE(int(desk.line(0).boundingRect().width()), desk.waves->width());
    const int area = int(desk.items<ItemWaveBackground>().first()->sceneBoundingRect().top());
    QVERIFY(area > desk.areaHeight());
    QVERIFY(std::abs(desk.line(0).y() + 1 - share * area) <= 1.0);
    QVERIFY(std::abs(desk.voltage(0) - before) <= defaultFullScale / desk.areaHeight()); // of a pixel
}

void TstMainViewVoltages::aMarkerOnTheZeroLevelReadsNoVoltageAndAboveItAPositiveOne()
{
    Desk desk;
    const int zero = desk.zeroFlag(0)->centre();
    desk.lay(0, zero);
    QCOMPARE(desk.values.at(0), QStringLiteral("0.00mV"));
    desk.lay(1, zero - desk.areaHeight() / 4);
    QCOMPARE(desk.values.mid(1), (QStringList{QStringLiteral("2.50V"), QStringLiteral("2.50V")}));
}

void TstMainViewVoltages::anotherVoltsPerDivisionIsReadAtOnce()
{
    Desk desk;
    desk.lay(0, desk.zeroFlag(0)->centre() - desk.areaHeight() / 4);
    QComboBox *combo = desk.voltsPerDivision(0);
    QCOMPARE(combo->currentText(), QStringLiteral("1V/div"));
    combo->setFocus(Qt::TabFocusReason);
    QTest::keyClick(combo, Qt::Key_Up);
    QCOMPARE(combo->currentText(), QStringLiteral("500mV/div"));
    QCOMPARE(desk.values.at(0), QStringLiteral("1.25V"));
}

void TstMainViewVoltages::aZeroLevelThatMovesIsReadAtOnce()
{
    Desk desk;
    AChnTAG *flag = desk.zeroFlag(0);
    desk.lay(0, flag->centre());
    const int before = flag->centre();
    flag->setFocus(Qt::TabFocusReason);
    QTest::keyClick(flag, Qt::Key_Down);
    const int moved = flag->centre() - before;
    QVERIFY(moved > 0);
    QVERIFY(std::abs(desk.voltage(0) - defaultFullScale * moved / desk.areaHeight()) < 0.01);
}

void TstMainViewVoltages::anotherChannelIsReadAtOnceByItsScale()
{
    Desk desk;
    QComboBox *combo = desk.voltsPerDivision(1);
    combo->setFocus(Qt::TabFocusReason);
    QTest::keyClick(combo, Qt::Key_Up);
    QCOMPARE(combo->currentText(), QStringLiteral("500mV/div"));
    const int zero = desk.zeroFlag(1)->centre();
    desk.lay(0, zero);
    desk.lay(1, zero - desk.areaHeight() / 4);
    QVERIFY(desk.values.at(0) != QStringLiteral("0.00mV"));
    desk.view.slotVoltageAChnChanged(1);
    QCOMPARE(desk.values, (QStringList{QStringLiteral("0.00mV"), QStringLiteral("1.25V"), QStringLiteral("1.25V")}));
}

QTEST_MAIN(TstMainViewVoltages)
#include "tst_MainViewVoltages.moc"
