#include "controls/MyButton.h"
#include "controls/Style.h"
#include "device/DeviceGlobals.h"
#include "measure/Annotations.h"
#include "measure/TimingMarkerPair.h"
#include "measure/TimingMarkerTip.h"
#include "panels/PanelDevice.h"
#include "support/BoxCloser.h"
#include "support/CaptureBuilder.h"
#include "support/GuiTestMain.h"

#include <QSignalSpy>
#include <QVBoxLayout>

namespace {

/// The letters of the listed pairs, in order.
QString letters(const Annotations &section)
{
    QString all;
    for (const TimingMarkerPair *pair : section.pairs) {
        all += pairLetter(pair->groupId);
    }
    return all;
}

/// The letters as they stand on the screen, from the top.
QString shownLetters(const Annotations &section)
{
    QString all;
    for (int i = 0; i < section.pairsLayout->count(); ++i) {
        all += pairLetter(qobject_cast<TimingMarkerPair *>(section.pairsLayout->itemAt(i)->widget())->groupId);
    }
    return all;
}

void add(Annotations &section, int times = 1)
{
    for (int i = 0; i < times; ++i) {
        QTest::mouseClick(section.btnAdd, Qt::LeftButton);
    }
}

/// Notes the style of the next message box's text and the colour of its ground.
class BoxPainter : public QObject {
public:
    BoxPainter() { qApp->installEventFilter(this); }
    QString textStyle;
    QColor ground;

    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *box = qobject_cast<QMessageBox *>(object);
        if (box != nullptr && event->type() == QEvent::Show) {
            textStyle = box->findChild<QLabel *>(QStringLiteral("qt_msgbox_label"))->styleSheet();
            ground = box->grab().toImage().pixelColor(1, 1);
        }
        return false;
    }
};

} // namespace

/// The section "Timing Marker Pairs".
class TstAnnotations : public QObject {
    Q_OBJECT
private slots:
    void eachAddTakesTheNextLetterAndTellsItsFirstMarker();
    void aRemovedLetterIsTakenAgainAndStandsInItsPlace();
    void removingInAnyOrderLeavesTheOthers();
    void removingTellsTheFirstMarker();
    void removingAPairThatIsNotThereDoesNothing();
    void aSixthAddShowsABoxAndChangesNothing();
    void theBoxHasBlackTextOnALightGround();
    void aPairThatTheViewMadeIsPlacedAndTellsNothing();
    void aPairThatTheViewMadeIsNotListedTwice();
    void timesAreWrittenToTheirMarker();
    void timesOfAPairWithoutRowAreDropped();
    void idsAndTypesOfNobodyAreIgnored();
    void theClicksOfARowArePassedOn();
    void anotherDeviceEmptiesTheOpenSection();
    void foldingHidesTheRowsAndTheAddButton();
    void tabGoesThroughTheRowsInTheirOrder();
};

void TstAnnotations::eachAddTakesTheNextLetterAndTellsItsFirstMarker()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    QSignalSpy added(&section, &Annotations::addPairClicked);
    add(section, 5);
    QCOMPARE(letters(section), QStringLiteral("ABCDE"));
    QCOMPARE(added.count(), 5);
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(added.at(i).first().toInt(), 2 * i);
    }
}

void TstAnnotations::aRemovedLetterIsTakenAgainAndStandsInItsPlace()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section, 3);
    QTest::mouseClick(section.pairs.at(1)->btnRemove, Qt::LeftButton);
    QCOMPARE(letters(section), QStringLiteral("AC"));
    QCOMPARE(shownLetters(section), QStringLiteral("AC"));
    QSignalSpy added(&section, &Annotations::addPairClicked);
    add(section);
    QCOMPARE(letters(section), QStringLiteral("ABC"));
    QCOMPARE(shownLetters(section), QStringLiteral("ABC"));
    QCOMPARE(added.first().first().toInt(), 2);
}

void TstAnnotations::removingInAnyOrderLeavesTheOthers()
{
    const PanelDevice device(storage16Model);
    QList<int> groups{0, 1, 2, 3, 4};
    do {
        Annotations section(*gDev);
        add(section, 5);
        QString left = QStringLiteral("ABCDE");
        for (const int group : groups) {
            section.slotDeleteClicked(group);
            left.remove(pairLetter(group));
            QCOMPARE(letters(section), left);
            QCOMPARE(shownLetters(section), left);
        }
    } while (std::next_permutation(groups.begin(), groups.end()));
}

void TstAnnotations::removingTellsTheFirstMarker()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section, 3);
    QSignalSpy removed(&section, &Annotations::delPairClicked);
    QTest::mouseClick(section.pairs.at(2)->btnRemove, Qt::LeftButton);
    QCOMPARE(removed.count(), 1);
    QCOMPARE(removed.first().first().toInt(), 4);
}

void TstAnnotations::removingAPairThatIsNotThereDoesNothing()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section, 2);
    QSignalSpy removed(&section, &Annotations::delPairClicked);
    for (const int id : {2, 4, 5, -1, 1000}) {
        section.slotDeleteClicked(id);
    }
    QCOMPARE(removed.count(), 0);
    QCOMPARE(letters(section), QStringLiteral("AB"));
}

void TstAnnotations::aSixthAddShowsABoxAndChangesNothing()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section, 5);
    QSignalSpy added(&section, &Annotations::addPairClicked);
    BoxCloser closer;
    add(section);
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.title, QString());
    QCOMPARE(closer.seen.text, QStringLiteral("Sorry, timing marker pairs has reached the maximum number."));
    QCOMPARE(closer.seen.button, QStringLiteral("Close"));
    QCOMPARE(closer.seen.icon, QMessageBox::Information);
    QCOMPARE(added.count(), 0);
    QCOMPARE(letters(section), QStringLiteral("ABCDE"));
}

void TstAnnotations::theBoxHasBlackTextOnALightGround()
{
    const PanelDevice device(storage16Model);
    qApp->setStyleSheet(programStyle()); // dark boxes with light text
    Annotations section(*gDev);
    add(section, 5);
    BoxPainter painter;
    const BoxCloser closer;
    add(section);
    QCOMPARE(painter.textStyle, QStringLiteral("color:black;"));
    QVERIFY(painter.ground.lightness() > 200);
    qApp->setStyleSheet(QString());
}

void TstAnnotations::aPairThatTheViewMadeIsPlacedAndTellsNothing()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section);
    QSignalSpy added(&section, &Annotations::addPairClicked);
    section.slotTimingMarkerPairChanged(0, 8, QString(), QString());
    section.slotTimingMarkerPairChanged(0, 5, QString(), QString()); // by its second marker
    QCOMPARE(letters(section), QStringLiteral("ACE"));
    QCOMPARE(shownLetters(section), QStringLiteral("ACE"));
    QCOMPARE(added.count(), 0);
}

void TstAnnotations::aPairThatTheViewMadeIsNotListedTwice()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section);
    section.pairs.first()->pairTotal->setText(QStringLiteral("1us"));
    section.slotTimingMarkerPairChanged(0, 0, QString(), QString());
    QCOMPARE(letters(section), QStringLiteral("A"));
    QCOMPARE(section.pairs.first()->pairTotal->text(), QStringLiteral("1us"));
}

void TstAnnotations::timesAreWrittenToTheirMarker()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section, 2);
    section.slotTimingMarkerPairChanged(4, 3, QStringLiteral("-5ns"), QStringLiteral("###"));
    section.slotTimingMarkerPairChanged(4, 2, QStringLiteral("0ps"), QStringLiteral("5ns"));
    const TimingMarkerPair &pair = *section.pairs.at(1);
    QCOMPARE(pair.times.at(0)->text(), QStringLiteral("0ps"));
    QCOMPARE(pair.times.at(1)->text(), QStringLiteral("-5ns"));
    QCOMPARE(pair.pairTotal->text(), QStringLiteral("5ns"));
    QCOMPARE(section.pairs.at(0)->pairTotal->text(), QStringLiteral("###"));
}

void TstAnnotations::timesOfAPairWithoutRowAreDropped()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section);
    section.slotTimingMarkerPairChanged(4, 2, QStringLiteral("1us"), QStringLiteral("2us"));
    QCOMPARE(letters(section), QStringLiteral("A"));
    QCOMPARE(section.pairs.first()->times.first()->text(), QStringLiteral("###"));
}

void TstAnnotations::idsAndTypesOfNobodyAreIgnored()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    for (const int id : {-1, -2, 10, 1000000}) {
        section.slotTimingMarkerPairChanged(0, id, QString(), QString());
        section.slotTimingMarkerPairChanged(4, id, QStringLiteral("1us"), QString());
    }
    for (const int type : {1, 2, 3, 5, 9, -1}) {
        section.slotTimingMarkerPairChanged(type, 0, QString(), QString());
    }
    QVERIFY(section.pairs.isEmpty());
}

void TstAnnotations::theClicksOfARowArePassedOn()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{}.fill(*gDev->smpData);
    Annotations section(*gDev);
    add(section, 2);
    section.slotTimingMarkerPairChanged(4, 2, QStringLiteral("1us"), QStringLiteral("2us"));
    QSignalSpy marker(&section, &Annotations::markerPairClicked);
    QSignalSpy location(&section, &Annotations::locationPairClicked);
    QTest::mouseClick(section.pairs.at(1)->btnTiming2, Qt::LeftButton);
    QTest::mouseClick(section.pairs.at(1)->btnLocation, Qt::LeftButton);
    QCOMPARE(marker.first().first().toInt(), 3);
    QCOMPARE(location.first().first().toInt(), 2);
}

void TstAnnotations::anotherDeviceEmptiesTheOpenSection()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section, 3);
    section.slotBtnDeployClicked();
    QSignalSpy removed(&section, &Annotations::delPairClicked);
    section.reload(*gDev);
    QVERIFY(section.pairs.isEmpty());
    QVERIFY(section.expanded);
    QVERIFY(!section.pairsWidget->isHidden());
    QCOMPARE(removed.count(), 0);
    add(section);
    QCOMPARE(letters(section), QStringLiteral("A"));
}

void TstAnnotations::foldingHidesTheRowsAndTheAddButton()
{
    const PanelDevice device(storage16Model);
    Annotations section(*gDev);
    add(section);
    section.show();
    QVERIFY(QTest::qWaitForWindowExposed(&section));
    QTest::mouseClick(section.btnExpand, Qt::LeftButton);
    QVERIFY(!section.expanded);
    QVERIFY(section.pairsWidget->isHidden());
    QVERIFY(section.btnAdd->isHidden());
    QTest::mouseClick(section.btnExpand, Qt::LeftButton);
    QVERIFY(section.pairsWidget->isVisible());
    QVERIFY(section.btnAdd->isVisible());
}

void TstAnnotations::tabGoesThroughTheRowsInTheirOrder()
{
    const PanelDevice device(storage16Model);
    QWidget window;
    QVBoxLayout column(&window);
    Annotations section(*gDev);
    MyButton after(QStringLiteral("after"));
    column.addWidget(&section);
    column.addWidget(&after);
    add(section, 3);
    section.slotDeleteClicked(1);
    add(section);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    section.btnExpand->setFocus();
    QList<QWidget *> expected{section.btnAdd};
    for (const TimingMarkerPair *pair : section.pairs) {
        expected += {pair->btnLocation, pair->btnTiming1, pair->btnTiming2, pair->btnDeploy, pair->btnRemove};
    }
    expected.append(&after);
    for (QWidget *next : expected) {
        QTest::keyClick(&window, Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), next);
    }
    section.setParent(nullptr);
    after.setParent(nullptr);
}

LUX_GUI_TEST(TstAnnotations)
#include "tst_Annotations.moc"
