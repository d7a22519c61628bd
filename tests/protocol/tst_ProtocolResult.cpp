#include "controls/Icons.h"
#include "controls/MyButton.h"
#include "protocol/ProtocolItem.h"
#include "protocol/ResultDesk.h"
#include "support/GuiTestMain.h"
#include "support/MenuDriver.h"
#include "support/StarredTexts.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QShortcut>
#include <QSignalSpy>
#include <QToolTip>

namespace {

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

/// Moves the pointer to a place in the list.
void pointAt(const ResultDesk &desk, const QPoint &place)
{
    QWidget *target = desk.section->view->viewport();
    QMouseEvent move(QEvent::MouseMove, place, target->mapToGlobal(place), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(target, &move);
}

/// Turns the wheel over the list, in eighths of a degree. @return whether the list took it
bool turnWheel(const ResultDesk &desk, int delta)
{
    QWidget *target = desk.section->view->viewport();
    QWheelEvent wheel(QPointF(20, 20), target->mapToGlobal(QPoint(20, 20)), {}, QPoint(0, delta), Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &wheel);
    return wheel.isAccepted();
}

} // namespace

/// The section with the list of decoded results.
class TstProtocolResult : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        QFile::remove(configPath());
        configLoad();
        globalsSetDpi(96);
        disAnimateZoom = true;
    }

    void anAnalyzersFramesAreListedWhenItsWorkerEnds();
    void theListFollowsTheWave();
    void aMoveOfTheWaveMakesOnePage();
    void aMoveWithoutACaptureAsksForNothing();
    void aSearchDoesNotFollowTheWave();
    void aSearchShowsItsMatchesAndTheirCount();
    void aSearchWithoutMatchEmptiesTheList();
    void aNewSearchEmptiesTheListAtOnce();
    void aClickMovesTheWaveAndTheRowStaysMarked();
    void aMarkedRowStaysMarkedWhenAWorkerEnds();
    void aMarkedRowIsForgottenWhenAnalyzersChange();
    void aRowThatIsPressedIsTheOneThatKeysMoveFrom_data();
    void aRowThatIsPressedIsTheOneThatKeysMoveFrom();
    void aClickInASearchMovesTheWaveAlone();
    void theBarMovesTheList();
    void theWheelMovesByOneRowANotch();
    void aListThatFitsLeavesTheWheelToThePanel();
    void keysMoveThroughTheWholeList();
    void enterBringsTheMarkedFrameIntoView();
    void downLeadsFromTheSearchToTheRows();
    void enterInTheSearchShowsTheFirstThatWasFound();
    void aKeyLeadsToTheSearchFromAnywhere();
    void choosingTheFormatInUseKeepsTheMarkedRow();
    void keysOfTheListAreNoShortcutsOfTheWindow_data();
    void keysOfTheListAreNoShortcutsOfTheWindow();
    void aFrameTellsThatTheListHasTheFocus();
    void copyTakesTheMarkedRowOrThePage();
    void aDoubleClickAsksForTheSettingsOfTheFirstClicksRow();
    void aDoubleClickBelowTheRowsAsksForNothing();
    void theMenuOfARowCopiesItAndTellsWhoseItIs();
    void theMenuOfAListWithoutAMarkedRowIsAboutThePage();
    void theMenuHidesAnAnalyzerAndKeepsTheEntriesOfAll();
    void theMenuTranslatesTheNamesOfTheAnalyzers();
    void theMenuSaysSoWhenThereIsNone();
    void aFoldedSectionHidesAllButItsTitle();
    void aClearedSectionIsEmptyUntilTheNextReset();
    void aPageOnItsWayToAClearedSectionIsNotShown();
    void aRowTooLongForItsPlaceHasATip();
    void theTipOfARowStaysWhileThePointerRests();
    void theTipOfARowIsPlainText();
    void theTipGoesOffTheRowsAndComesAnewAtAnotherHeightAlone();
    void theViewIsAWholeNumberOfRowsHigh();
    void theRowsEndWithTheView();
    void theListLooksAsTold_data();
    void theListLooksAsTold();
    void theTextsKeepClearOfTheFrame_data();
    void theTextsKeepClearOfTheFrame();
    void noPixelLiesBetweenTwoRows_data();
    void noPixelLiesBetweenTwoRows();
    void framesComeWhileTheWorkerRuns();
    void aFullPageStaysInItsPlaceWhileAWorkerRuns();
    void aSearchGetsOnWhileAWorkerRuns();
    void aRowIsClickedWhileItsFrameIsGoing();
    void aClickOutsideOfTheFramesLocatesTheFirstSample();
    void everyPartHasANameForAScreenReader();
};

void TstProtocolResult::anAnalyzersFramesAreListedWhenItsWorkerEnds()
{
    ResultDesk desk;
    QVERIFY(desk.rows().isEmpty());
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    QTRY_COMPARE(desk.section->search->countText(), text("999"));
    QVERIFY(desk.add(1)); // its first edge is at 200 as the other's second
    QTRY_COMPARE(desk.rows().mid(0, 3), (QStringList{text("edge 100"), text("edge 200"), text("edge 200")}));
}

void TstProtocolResult::theListFollowsTheWave()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    desk.wave.setViewStart(5050.0);
    QVERIFY(desk.begins("edge 5100"));
    desk.wave.setViewStart(99000.0);
    QVERIFY(desk.begins("edge 99100"));
    desk.wave.zoomSetRatio(0.5);
    desk.wave.setViewStart(99500.0); // fewer frames behind it than rows
    QVERIFY(desk.begins("edge 99200"));
}

void TstProtocolResult::aMoveOfTheWaveMakesOnePage()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    const QSignalSpy pages(desk.section->findChild<AnalyzerDataGen *>(), &AnalyzerDataGen::listChanged);
    desk.wave.setViewStart(5050.0); // the bar that follows it asks for nothing
    QVERIFY(desk.begins("edge 5100"));
    desk.wave.setViewStart(7050.0);
    QVERIFY(desk.begins("edge 7100"));
    QCOMPARE(pages.size(), 2);
}

void TstProtocolResult::aMoveWithoutACaptureAsksForNothing()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    const auto *list = desk.section->findChild<AnalyzerDataGen *>();
    QTRY_VERIFY(list->isAtRest());
    desk.section->slotWaveMoved();
    QVERIFY(!list->isAtRest());
    QTRY_VERIFY(list->isAtRest());
    desk.wave.setDataSource(nullptr);
    desk.section->slotWaveMoved();
    QVERIFY(list->isAtRest());
}

void TstProtocolResult::aSearchDoesNotFollowTheWave()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QTest::keyClicks(desk.section->search, text("EDGE 1"));
    QVERIFY(desk.begins("edge 100"));
    desk.wave.setViewStart(50000.0);
    QCoreApplication::processEvents();
    QVERIFY(desk.begins("edge 100"));
    QTest::keyClick(desk.section->search, Qt::Key_Escape);
    QTRY_VERIFY(desk.firstRow().startsWith(text("edge 50")));
}

void TstProtocolResult::aSearchShowsItsMatchesAndTheirCount()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QTest::keyClicks(desk.section->search, text("77"));
    QTRY_COMPARE(desk.firstRow(), text("edge 7700"));
    QTRY_COMPARE(desk.section->search->countText(), text("19"));
    QVERIFY(desk.section->view->bar->isVisible());
}

void TstProtocolResult::aSearchWithoutMatchEmptiesTheList()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    QTest::keyClicks(desk.section->search, text("nowhere"));
    QTRY_VERIFY(desk.rows().isEmpty());
    QCOMPARE(desk.section->search->countText(), QString());
    QVERIFY(!desk.section->view->bar->isVisible());
}

void TstProtocolResult::aNewSearchEmptiesTheListAtOnce()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    desk.section->search->setText(text("77"));
    QVERIFY(desk.rows().isEmpty()); // what was shown does not match, perhaps
    QCOMPARE(desk.section->search->countText(), QString());
    QCOMPARE(desk.section->view->bar->maxV, qlonglong(0));
    QTRY_COMPARE(desk.firstRow(), text("edge 7700"));
}

void TstProtocolResult::aClickMovesTheWaveAndTheRowStaysMarked()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    desk.wave.setViewStart(5050.0);
    QTRY_COMPARE(desk.firstRow(), text("edge 5100"));
    desk.click(3);
    // The frame, a single sample, is in the middle of the view; the list stays, so that the next row can be clicked.
    const double middle = desk.wave.viewStart() + desk.wave.ratioSasPix() * desk.wave.viewWidth() / 2;
    QVERIFY(qAbs(middle - 5400.0) < 2.0);
    QCoreApplication::processEvents();
    QCOMPARE(desk.firstRow(), text("edge 5100"));
    QCOMPARE(desk.section->view->currentRow(), 3);
    desk.section->slotWaveMoved(); // the wave settles: now the list begins at its left edge
    QTRY_COMPARE(desk.firstRow(), text("edge 5400"));
    QCOMPARE(desk.section->view->currentRow(), 0);
}

void TstProtocolResult::aMarkedRowIsForgottenWhenAnalyzersChange()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.add(7));
    QVERIFY(desk.begins("edge 100"));
    desk.press(Qt::Key_Down);
    QCOMPARE(desk.section->view->currentRow(), 0);
    desk.desk.manager->removeAnalyzer(1);
    QTRY_COMPARE(desk.section->search->countText(), text("999"));
    QTRY_COMPARE(desk.section->view->currentRow(), -1);
    QCOMPARE(desk.firstRow(), text("edge 100"));
}

void TstProtocolResult::aMarkedRowStaysMarkedWhenAWorkerEnds()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    desk.section->search->setText(text("77"));
    QTRY_COMPARE(desk.section->search->countText(), text("19"));
    desk.click(4);
    QCOMPARE(desk.section->view->currentRow(), 4);
    emit desk.desk.manager->analyzerDecodedChanged();
    QTRY_VERIFY(desk.section->findChild<AnalyzerDataGen *>()->isAtRest());
    QCOMPARE(desk.firstRow(), text("edge 7700"));
    QCOMPARE(desk.section->view->currentRow(), 4);
}

void TstProtocolResult::aRowThatIsPressedIsTheOneThatKeysMoveFrom_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("releasedAt");
    QTest::newRow("right") << int(Qt::RightButton) << 5;
    QTest::newRow("middle") << int(Qt::MiddleButton) << 5;
    QTest::newRow("drag") << int(Qt::LeftButton) << 7;
    QTest::newRow("right drag") << int(Qt::RightButton) << 7;
}

void TstProtocolResult::aRowThatIsPressedIsTheOneThatKeysMoveFrom()
{
    QFETCH(int, button);
    const auto held = Qt::MouseButton(button);
    QFETCH(int, releasedAt);
    ResultDesk desk;
    QVERIFY(desk.add(0));
    desk.click(1);
    QWidget *rows = desk.section->view->viewport();
    const double start = desk.wave.viewStart();
    QTest::mousePress(rows, held, Qt::NoModifier, desk.placeOf(5));
    for (int row = 5; row <= releasedAt; ++row) {
        const QPoint place = desk.placeOf(row);
        QMouseEvent move(QEvent::MouseMove, place, rows->mapToGlobal(place), Qt::NoButton, held, Qt::NoModifier);
        QApplication::sendEvent(rows, &move);
    }
    QTest::mouseRelease(rows, held, Qt::NoModifier, desk.placeOf(releasedAt));
    QCOMPARE(desk.section->view->currentRow(), 5);
    QCOMPARE(desk.wave.viewStart(), start);
    desk.press(Qt::Key_Down);
    QCOMPARE(desk.section->view->currentRow(), 6);
}

void TstProtocolResult::aClickInASearchMovesTheWaveAlone()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QTest::keyClicks(desk.section->search, text("77"));
    QTRY_COMPARE(desk.section->search->countText(), text("19"));
    const QStringList before = desk.rows();
    desk.click(4);
    QCoreApplication::processEvents();
    QCOMPARE(desk.rows(), before);
    QCOMPARE(desk.section->view->currentRow(), 4);
    const double middle = desk.wave.viewStart() + desk.wave.ratioSasPix() * desk.wave.viewWidth() / 2;
    QVERIFY(qAbs(middle - before.at(4).section(QLatin1Char(' '), 1).toDouble()) < 2.0);
}

void TstProtocolResult::theBarMovesTheList()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    MyScrollbar &bar = *desk.section->view->bar;
    QCOMPARE(bar.maxV, qlonglong(999 - ResultDesk::rowsOnShow) * ResultView::gridHeight());
    bar.setValue(bar.maxV);
    QTRY_COMPARE(desk.rows().constLast(), text("edge 99900"));
    bar.setValue(ResultView::gridHeight() * 10 + 3); // a little below a row's edge, as a drag leaves it
    QVERIFY(desk.begins("edge 1100"));
    QCOMPARE(bar.value, qlonglong(ResultView::gridHeight()) * 10 + 3);
}

void TstProtocolResult::theWheelMovesByOneRowANotch()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    QVERIFY(turnWheel(desk, -120));
    QVERIFY(desk.begins("edge 200"));
    turnWheel(desk, -60);
    turnWheel(desk, -60);
    QVERIFY(desk.begins("edge 300"));
    turnWheel(desk, 240);
    QVERIFY(desk.begins("edge 100"));
}

void TstProtocolResult::aListThatFitsLeavesTheWheelToThePanel()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    desk.section->search->setText(text("edge 99900"));
    QTRY_COMPARE(desk.section->search->countText(), text("1"));
    QTRY_COMPARE(desk.rows(), QStringList{text("edge 99900")});
    QVERIFY(!turnWheel(desk, -120));
    QCoreApplication::processEvents();
    QCOMPARE(desk.rows(), QStringList{text("edge 99900")});
}

void TstProtocolResult::keysMoveThroughTheWholeList()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    desk.press(Qt::Key_Down);
    QCOMPARE(desk.section->view->currentRow(), 0);
    desk.press(Qt::Key_Down);
    QCOMPARE(desk.section->view->currentRow(), 1);
    desk.press(Qt::Key_PageDown);
    QVERIFY(desk.begins("edge 300"));
    QCOMPARE(desk.section->view->currentRow(), 7);
    desk.press(Qt::Key_End);
    QTRY_COMPARE(desk.rows().constLast(), text("edge 99900"));
    QCOMPARE(desk.section->view->currentRow(), 7);
    desk.press(Qt::Key_Up);
    QCOMPARE(desk.section->view->currentRow(), 6);
    desk.press(Qt::Key_Home);
    QVERIFY(desk.begins("edge 100"));
    QCOMPARE(desk.section->view->currentRow(), 0);
}

void TstProtocolResult::enterBringsTheMarkedFrameIntoView()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    const double before = desk.wave.viewStart();
    desk.press(Qt::Key_Return); // no row is marked
    QCOMPARE(desk.wave.viewStart(), before);
    desk.press(Qt::Key_End);
    QTRY_COMPARE(desk.section->view->currentRow(), 7);
    desk.press(Qt::Key_Return);
    const double middle = desk.wave.viewStart() + desk.wave.ratioSasPix() * desk.wave.viewWidth() / 2;
    QVERIFY(qAbs(middle - 99900.0) < 100.0);
}

void TstProtocolResult::downLeadsFromTheSearchToTheRows()
{
    ResultDesk desk;
    QVERIFY(QTest::qWaitForWindowActive(desk.section.get()));
    QWidget *search = desk.section->search;
    search->setFocus();
    QTest::keyClick(search, Qt::Key_Down); // there are none
    QVERIFY(search->hasFocus());
    QVERIFY(desk.add(0));
    QTest::keyClicks(search, text("77"));
    QTRY_COMPARE(desk.section->search->countText(), text("19"));
    QTRY_COMPARE(desk.firstRow(), text("edge 7700"));
    QTest::keyClick(search, Qt::Key_Up);
    QVERIFY(search->hasFocus());
    const double before = desk.wave.viewStart();
    QTest::keyClick(search, Qt::Key_Down);
    QVERIFY(desk.section->view->hasFocus());
    QCOMPARE(desk.section->view->currentRow(), 0);
    QCOMPARE(desk.wave.viewStart(), before);
    desk.press(Qt::Key_Down);
    QCOMPARE(desk.section->view->currentRow(), 1);
    search->setFocus();
    QTest::keyClick(search, Qt::Key_Down); // back to the row that was left
    QCOMPARE(desk.section->view->currentRow(), 1);
}

void TstProtocolResult::enterInTheSearchShowsTheFirstThatWasFound()
{
    ResultDesk desk;
    QVERIFY(QTest::qWaitForWindowActive(desk.section.get()));
    QVERIFY(desk.add(0));
    QWidget *search = desk.section->search;
    search->setFocus();
    QTest::keyClicks(search, text("nowhere"));
    QTRY_VERIFY(desk.rows().isEmpty());
    QTest::keyClick(search, Qt::Key_Return);
    QVERIFY(search->hasFocus());
    desk.section->search->setText(text("edge 77"));
    QTRY_COMPARE(desk.firstRow(), text("edge 7700"));
    QTest::keyClick(search, Qt::Key_Return);
    QVERIFY(desk.section->view->hasFocus());
    const double middle = desk.wave.viewStart() + desk.wave.ratioSasPix() * desk.wave.viewWidth() / 2;
    QVERIFY(qAbs(middle - 7700.0) < 100.0);
}

void TstProtocolResult::aKeyLeadsToTheSearchFromAnywhere()
{
    ResultDesk desk;
    QVERIFY(QTest::qWaitForWindowActive(desk.section.get()));
    QVERIFY(desk.add(0));
    SearchEdit *search = desk.section->search;
    desk.click(1);
    desk.press(Qt::Key_F, Qt::ControlModifier);
    QVERIFY(search->hasFocus());
    QTest::keyClicks(search, text("edge 77"));
    QTRY_COMPARE(desk.firstRow(), text("edge 7700"));
    QTest::keyClick(search, Qt::Key_Down);
    QVERIFY(!search->hasFocus());
    desk.press(Qt::Key_F, Qt::ControlModifier); // what is typed now takes the place of the last search
    QCOMPARE(search->selectedText(), text("edge 77"));

    QTest::mouseClick(desk.section->btnExpand, Qt::LeftButton);
    QVERIFY(!search->isVisible());
    QTest::keyClick(desk.section.get(), Qt::Key_F, Qt::ControlModifier);
    QVERIFY(search->isVisible());
    QVERIFY(search->hasFocus());
}

void TstProtocolResult::choosingTheFormatInUseKeepsTheMarkedRow()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    ProtocolItem item(desk.desk.manager.get(), 0, {});
    item.show();
    desk.click(2);
    QTRY_COMPARE(desk.section->view->currentRow(), 2);
    QTRY_COMPARE(desk.firstRow(), text("edge 100"));
    const auto choose = [&item](int format) {
        const MenuDriver<QMenu> driver([format](QMenu &menu) {
            if (QMenu *formats = menu.actions().at(1)->menu()) {
                menu.setActiveAction(formats->menuAction());
                QTest::keyClick(&menu, Qt::Key_Right);
            } else {
                const QPoint place = menu.actionGeometry(menu.actions().at(format)).center();
                QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier, place);
            }
        });
        QTest::mouseClick(item.findChild<MyButton *>(text("setting")), Qt::LeftButton);
        QTRY_COMPARE(driver.count, 2);
        QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
    };
    const int saves = desk.desk.saves;
    choose(int(DisplayBase::Hexadecimal));
    QCOMPARE(desk.desk.saves, saves);
    QCOMPARE(desk.section->view->currentRow(), 2);
    choose(int(DisplayBase::Binary));
    QCOMPARE(desk.desk.saves, saves + 1);
    QCOMPARE(desk.desk.manager->displayFormat(0), int(DisplayBase::Binary));
}

void TstProtocolResult::keysOfTheListAreNoShortcutsOfTheWindow_data()
{
    QTest::addColumn<int>("key");
    for (const int key : {int(Qt::Key_Up), int(Qt::Key_Down), int(Qt::Key_PageUp), int(Qt::Key_PageDown),
                          int(Qt::Key_Home), int(Qt::Key_End), int(Qt::Key_Return), int(Qt::Key_Enter),
                          int(Qt::CTRL) | int(Qt::Key_C), int(Qt::CTRL) | int(Qt::SHIFT) | int(Qt::Key_C)}) {
        QTest::newRow(qPrintable(QKeySequence(key).toString())) << key;
    }
}

void TstProtocolResult::keysOfTheListAreNoShortcutsOfTheWindow()
{
    QFETCH(int, key);
    const ResultDesk desk;
    const QShortcut ofWindow(QKeySequence(key), desk.section.get());
    const QSignalSpy taken(&ofWindow, &QShortcut::activated);
    desk.section->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(desk.section.get()));
    desk.section->view->setFocus();
    QTest::keyClick(desk.section->view, Qt::Key(key & ~int(Qt::KeyboardModifierMask)),
                    Qt::KeyboardModifiers(key & int(Qt::KeyboardModifierMask)));
    QCOMPARE(taken.size(), 0);
    desk.section->btnSetting->setFocus();
    QTest::keyClick(desk.section->btnSetting, Qt::Key(key & ~int(Qt::KeyboardModifierMask)),
                    Qt::KeyboardModifiers(key & int(Qt::KeyboardModifierMask)));
    QCOMPARE(taken.size(), 1);
}

void TstProtocolResult::aFrameTellsThatTheListHasTheFocus()
{
    const ResultDesk desk;
    QWidget &rows = *desk.section->view->viewport();
    QVERIFY(QTest::qWaitForWindowActive(desk.section.get()));
    const auto sides = [&rows] {
        const QImage seen = rows.grab().toImage();
        const QPoint middle = seen.rect().center();
        return QVector<QColor>{seen.pixelColor(0, middle.y()), seen.pixelColor(seen.width() - 1, middle.y()),
                               seen.pixelColor(middle.x(), 0), seen.pixelColor(middle.x(), seen.height() - 1)};
    };
    desk.section->search->setFocus();
    QCOMPARE(sides(), QVector<QColor>(4, gGreys[8]));
    desk.section->view->setFocus();
    QCOMPARE(sides(), QVector<QColor>(4, gGreys[0]));
}

void TstProtocolResult::copyTakesTheMarkedRowOrThePage()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    QApplication::clipboard()->setText(text("before"));
    desk.press(Qt::Key_C, Qt::ControlModifier); // no row is marked
    QCOMPARE(QApplication::clipboard()->text(), text("before"));
    desk.press(Qt::Key_Down);
    desk.press(Qt::Key_Down);
    desk.press(Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), text("edge 200"));
    desk.press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(QApplication::clipboard()->text(), desk.rows().join(QLatin1Char('\n')));
}

void TstProtocolResult::aDoubleClickAsksForTheSettingsOfTheFirstClicksRow()
{
    ResultDesk desk;
    QVERIFY(desk.add(7)); // an edge each 800 samples
    QVERIFY(desk.add(0));
    QTRY_COMPARE(desk.section->search->countText(), text("1123"));
    desk.wave.setViewStart(750.0);
    QTRY_COMPARE(desk.rows().mid(0, 3), (QStringList{text("edge 800"), text("edge 800"), text("edge 900")}));
    const QSignalSpy asked(desk.section.get(), &ProtocolResult::settingsWanted);
    desk.click(2);
    QTest::mouseDClick(desk.section->view->viewport(), Qt::LeftButton, Qt::NoModifier, desk.placeOf(2));
    QCOMPARE(asked.size(), 1);
    QCOMPARE(asked.at(0).at(0).toInt(), 1);
}

void TstProtocolResult::aDoubleClickBelowTheRowsAsksForNothing()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    desk.click(2);
    desk.section->search->setText(text("edge 77700"));
    QTRY_COMPARE(desk.rows(), QStringList{text("edge 77700")});
    const QSignalSpy asked(desk.section.get(), &ProtocolResult::settingsWanted);
    QWidget *target = desk.section->view->viewport();
    const QPoint below(20, 3 * ResultView::gridHeight());
    QTest::mouseClick(target, Qt::LeftButton, Qt::NoModifier, below);
    QTest::mouseDClick(target, Qt::LeftButton, Qt::NoModifier, below);
    QCOMPARE(asked.size(), 0);
}

void TstProtocolResult::theMenuOfARowCopiesItAndTellsWhoseItIs()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.add(1)); // "edge 200" comes of both, the second one of this
    QTRY_COMPARE(desk.rows().mid(1, 2), (QStringList{text("edge 200"), text("edge 200")}));
    QSignalSpy wanted(desk.section.get(), &ProtocolResult::settingsWanted);
    QStringList entries;
    int choice = 0;
    const MenuDriver<QMenu> driver([&](QMenu &menu) {
        entries.clear();
        for (const QAction *action : menu.actions()) {
            entries.append(action->text());
        }
        const QPoint place = menu.actionGeometry(menu.actions().at(choice)).center();
        QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier, place);
    });
    const auto choose = [&](int row, int entry) {
        choice = entry;
        const int seen = driver.count;
        const QPoint place = desk.section->view->viewport()->mapTo(desk.section.get(), desk.placeOf(row));
        QTest::mouseClick(desk.section->windowHandle(), Qt::RightButton, Qt::NoModifier, place);
        QTRY_COMPARE(driver.count, seen + 1);
        QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
    };
    choose(0, 0);
    QCOMPARE(entries, (QStringList{text("Copy Row\tCtrl+C"), text("Copy Rows on Show\tCtrl+Shift+C"), QString(),
                                   text("Settings of %1...").arg(desk.desk.manager->analyzerTitle(0))}));
    QCOMPARE(QApplication::clipboard()->text(), text("edge 100"));
    choose(2, 1);
    QCOMPARE(QApplication::clipboard()->text(), desk.rows().join(QLatin1Char('\n')));
    choose(2, 3);
    QTRY_COMPARE(wanted.size(), 1);
    QCOMPARE(wanted.at(0).at(0).toInt(), 1);
}

void TstProtocolResult::theMenuOfAListWithoutAMarkedRowIsAboutThePage()
{
    ResultDesk desk;
    QVector<bool> enabled;
    const MenuDriver<QMenu> driver([&enabled](QMenu &menu) {
        enabled.clear();
        for (const QAction *action : menu.actions()) {
            enabled.append(action->isEnabled());
        }
    });
    const auto open = [&] {
        const int seen = driver.count;
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint());
        QApplication::sendEvent(desk.section->view->viewport(), &event);
        QTRY_COMPARE(driver.count, seen + 1);
        QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
    };
    open();
    QCOMPARE(enabled, (QVector<bool>{false, false}));
    QVERIFY(desk.add(0));
    open();
    QCOMPARE(enabled, (QVector<bool>{false, true}));
    desk.press(Qt::Key_Down);
    open();
    QCOMPARE(enabled, (QVector<bool>{true, true, true, true}));
}

void TstProtocolResult::theMenuHidesAnAnalyzerAndKeepsTheEntriesOfAll()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.add(1));
    QTRY_COMPARE(desk.section->search->countText(), text("1498"));
    QTest::mouseClick(desk.section->btnSetting, Qt::LeftButton);
    QCOMPARE(desk.section->menu->actions().size(), 2);
    QVERIFY(desk.section->menu->actions().constFirst()->isChecked());
    desk.section->menu->actions().constFirst()->trigger();
    QTRY_COMPARE(desk.section->search->countText(), text("499"));
    desk.section->openMenuDig();
    QVERIFY(!desk.section->menu->actions().constFirst()->isChecked());
    desk.section->menu->actions().constLast()->trigger();
    QTRY_VERIFY(desk.rows().isEmpty());
    QCOMPARE(desk.section->search->countText(), QString());
    desk.section->openMenuDig();
    QCOMPARE(desk.section->menu->actions().size(), 2);
    desk.desk.manager->removeAnalyzer(1); // while the menu is open
    desk.section->menu->actions().constLast()->trigger();
    QCOMPARE(desk.desk.manager->count(), 1);
    desk.section->menu->close();
}

void TstProtocolResult::theMenuTranslatesTheNamesOfTheAnalyzers()
{
    const StarredTexts language("Lie", {"Lie"});
    ResultDesk desk;
    QVERIFY(desk.add(0));
    desk.section->openMenuDig();
    QCOMPARE(desk.section->menu->actions().constFirst()->text(), text("*Lie"));
    desk.section->menu->close();
}

void TstProtocolResult::theMenuSaysSoWhenThereIsNone()
{
    ResultDesk desk;
    desk.section->openMenuDig();
    QCOMPARE(desk.section->menu->actions().size(), 1);
    QCOMPARE(desk.section->menu->actions().constFirst()->text(), text("None"));
    QVERIFY(!desk.section->menu->actions().constFirst()->isEnabled());
    desk.section->menu->close();
}

void TstProtocolResult::aFoldedSectionHidesAllButItsTitle()
{
    ResultDesk desk;
    const auto *title = desk.section->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(title->text(), text("Decoded Results"));
    const auto look = [](const MyButton *button) { return button->icon().cacheKey(); };
    QCOMPARE(look(desk.section->btnSetting), sharedIcon(text(":/res/btnSetting")).cacheKey());
    QCOMPARE(look(desk.section->btnExpand), sharedIcon(text(":/res/btnExpand")).cacheKey());
    QTest::mouseClick(desk.section->btnExpand, Qt::LeftButton);
    QCOMPARE(look(desk.section->btnExpand), sharedIcon(text(":/res/btnCollapse")).cacheKey());
    QVERIFY(title->isVisible());
    QVERIFY(!desk.section->expanded);
    QVERIFY(desk.section->btnSetting->isHidden());
    QVERIFY(desk.section->search->isHidden());
    QVERIFY(desk.section->view->isHidden());
    QTest::mouseClick(desk.section->btnExpand, Qt::LeftButton);
    QVERIFY(desk.section->view->isVisible());
}

void TstProtocolResult::aClearedSectionIsEmptyUntilTheNextReset()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QTest::keyClicks(desk.section->search, text("77"));
    QTRY_COMPARE(desk.section->search->countText(), text("19"));
    desk.section->clear();
    QVERIFY(desk.rows().isEmpty());
    QCOMPARE(desk.section->search->text(), QString());
    QCOMPARE(desk.section->search->countText(), QString());
    QVERIFY(!desk.section->view->bar->isVisible());
    QCoreApplication::processEvents();
    QVERIFY(desk.rows().isEmpty());
    desk.wave.setViewStart(0.0);
    desk.section->slotWaveMoved();
    QVERIFY(desk.begins("edge 100"));
}

void TstProtocolResult::aPageOnItsWayToAClearedSectionIsNotShown()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    const QSignalSpy pages(desk.section->findChild<AnalyzerDataGen *>(), &AnalyzerDataGen::listChanged);
    desk.wave.setViewStart(5050.0);
    desk.section->clear();
    QVERIFY(!QTest::qWaitFor([&pages] { return !pages.isEmpty(); }, 20)); // one that was on its way would be here
    QVERIFY(desk.rows().isEmpty());
    desk.section->slotWaveMoved();
    QVERIFY(desk.begins("edge 5100"));
    QCOMPARE(pages.size(), 1);
}

void TstProtocolResult::aRowTooLongForItsPlaceHasATip()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    QToolTip::hideText();
    pointAt(desk, desk.placeOf(1));
    QVERIFY(!QToolTip::isVisible());
    desk.section->setFixedWidth(40);
    QTRY_VERIFY(desk.section->view->viewport()->width() < 40);
    QVERIFY(desk.section->view->fontMetrics().horizontalAdvance(text("edge 300")) > 34);
    pointAt(desk, desk.placeOf(2));
    QTRY_VERIFY(QToolTip::isVisible());
    QCOMPARE(QToolTip::text(), text("edge 300"));
    QToolTip::hideText();
}

void TstProtocolResult::theTipOfARowStaysWhileThePointerRests()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    desk.section->setFixedWidth(40);
    QTRY_VERIFY(desk.section->view->viewport()->width() < 40);
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());
    QWidget *target = desk.section->view->viewport();
    const QPoint place = desk.placeOf(2);
    for (int i = 0; i < 2; ++i) {
        QHelpEvent rest(QEvent::ToolTip, place, target->mapToGlobal(place));
        QApplication::sendEvent(target, &rest);
        QVERIFY(QToolTip::isVisible());
        QCOMPARE(QToolTip::text(), text("edge 300"));
    }
    QToolTip::hideText();
}

void TstProtocolResult::theTipOfARowIsPlainText()
{
    const ResultDesk desk;
    desk.section->setFixedWidth(40);
    QTRY_VERIFY(desk.section->view->viewport()->width() < 40);
    qobject_cast<QStringListModel *>(desk.section->view->model())->setStringList({text("<b>0x3C</b> & more")});
    pointAt(desk, desk.placeOf(0));
    QVERIFY(QToolTip::isVisible());
    QCOMPARE(QToolTip::text(), text("&lt;b&gt;0x3C&lt;/b&gt; &amp; more"));
    QToolTip::hideText();
}

void TstProtocolResult::theTipGoesOffTheRowsAndComesAnewAtAnotherHeightAlone()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    desk.section->setFixedWidth(40);
    QTRY_VERIFY(desk.section->view->viewport()->width() < 40);
    desk.section->search->setText(text("edge 77700"));
    QTRY_COMPARE(desk.rows().size(), 1);
    const QPoint onRow = desk.placeOf(0);
    pointAt(desk, onRow);
    QVERIFY(QToolTip::isVisible());
    pointAt(desk, QPoint(onRow.x(), 3 * ResultView::gridHeight())); // below the rows
    QTRY_VERIFY(!QToolTip::isVisible());
    pointAt(desk, onRow);
    QVERIFY(QToolTip::isVisible());
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());
    pointAt(desk, onRow + QPoint(4, 0));
    QVERIFY(!QToolTip::isVisible());
    pointAt(desk, onRow + QPoint(4, 1));
    QVERIFY(QToolTip::isVisible());
    QToolTip::hideText();
}

void TstProtocolResult::theViewIsAWholeNumberOfRowsHigh()
{
    ResultView view;
    const QSignalSpy rows(&view, &ResultView::listRowChanged);
    view.resize(200, 5 * ResultView::gridHeight() + 7);
    view.show();
    QTRY_COMPARE(view.height(), 5 * ResultView::gridHeight());
    QCOMPARE(view.rowsThatFit(), 5);
    QCOMPARE(rows.constLast().at(0).toInt(), 5);
    QCOMPARE(view.bar->pageStep, qlonglong(view.height()));
    QCOMPARE(view.bar->geometry().right() + 1, view.width());
}

void TstProtocolResult::theRowsEndWithTheView()
{
    const ResultDesk desk;
    ResultView &view = *desk.section->view;
    view.setMinimumHeight(0);
    view.setMaximumHeight(QWIDGETSIZE_MAX);
    for (int height = 400; height < 400 + ResultView::gridHeight(); ++height) {
        desk.section->resize(240, height);
        for (int time = 1; time <= 2; ++time) { // the panel gives it the same room again and again
            desk.section->layout()->invalidate();
            desk.section->layout()->activate();
            const int whole = view.rowsThatFit() * ResultView::gridHeight();
            QCOMPARE(view.height(), whole);
            QCOMPARE(view.viewport()->height(), whole);
            QCOMPARE(view.bar->height(), whole);
        }
    }
}

void TstProtocolResult::theListLooksAsTold_data()
{
    QTest::addColumn<int>("dpi");
    for (const int dpi : {96, 192}) {
        QTest::addRow("%d dpi", dpi) << dpi;
    }
}

void TstProtocolResult::theListLooksAsTold()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    const ResultDesk desk;
    const ResultView &view = *desk.section->view;
    QCOMPARE(view.gridSize(), QSize(10, std::max(dp(18), QFontMetrics(gFontMain).height())));
    QCOMPARE(view.bar->width(), dp(8));
    QCOMPARE(view.font().toString(), gFontMain.toString());
    QVERIFY(view.styleSheet().startsWith(
        text("QListView{background-color:#1f1f23;border:0px solid #7f7f7f;color:#dfdfdf;")));
    QCOMPARE(view.selectionMode(), QAbstractItemView::SingleSelection);
    QCOMPARE(view.editTriggers(), QAbstractItemView::EditTriggers(QAbstractItemView::NoEditTriggers));
    const auto *newFrames = desk.section->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(newFrames->interval(), 250); // four times a second
}

void TstProtocolResult::theTextsKeepClearOfTheFrame_data()
{
    theListLooksAsTold_data();
}

void TstProtocolResult::theTextsKeepClearOfTheFrame()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    const QImage image = desk.section->view->grab().toImage();
    const QRect page(0, 0, image.width(), ResultDesk::rowsOnShow * ResultView::gridHeight());
    const auto hasText = [&](int x) {
        for (int y = page.top(); y <= page.bottom(); ++y) {
            if (image.pixelColor(x, y) != QColor(0x1f, 0x1f, 0x23)) {
                return true;
            }
        }
        return false;
    };
    int x = 0;
    while (x < page.right() && !hasText(x)) {
        ++x;
    }
    QVERIFY2(x >= dp(3), qPrintable(QString::number(x)));
    QVERIFY2(x <= dp(6), qPrintable(QString::number(x)));
}

void TstProtocolResult::noPixelLiesBetweenTwoRows_data()
{
    QTest::addColumn<int>("dpi");
    for (const int dpi : {96, 120, 144, 192}) {
        QTest::addRow("%d dpi", dpi) << dpi;
    }
}

void TstProtocolResult::noPixelLiesBetweenTwoRows()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    const ResultView &view = *desk.section->view;
    for (int y = 0; y < view.height(); ++y) {
        QCOMPARE(view.indexAt(QPoint(20, y)).row(), y / ResultView::gridHeight());
    }
    const QPoint lastPixel(20, 4 * ResultView::gridHeight() - 1);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, lastPixel);
    QCOMPARE(view.currentRow(), 3);
}

void TstProtocolResult::framesComeWhileTheWorkerRuns()
{
    ResultDesk desk;
    SmpData long1(8, 0);
    CaptureBuilder{20'000'000, 100000000, 20}.fill(long1);
    desk.desk.manager->setCapture(&long1, 0);
    desk.wave.setDataSource(&long1);
    desk.wave.setViewWidth(1000);
    desk.desk.add(0);
    QTRY_COMPARE(desk.rows().size(), ResultDesk::rowsOnShow); // of a million
    QVERIFY(desk.desk.waitForWorkers());
    QTRY_COMPARE(desk.section->search->countText(), text("999999"));
    desk.wave.setDataSource(nullptr);
    desk.desk.manager->setCapture(nullptr, 0);
}

void TstProtocolResult::aFullPageStaysInItsPlaceWhileAWorkerRuns()
{
    ResultDesk desk({text("slow")});
    QVERIFY(desk.add(0));
    Analyzer *slow = desk.desk.manager->createAnalyzer(1);
    AnalyzerDesk::lineOf(*slow)->SetChannel(Channel(0, 1));
    QVERIFY(slow->GetAnalyzerSettings()->ApplyInterfaces());
    desk.desk.manager->addLibIndex = 1;
    desk.desk.manager->addAnalyzer(slow); // works until it is stopped
    QTRY_VERIFY(desk.section->findChild<AnalyzerDataGen *>()->isAtRest());
    QVERIFY(desk.begins("edge 100"));
    desk.section->view->bar->setValue(50 * qlonglong(ResultView::gridHeight())); // away from the wave's left edge
    QVERIFY(desk.begins("edge 5100"));
    QMetaObject::invokeMethod(desk.section.get(), "bringNewFrames");
    QTRY_VERIFY(desk.section->findChild<AnalyzerDataGen *>()->isAtRest());
    QCOMPARE(desk.firstRow(), text("edge 5100"));
    QVERIFY(desk.desk.manager->isWorkerRunning(1));
}

void TstProtocolResult::aSearchGetsOnWhileAWorkerRuns()
{
    SmpData longer(8, 0); // outlives who reads it
    ResultDesk desk({text("slow")});
    CaptureBuilder{10'000'000, 100000000, 20}.fill(longer);
    desk.desk.manager->setCapture(&longer, 0);
    desk.wave.setDataSource(&longer);
    QVERIFY(desk.add(0));
    Analyzer *slow = desk.desk.manager->createAnalyzer(1);
    AnalyzerDesk::lineOf(*slow)->SetChannel(Channel(0, 1));
    QVERIFY(slow->GetAnalyzerSettings()->ApplyInterfaces());
    desk.desk.manager->addLibIndex = 1;
    desk.desk.manager->addAnalyzer(slow); // works until it is stopped
    desk.section->search->setText(text("nowhere"));
    QTRY_VERIFY_WITH_TIMEOUT(desk.section->findChild<AnalyzerDataGen *>()->isAtRest(), 120000); // half a million frames
    desk.section->search->setText(text("edge 9999980")); // the last of all frames: the page is empty until the end
    // Asks for new frames every ten milliseconds, where the scan takes several times as long.
    const auto asksAndHasFound = [&desk] {
        QMetaObject::invokeMethod(desk.section.get(), "bringNewFrames");
        return desk.section->search->countText() == text("1");
    };
    QVERIFY(QTest::qWaitFor(asksAndHasFound, 120000));
    QCOMPARE(desk.rows(), QStringList{text("edge 9999980")});
    QVERIFY(desk.desk.manager->isWorkerRunning(1));
    desk.wave.setDataSource(nullptr);
    desk.desk.manager->setCapture(nullptr, 0);
}

void TstProtocolResult::aRowIsClickedWhileItsFrameIsGoing()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    QVERIFY(desk.begins("edge 100"));
    desk.desk.manager->captureStarts(); // results are gone, the rows are still on show
    desk.click(2);
    QTest::mouseDClick(desk.section->view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    desk.press(Qt::Key_End);
    QTRY_VERIFY(desk.rows().isEmpty());
    desk.click(0);
    desk.press(Qt::Key_Down);
    desk.press(Qt::Key_Return);
    QVERIFY(desk.rows().isEmpty());
}

void TstProtocolResult::aClickOutsideOfTheFramesLocatesTheFirstSample()
{
    ResultDesk desk;
    QVERIFY(desk.add(0));
    desk.wave.zoomToRange(0.0, 0.0);
    const double start = desk.wave.viewStart();
    const double ratio = desk.wave.ratioSasPix();
    desk.wave.setViewStart(50000.0);
    desk.section->listViewClickedSlot(QModelIndex()); // there is no such row
    QCOMPARE(desk.wave.viewStart(), start);
    QCOMPARE(desk.wave.ratioSasPix(), ratio);
}

void TstProtocolResult::everyPartHasANameForAScreenReader()
{
    const ResultDesk desk;
    QCOMPARE(desk.section->view->accessibleName(), text("Decoded Results"));
    QCOMPARE(desk.section->search->accessibleName(), text("Search"));
    QVERIFY(!desk.section->btnSetting->accessibleName().isEmpty());
    QCOMPARE(desk.section->btnExpand->accessibleName(), text("Collapse Decoded Results"));
}

LUX_GUI_TEST(TstProtocolResult)
#include "tst_ProtocolResult.moc"
