#include "controls/Look.h"
#include "support/GuiTestMain.h"
#include "wave/CursorMarker.h"
#include "wave/VoltageBoard.h"

#include <QGraphicsScene>
#include <QSignalSpy>

#include <algorithm>

/// The two voltage markers, their states, places and voltages.
class TstVoltageBoard : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theMarkersStartAtThreeAndSevenTenthsOfTheArea_data();
    void theMarkersStartAtThreeAndSevenTenthsOfTheArea();
    void withoutMarkersShownNothingIsKnown();
    void withOneMarkerShownTheOtherAndTheDifferenceAreNotKnown();
    void bothMarkersReadAgainstTheChannelsZeroLevel();
    void anotherChannelIsReadAtOnceByItsScale();
    void aScaleThatHasChangedIsReadAnew();
    void thousandMillivoltsAreAVolt_data();
    void thousandMillivoltsAreAVolt();
    void anotherHeightOfTheAreaKeepsTheVoltage();
    void aMarkerThatIsMovedReadsByThePresentHeight();
    void onlyOneMarkerFollowsThePointer();
    void aSecondClickTakesTheMarkerAway();
    void aPointerInTheMarkersRowIsNoMove();
    void afterAMoveTheSecondClickLaysTheMarkerDown();
    void aLaidMarkerIsTakenUpByItsButton();
    void idsThatAreNoneAreIgnored();
    void theArrowsMoveTheMarkerThatWasTouchedLast();
    void theArrowsStopAtTheEndsOfTheArea();
    void bothMarkersKeepTheirDistanceAndStopTogether();
    void aMarkerThatIsOffIsNotMovedWithTheOther();
    void withoutAnAnalogAreaNothingHappens();
    void onAScaledScreenPlacesAreWholeLogicalPixels();
    void aBoardWithoutAScaleReadsNoVoltage();

private:
    static constexpr int areaHeight = 400;

    [[nodiscard]] CursorMarker &marker(int id) const
    {
        CursorMarker *found = nullptr;
        for (QGraphicsItem *item : m_scene->items()) {
            auto *one = dynamic_cast<CursorMarker *>(item);
            found = one != nullptr && one->id() == id ? one : found;
        }
        return *found;
    }
    [[nodiscard]] MarkerState state(int id) const { return marker(id).markerState(); }
    /// Lays marker `id` down at a row of the area.
    void lay(int id, int y)
    {
        m_board->pressButton(id);
        QVERIFY(m_board->pointerMoved(y));
        QVERIFY(m_board->clicked(Qt::LeftButton, y));
    }
    static QStringList list(const char *words) { return QString::fromLatin1(words).split(QLatin1Char(' ')); }

    std::unique_ptr<QGraphicsScene> m_scene;
    std::unique_ptr<VoltageBoard> m_board;
    std::array<AChnScale, 2> m_scales{};
    QStringList m_values; ///< the last that were told
};

void TstVoltageBoard::init()
{
    globalsSetDpi(96);
    m_scene = std::make_unique<QGraphicsScene>();
    m_board = std::make_unique<VoltageBoard>(*m_scene, nullptr);
    m_scales = {AChnScale{200, 10000}, AChnScale{100, 1000}};
    m_board->scaleOf = [this](int chn) { return m_scales.at(std::size_t(chn)); };
    m_values.clear();
    connect(m_board.get(), &VoltageBoard::valuesChanged, this,
            [this](const QStringList &values) { m_values = values; });
    m_board->rebuild(true);
    m_board->setArea({1000, areaHeight});
}

void TstVoltageBoard::cleanup()
{
    m_board.reset();
    m_scene.reset();
    globalsSetDpi(96);
}

void TstVoltageBoard::theMarkersStartAtThreeAndSevenTenthsOfTheArea_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstVoltageBoard::theMarkersStartAtThreeAndSevenTenthsOfTheArea()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    m_board->rebuild(true);
    m_board->setArea({1000, areaHeight});
    for (const int id : {0, 1}) {
        const int y = areaHeight * (id == 0 ? 3 : 7) / 10;
        QCOMPARE(state(id), MarkerState::off);
        QVERIFY(!marker(id).isVisible());
        QCOMPARE(marker(id).pos(), QPointF(0, y - dp(3) / 2));
        QCOMPARE(marker(id).boundingRect().size(), QSizeF(1000, dp(3)));
    }
}

void TstVoltageBoard::withoutMarkersShownNothingIsKnown()
{
    QCOMPARE(m_values, list("### ### ###"));
}

void TstVoltageBoard::withOneMarkerShownTheOtherAndTheDifferenceAreNotKnown()
{
    lay(0, 100);
    QCOMPARE(m_values, list("2.50V ### ###"));
    m_board->pressButton(0);
    m_board->pressButton(0);
    lay(1, 300);
    QCOMPARE(m_values, list("### -2.50V ###"));
}

void TstVoltageBoard::bothMarkersReadAgainstTheChannelsZeroLevel()
{
    lay(0, 300);
    lay(1, 100);
    QCOMPARE(m_values, list("-2.50V 2.50V 5.00V"));
}

void TstVoltageBoard::anotherChannelIsReadAtOnceByItsScale()
{
    lay(0, 300);
    lay(1, 100);
    m_board->setChannel(1);
    QCOMPARE(m_values, list("-500.00mV 0.00mV 500.00mV"));
    m_board->setChannel(0);
    QCOMPARE(m_values, list("-2.50V 2.50V 5.00V"));
}

void TstVoltageBoard::aScaleThatHasChangedIsReadAnew()
{
    lay(0, 300);
    m_scales[0] = {100, 500};
    m_board->scaleChanged(1); // of the other channel
    QCOMPARE(m_values, list("-2.50V ### ###"));
    m_board->scaleChanged(0);
    QCOMPARE(m_values, list("-250.00mV ### ###"));
}

void TstVoltageBoard::thousandMillivoltsAreAVolt_data()
{
    QTest::addColumn<int>("fullScale");
    QTest::addColumn<QString>("values");
    QTest::newRow("below") << 3996 << QStringLiteral("999.00mV -999.00mV 2.00V");
    QTest::newRow("at") << 4000 << QStringLiteral("1.00V -1.00V 2.00V");
}

void TstVoltageBoard::thousandMillivoltsAreAVolt()
{
    QFETCH(int, fullScale);
    QFETCH(QString, values);
    m_scales[0] = {200, fullScale};
    lay(0, 100);
    lay(1, 300);
    QCOMPARE(m_values.join(QLatin1Char(' ')), values);
}

void TstVoltageBoard::anotherHeightOfTheAreaKeepsTheVoltage()
{
    lay(0, 100);
    m_scales[0] = {300, 10000};
    m_board->setArea({500, 600});
    QCOMPARE(m_values, list("2.50V ### ###"));
    QCOMPARE(marker(0).pos(), QPointF(0, 150 - 1));
    QCOMPARE(marker(0).boundingRect().width(), 500.0);
    m_scales[0] = {200, 10000};
    m_board->setArea({500, 400});
    QCOMPARE(marker(0).pos(), QPointF(0, 100 - 1));
}

void TstVoltageBoard::aMarkerThatIsMovedReadsByThePresentHeight()
{
    lay(0, 100);
    m_scales[0] = {300, 10000};
    m_board->setArea({1000, 600});
    m_board->pressButton(0);
    QVERIFY(m_board->pointerMoved(180));
    QCOMPARE(m_values, list("2.00V ### ###"));
    QCOMPARE(marker(0).pos(), QPointF(0, 180 - 1));
}

void TstVoltageBoard::onlyOneMarkerFollowsThePointer()
{
    QSignalSpy following(m_board.get(), &VoltageBoard::followingChanged);
    m_board->pressButton(0);
    QCOMPARE(state(0), MarkerState::following);
    m_board->pressButton(1);
    QCOMPARE(state(0), MarkerState::off);
    QVERIFY(!marker(0).isVisible());
    QCOMPARE(state(1), MarkerState::following);
    QVERIFY(marker(1).isVisible());
    QVERIFY(following.last().first().toBool());
    lay(0, 50);
    QCOMPARE(state(0), MarkerState::placed);
    QCOMPARE(state(1), MarkerState::off);
    QVERIFY(!following.last().first().toBool());
    QVERIFY(!m_board->isFollowing());
}

void TstVoltageBoard::aSecondClickTakesTheMarkerAway()
{
    m_board->pressButton(0);
    QVERIFY(marker(0).isVisible());
    QCOMPARE(m_values, list("2.00V ### ###"));
    m_board->pressButton(0);
    QCOMPARE(state(0), MarkerState::off);
    QVERIFY(!marker(0).isVisible());
    QCOMPARE(m_values, list("### ### ###"));
}

void TstVoltageBoard::aPointerInTheMarkersRowIsNoMove()
{
    m_board->pressButton(0);
    QVERIFY(m_board->pointerMoved(areaHeight * 3 / 10)); // where it stands at first
    QCOMPARE(m_values, list("2.00V ### ###"));
    m_board->pressButton(0);
    QCOMPARE(state(0), MarkerState::off);
}

void TstVoltageBoard::afterAMoveTheSecondClickLaysTheMarkerDown()
{
    m_board->pressButton(0);
    QVERIFY(m_board->pointerMoved(100));
    m_board->pressButton(0);
    QCOMPARE(state(0), MarkerState::placed);
    QCOMPARE(m_values, list("2.50V ### ###"));
    m_board->pointerMoved(300);
    QCOMPARE(m_values, list("2.50V ### ###"));
}

void TstVoltageBoard::aLaidMarkerIsTakenUpByItsButton()
{
    lay(0, 100);
    m_board->pressButton(0);
    QCOMPARE(state(0), MarkerState::following);
    m_board->pressButton(0); // it has not moved since
    QCOMPARE(state(0), MarkerState::off);
}

void TstVoltageBoard::idsThatAreNoneAreIgnored()
{
    for (const int id : {-1, 2, 1000}) {
        m_board->pressButton(id);
    }
    QCOMPARE(state(0), MarkerState::off);
    QCOMPARE(state(1), MarkerState::off);
}

void TstVoltageBoard::theArrowsMoveTheMarkerThatWasTouchedLast()
{
    m_board->moveByKey(1); // none was
    lay(0, 100);
    lay(1, 200);
    m_board->moveByKey(-1);
    QCOMPARE(marker(1).position, 199);
    QCOMPARE(m_values, list("2.50V 25.00mV 2.48V"));
    m_board->pressButton(0);
    m_board->moveByKey(1);
    QCOMPARE(state(0), MarkerState::placed); // the pointer would take it back
    QCOMPARE(marker(0).position, 101);
    QCOMPARE(marker(1).position, 199);
    m_board->pressButton(0);
    m_board->pressButton(0);
    m_board->moveByKey(1); // it is off
    QCOMPARE(marker(0).position, 101);
    QCOMPARE(marker(1).position, 199);
}

void TstVoltageBoard::theArrowsStopAtTheEndsOfTheArea()
{
    lay(0, 1);
    m_board->moveByKey(-1);
    m_board->moveByKey(-1);
    QCOMPARE(marker(0).position, 0);
    lay(1, areaHeight - 2);
    m_board->moveByKey(1);
    m_board->moveByKey(1);
    QCOMPARE(marker(1).position, areaHeight - 1);
}

void TstVoltageBoard::bothMarkersKeepTheirDistanceAndStopTogether()
{
    lay(0, 100);
    lay(1, 200);
    m_board->movesBoth = true;
    m_board->pressButton(1);
    m_board->pointerMoved(150);
    QCOMPARE(marker(0).position, 50);
    QCOMPARE(marker(1).position, 150);
    m_board->pointerMoved(10);
    QCOMPARE(marker(0).position, 0);
    QCOMPARE(marker(1).position, 100);
    m_board->pointerMoved(300);
    QCOMPARE(marker(0).position, 200);
    QCOMPARE(marker(1).position, 300);
    m_board->movesBoth = false;
    m_board->pointerMoved(350);
    QCOMPARE(marker(0).position, 200);
    QCOMPARE(marker(1).position, 350);
}

void TstVoltageBoard::aMarkerThatIsOffIsNotMovedWithTheOther()
{
    m_board->movesBoth = true;
    m_board->pressButton(0);
    m_board->pointerMoved(areaHeight - 1); // further than the other one could follow
    QCOMPARE(marker(0).position, areaHeight - 1);
    QCOMPARE(marker(1).position, areaHeight * 7 / 10);
}

void TstVoltageBoard::withoutAnAnalogAreaNothingHappens()
{
    m_board->pressButton(0);
    QSignalSpy following(m_board.get(), &VoltageBoard::followingChanged);
    m_board->rebuild(false);
    QCOMPARE(QList<QVariantList>(following), (QList<QVariantList>{{false}})); // the marker has gone
    m_board->setArea({1000, 0});
    QSignalSpy told(m_board.get(), &VoltageBoard::valuesChanged);
    m_board->pressButton(0);
    m_board->setChannel(1);
    m_board->layDown();
    m_board->moveByKey(1);
    QVERIFY(!m_board->pointerMoved(10));
    QVERIFY(!m_board->clicked(Qt::LeftButton, 10));
    m_board->pointerLeft();
    QCOMPARE(told.count(), 0);
    QVERIFY(m_scene->items().isEmpty());
}

void TstVoltageBoard::onAScaledScreenPlacesAreWholeLogicalPixels()
{
    globalsSetDpi(192);
    m_board->rebuild(true);
    m_board->setArea({1000, areaHeight}); // 200 logical pixels
    lay(0, 101);
    QCOMPARE(marker(0).position, 50);
    QCOMPARE(marker(0).refHeight, 200);
    QCOMPARE(marker(0).pos(), QPointF(0, 100 - 3));
    QCOMPARE(m_values, list("2.50V ### ###"));
    m_board->moveByKey(1);
    QCOMPARE(marker(0).pos(), QPointF(0, 102 - 3));
}

void TstVoltageBoard::aBoardWithoutAScaleReadsNoVoltage()
{
    m_board->scaleOf = nullptr;
    lay(0, 100);
    QCOMPARE(m_values, list("0.00mV ### ###"));
}

LUX_GUI_TEST(TstVoltageBoard)
#include "tst_VoltageBoard.moc"
