#include "app/WindowDesk.h"
#include "controls/MyButton.h"
#include "measure/AnalyzerView.h"
#include "measure/Annotations.h"
#include "measure/MeasureView.h"
#include "measure/PulseMeasure.h"
#include "measure/TimingMarkerPair.h"
#include "measure/TimingMarkerTip.h"
#include "protocol/ResultView.h"
#include "wave/MainView.h"
#include "wave/WaveView.h"

#include <QGridLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>

/// The right-hand panel in the window: its place, its way to the wave view and back, and what a small window leaves of
/// it.
class TstMainWindowPanel : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init()
    {
        QCursor::setPos(790, 590); // outside of the waves, so that a move to them enters them
        setUp();
        bind();
    }
    void cleanup() { tearDown(); }

    void thePanelStandsAtTheRightInAFixedWidthWithoutBars();
    void aPairAddedInThePanelHasItsMarkersInTheView();
    void aMarkerPlacedOnTheWaveShowsItsTimeInThePanel();
    void aPairMadeByKeyAppearsInThePanel();
    void thePulseUnderThePointerIsMeasured();
    void offTheChannelsTheMeasurementsAreUnknown();
    void rowsAreCountedWithEachCapture();
    void aMovedMarkerRecountsItsRows();
    void anotherModelEmptiesThePairs();
    void anotherConfigurationBringsItsRows();
    void inTheLeastWindowTheWheelReachesEverything();
    void inTheLeastWindowTheFocusBringsItsControlIntoView_data();
    void inTheLeastWindowTheFocusBringsItsControlIntoView();

private:
    void bind()
    {
        m_panel = m_window->findChild<AnalyzerView *>();
        m_view = m_window->findChild<MainView *>();
        QVERIFY(m_panel != nullptr && m_view != nullptr);
        m_area = qobject_cast<QScrollArea *>(m_panel->parentWidget()->parentWidget());
        QVERIFY(m_area != nullptr);
    }
    QString measured(int row) const { return m_panel->measureView->valueLabels.at(row)->text(); }
    void placeMarker(int marker, int x) { m_view->slotTimeViewMarkerChanged(6, marker, 3, x); }
    bool isInView(const QWidget *widget) const
    {
        const QRect place(widget->mapTo(m_area->viewport(), QPoint()), widget->size());
        return m_area->viewport()->rect().contains(place);
    }
    void fillPanel()
    {
        m_window->resize(m_window->minimumSize());
        QCoreApplication::processEvents();
        for (int i = 0; i < 5; ++i) {
            m_panel->annotations->btnAdd->click();
            m_panel->pulseMeasure->btnAdd->click();
        }
        QTRY_VERIFY(m_panel->annotations->pairs.last()->isVisible());
        QTRY_VERIFY(m_panel->height() >= m_panel->minimumSizeHint().height());
        QVERIFY(m_panel->height() > 2 * m_area->height());
    }

    AnalyzerView *m_panel = nullptr;
    MainView *m_view = nullptr;
    QScrollArea *m_area = nullptr;
};

void TstMainWindowPanel::thePanelStandsAtTheRightInAFixedWidthWithoutBars()
{
    const auto *grid = qobject_cast<QGridLayout *>(m_window->layout());
    int row = -1;
    int column = -1;
    int rows = 0;
    int columns = 0;
    grid->getItemPosition(grid->indexOf(m_area), &row, &column, &rows, &columns);
    QCOMPARE(QRect(column, row, columns, rows), QRect(2, 1, 2, 3));
    QCOMPARE(m_area->width(), 240);
    QCOMPARE(m_area->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(m_area->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(m_panel->width(), 240);
    QCOMPARE(m_panel->height(), m_area->height());
    m_window->resize(1500, 900);
    QCOMPARE(m_area->width(), 240);
}

void TstMainWindowPanel::aPairAddedInThePanelHasItsMarkersInTheView()
{
    capture();
    QTest::mouseClick(m_panel->annotations->btnAdd, Qt::LeftButton);
    placeMarker(0, 100);
    QVERIFY(m_view->shownPairs().isEmpty());
    QTest::mouseClick(m_panel->annotations->pairs.first()->btnTiming2, Qt::LeftButton);
    QCOMPARE(m_view->shownPairs().size(), 1);
    QTest::mouseClick(m_panel->annotations->pairs.first()->btnRemove, Qt::LeftButton);
    QVERIFY(m_view->shownPairs().isEmpty());
}

void TstMainWindowPanel::aMarkerPlacedOnTheWaveShowsItsTimeInThePanel()
{
    capture();
    m_gen->zoomSetRatio(1.0);
    m_gen->setViewStart(0.0);
    QTest::mouseClick(m_panel->annotations->btnAdd, Qt::LeftButton);
    const TimingMarkerPair *pair = m_panel->annotations->pairs.first();
    placeMarker(0, 0); // the trigger is at 0, the rate 100 MHz
    QCOMPARE(pair->times.at(0)->text(), QStringLiteral("0ps"));
    QCOMPARE(pair->pairTotal->text(), QStringLiteral("###"));
    placeMarker(1, 100);
    QCOMPARE(pair->times.at(1)->text(), QStringLiteral("1us"));
    QCOMPARE(pair->pairTotal->text(), QStringLiteral("1us"));
}

void TstMainWindowPanel::aPairMadeByKeyAppearsInThePanel()
{
    capture();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QTest::keyClick(m_window.get(), Qt::Key_4);
    QCOMPARE(m_panel->annotations->pairs.size(), 1);
    QCOMPARE(m_panel->annotations->pairs.first()->groupId, 1);
}

void TstMainWindowPanel::thePulseUnderThePointerIsMeasured()
{
    capture();
    m_gen->zoomSetRatio(1.0);
    m_gen->setViewStart(0.0);
    const auto *waves = m_view->findChild<WaveView *>();
    QCursor::setPos(waves->mapToGlobal(QPoint(150, 10)));
    QTRY_COMPARE(measured(0), QStringLiteral("1us")); // 100 samples at 100 MHz
    QCOMPARE(measured(1), QStringLiteral("2us"));
    QCOMPARE(measured(2), QStringLiteral("50%"));
    QCOMPARE(measured(3), QStringLiteral("500KHz"));
}

void TstMainWindowPanel::offTheChannelsTheMeasurementsAreUnknown()
{
    capture();
    const auto *waves = m_view->findChild<WaveView *>();
    QCursor::setPos(waves->mapToGlobal(QPoint(150, 10)));
    QTRY_VERIFY(measured(0) != QStringLiteral("###"));
    QCursor::setPos(m_window->mapToGlobal(QPoint(20, 20)));
    for (int row = 0; row < 4; ++row) {
        QTRY_COMPARE(measured(row), QStringLiteral("###"));
    }
}

void TstMainWindowPanel::rowsAreCountedWithEachCapture()
{
    QTest::mouseClick(m_panel->pulseMeasure->btnAdd, Qt::LeftButton);
    const QLabel *value = m_panel->pulseMeasure->valueLabels.first();
    QCOMPARE(value->text(), QStringLiteral("###"));
    capture(100000); // 999 edges of channel 0, which starts low
    QCOMPARE(value->text(), QStringLiteral("500"));
    capture(10000);
    QCOMPARE(value->text(), QStringLiteral("50"));
    capture(0);
    QCOMPARE(value->text(), QStringLiteral("###"));
}

void TstMainWindowPanel::aMovedMarkerRecountsItsRows()
{
    capture();
    m_gen->zoomSetRatio(1.0);
    m_gen->setViewStart(0.0);
    QTest::mouseClick(m_panel->annotations->btnAdd, Qt::LeftButton);
    placeMarker(0, 50);
    placeMarker(1, 450);
    PulseMeasure &rows = *m_panel->pulseMeasure;
    QTest::mouseClick(rows.btnAdd, Qt::LeftButton);
    QTest::mouseClick(rows.timeButtons.first(), Qt::LeftButton);
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Down);
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Return);
    QCOMPARE(rows.timeButtons.first()->text(), QStringLiteral("A1-A2"));
    QCOMPARE(rows.valueLabels.first()->text(), QStringLiteral("2"));
    placeMarker(1, 550);
    QCOMPARE(rows.valueLabels.first()->text(), QStringLiteral("3"));
}

void TstMainWindowPanel::anotherModelEmptiesThePairs()
{
    capture();
    for (int i = 0; i < 3; ++i) {
        QTest::mouseClick(m_panel->annotations->btnAdd, Qt::LeftButton);
    }
    QTest::mouseClick(m_panel->pulseMeasure->btnAdd, Qt::LeftButton);
    m_window->slotDevPreConnect(97);
    QVERIFY(m_panel->annotations->pairs.isEmpty());
    QVERIFY(m_view->shownPairs().isEmpty());
    QCOMPARE(m_panel->pulseMeasure->valueLabels.first()->text(), QStringLiteral("###"));
}

void TstMainWindowPanel::anotherConfigurationBringsItsRows()
{
    globalSet(QStringLiteral("DisFrequency"), QStringLiteral("1"));
    m_window->slotReplaceConfig();
    QVERIFY(m_panel->measureView->nameLabels.at(3)->isHidden());
    QVERIFY(!m_panel->measureView->nameLabels.at(2)->isHidden());
}

void TstMainWindowPanel::inTheLeastWindowTheWheelReachesEverything()
{
    fillPanel();
    const QWidget *last = m_panel->findChild<ResultView *>();
    QVERIFY(!isInView(last));
    const QPoint place(100, 50);
    for (int i = 0; i < 50; ++i) {
        QWheelEvent wheel(place, m_area->viewport()->mapToGlobal(place), {}, QPoint(0, -120), Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(m_area->viewport(), &wheel);
    }
    QVERIFY(isInView(last));
    QCOMPARE(m_area->horizontalScrollBar()->maximum(), 0);
}

void TstMainWindowPanel::inTheLeastWindowTheFocusBringsItsControlIntoView_data()
{
    QTest::addColumn<int>("model");
    QTest::newRow("digital") << 0;
    QTest::newRow("analog") << 97;
}

void TstMainWindowPanel::inTheLeastWindowTheFocusBringsItsControlIntoView()
{
    QFETCH(int, model);
    m_window->slotDevPreConnect(model);
    fillPanel();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QVector<QAbstractButton *> controls;
    for (QAbstractButton *button : m_panel->findChildren<QAbstractButton *>()) {
        if (button->isVisible()) {
            controls.append(button);
        }
    }
    QVERIFY(controls.size() > 40);
    controls.first()->setFocus(Qt::TabFocusReason);
    QSet<const QAbstractButton *> reached;
    const QWidget *last = nullptr;
    for (const QWidget *focus = QApplication::focusWidget(); m_panel->isAncestorOf(focus);
         focus = QApplication::focusWidget()) { // in: all of them, and then out of the panel
        QVERIFY(isInView(focus));
        const auto *button = qobject_cast<const QAbstractButton *>(focus);
        QVERIFY(button == nullptr || !reached.contains(button));
        reached.insert(button);
        last = focus;
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
    }
    reached.remove(nullptr);
    QCOMPARE(int(reached.size()), int(controls.size()));
    QTest::keyClick(m_window.get(), Qt::Key_Backtab); // from outside to the last
    QCOMPARE(static_cast<const QWidget *>(QApplication::focusWidget()), last);
    QVERIFY(isInView(QApplication::focusWidget()));
}

LUX_GUI_TEST(TstMainWindowPanel)
#include "tst_MainWindowPanel.moc"
