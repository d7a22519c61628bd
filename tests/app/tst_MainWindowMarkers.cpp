#include "app/WindowDesk.h"
#include "controls/Look.h"
#include "settings/Globals.h"
#include "wave/CursorBody.h"
#include "wave/CursorHandle.h"
#include "wave/MainView.h"
#include "wave/PointerTag.h"
#include "wave/TimeView.h"
#include "wave/WaveView.h"

#include <QGraphicsScene>
#include <QLineEdit>

#include <algorithm>

/// Timing markers in the window: the waves, the ruler and what stands between them.
class TstMainWindowMarkers : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { tearDown(); }

    void aNumberKeyShowsTheMarkersLineAndItsFlagAboveIt();
    void escapeTakesOffTheMarkerThatFollowsThePointer();
    void aMarkerPickedUpInTheRulerMovesInTheWaves();
    void flagsStayOverTheirLinesWhenTheViewMoves();
    void anotherModelTakesLinesAndFlagsAway();
    void aNewCaptureHidesLinesAndFlags();
    void theRulerTellsWhereThePointerIs();

private:
    [[nodiscard]] WaveView *waves() const { return m_window->findChild<WaveView *>(); }
    [[nodiscard]] TimeView *ruler() const { return m_window->findChild<TimeView *>(); }
    [[nodiscard]] QVector<CursorBody *> lines() const
    {
        QVector<CursorBody *> found;
        for (QGraphicsItem *item : waves()->scene()->items()) {
            if (auto *line = dynamic_cast<CursorBody *>(item)) {
                found.append(line);
            }
        }
        std::sort(found.begin(), found.end(), [](const auto *a, const auto *b) { return a->id() < b->id(); });
        return found;
    }
    [[nodiscard]] QVector<CursorHandle *> shownFlags() const
    {
        QVector<CursorHandle *> found;
        for (CursorHandle *flag : ruler()->findChildren<CursorHandle *>()) {
            if (flag->isVisible()) {
                found.append(flag);
            }
        }
        return found;
    }
    /// Puts marker A1 down in column `x` of the waves.
    void putFirst(int x)
    {
        const QPoint place = waves()->mapTo(m_window.get(), {x, 5});
        QTest::mouseMove(m_window->windowHandle(), place);
        QTest::keyClick(m_window->windowHandle(), Qt::Key_1);
        QTest::mouseMove(m_window->windowHandle(), place + QPoint(1, 0));
        QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, place + QPoint(1, 0));
    }
    /// The distance of the flag's tip from the line's middle, in half device pixels.
    [[nodiscard]] int shift() const
    {
        const CursorHandle *flag = shownFlags().constFirst();
        const QPoint tip = flag->mapToGlobal({0, 0});
        const QPoint line = waves()->viewport()->mapToGlobal(waves()->mapFromScene(lines().constFirst()->pos()));
        return 2 * tip.x() + flag->width() - (2 * line.x() + uiScale());
    }
};

void TstMainWindowMarkers::init()
{
    disAnimateZoom = true;
    setUp();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    capture();
    QTest::mouseMove(m_window->windowHandle(), {2, 2});
}

void TstMainWindowMarkers::aNumberKeyShowsTheMarkersLineAndItsFlagAboveIt()
{
    putFirst(150);
    QCOMPARE(lines().size(), 2);
    QCOMPARE(lines()[0]->markerState(), MarkerState::placed);
    QCOMPARE(shownFlags().size(), 1);
    QCOMPARE(shownFlags()[0]->id(), 0);
    QCOMPARE(shift(), 0);
}

void TstMainWindowMarkers::escapeTakesOffTheMarkerThatFollowsThePointer()
{
    putFirst(300);
    QCOMPARE(shownFlags().size(), 1);
    QTest::keyClick(m_window->windowHandle(), Qt::Key_2);
    QCOMPARE(shownFlags().size(), 2);
    QTest::keyClick(m_window->windowHandle(), Qt::Key_Escape);
    QCOMPARE(lines().at(1)->markerState(), MarkerState::off);
    QCOMPARE(shownFlags().size(), 1);
    QTest::keyClick(m_window->windowHandle(), Qt::Key_Escape); // what has been put down stays
    QCOMPARE(shownFlags().size(), 1);

    QTest::keyClick(m_window->windowHandle(), Qt::Key_2);
    auto *field = m_window->findChild<QLineEdit *>(QStringLiteral("zoomEdit"));
    field->setFocus();
    QTest::keyClicks(field, QStringLiteral("9"));
    QTest::keyClick(field, Qt::Key_Escape); // of the field
    QCOMPARE(lines().at(1)->markerState(), MarkerState::following);
    QTest::keyClick(m_window->windowHandle(), Qt::Key_Escape);
    QCOMPARE(lines().at(1)->markerState(), MarkerState::off);
}

void TstMainWindowMarkers::aMarkerPickedUpInTheRulerMovesInTheWaves()
{
    putFirst(150);
    const double before = lines()[0]->x();
    const QPoint flag = shownFlags()[0]->mapTo(m_window.get(), {7, 8});
    QTest::mouseMove(m_window->windowHandle(), flag);
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, flag);
    QCOMPARE(lines()[0]->markerState(), MarkerState::following);
    QTest::mouseMove(m_window->windowHandle(), flag + QPoint(100, 0));
    QVERIFY(qAbs(lines()[0]->x() - before - 100) <= 1); // a whole sample is nearly a column
    QCOMPARE(shift(), 0);
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, flag + QPoint(100, 0));
    QCOMPARE(lines()[0]->markerState(), MarkerState::placed);
}

void TstMainWindowMarkers::flagsStayOverTheirLinesWhenTheViewMoves()
{
    putFirst(150);
    m_gen->zoomInAt(150);
    m_gen->setViewStart(m_gen->viewStart() + 12.5 * m_gen->ratioSasPix());
    QVERIFY(int(lines()[0]->x()) != 151);
    QCOMPARE(shift(), 0);
}

void TstMainWindowMarkers::anotherModelTakesLinesAndFlagsAway()
{
    putFirst(150);
    QTest::keyClick(m_window->windowHandle(), Qt::Key_3); // one follows the pointer
    m_window->slotDevPreConnect(9);
    QVERIFY(lines().isEmpty());
    QVERIFY(ruler()->findChildren<CursorHandle *>().isEmpty());
    QTest::mouseMove(m_window->windowHandle(), waves()->mapTo(m_window.get(), {300, 5}));
    QTest::keyClick(m_window->windowHandle(), Qt::Key_1); // there is no capture
    QVERIFY(shownFlags().isEmpty());
}

void TstMainWindowMarkers::aNewCaptureHidesLinesAndFlags()
{
    putFirst(150);
    capture();
    QCOMPARE(lines().size(), 2);
    QCOMPARE(lines()[0]->markerState(), MarkerState::off);
    QVERIFY(shownFlags().isEmpty());
}

void TstMainWindowMarkers::theRulerTellsWhereThePointerIs()
{
    const auto *tag = ruler()->findChild<PointerTag *>();
    QVERIFY(tag->isHidden());
    QTest::mouseMove(m_window->windowHandle(), waves()->mapTo(m_window.get(), {200, 5}));
    QTRY_VERIFY(tag->isVisible());
    QVERIFY2(tag->text().endsWith(QLatin1Char(']')), qPrintable(tag->text())); // the sample, behind its time
    QVERIFY(tag->x() > 200);
}

LUX_GUI_TEST(TstMainWindowMarkers)
#include "tst_MainWindowMarkers.moc"
