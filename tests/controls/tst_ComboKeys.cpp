#include "controls/Look.h"
#include "controls/Style.h"

#include <QComboBox>
#include <QShortcut>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace {

/// A window with a combo box and a shortcut on one key.
struct Desk {
    explicit Desk(Qt::Key key)
    {
        box->addItems({QStringLiteral("1 MHz"), QStringLiteral("2 MHz"), QStringLiteral("5 MHz")});
        box->setCurrentIndex(1);
        dressComboBox(*box);
        layout.addWidget(box);
        layout.addWidget(other);
        shortcut.setKey(QKeySequence(key));
        QObject::connect(&shortcut, &QShortcut::activated, box, [this] { ++shortcuts; });
        window.show();
        shown = QTest::qWaitForWindowActive(&window);
        other->setFocus(Qt::TabFocusReason);
    }
    QWidget window;
    QVBoxLayout layout{&window};
    QComboBox *box = new QComboBox;
    QComboBox *other = new QComboBox;
    QShortcut shortcut{&window};
    int shortcuts = 0;
    bool shown = false;
};

} // namespace

class TstComboKeys : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aBoxReachedByKeyKeepsItsKeys_data();
    void aBoxReachedByKeyKeepsItsKeys();
    void otherKeysGoToTheWindow_data();
    void otherKeysGoToTheWindow();
    void afterAPressOfTheMouseTheKeysGoToTheWindow();
    void comingBackToTheWindowChangesNothing();
    void theWheelChangesABoxWithTheFocusOnly();
};

void TstComboKeys::initTestCase()
{
    globalsFillTables();
    globalsSetDpi(96);
}

void TstComboKeys::aBoxReachedByKeyKeepsItsKeys_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("index");
    QTest::newRow("up") << Qt::Key_Up << 0;
    QTest::newRow("down") << Qt::Key_Down << 2;
    QTest::newRow("home") << Qt::Key_Home << 0;
    QTest::newRow("end") << Qt::Key_End << 2;
    QTest::newRow("the digit of an entry") << Qt::Key_5 << 2;
}

void TstComboKeys::aBoxReachedByKeyKeepsItsKeys()
{
    QFETCH(Qt::Key, key);
    Desk desk(key);
    QVERIFY(desk.shown);
    desk.box->setFocus(Qt::TabFocusReason);
    QTest::keyClick(desk.box, key);
    QTEST(desk.box->currentIndex(), "index");
    QCOMPARE(desk.shortcuts, 0);
}

void TstComboKeys::otherKeysGoToTheWindow_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("plus") << Qt::Key_Plus;
    QTest::newRow("minus") << Qt::Key_Minus;
    QTest::newRow("equal") << Qt::Key_Equal;
    QTest::newRow("F5") << Qt::Key_F5;
}

void TstComboKeys::otherKeysGoToTheWindow()
{
    QFETCH(Qt::Key, key);
    Desk desk(key);
    desk.box->setFocus(Qt::TabFocusReason);
    QTest::keyClick(desk.box, key);
    QCOMPARE(desk.shortcuts, 1);
    QCOMPARE(desk.box->currentIndex(), 1);
}

void TstComboKeys::afterAPressOfTheMouseTheKeysGoToTheWindow()
{
    Desk desk(Qt::Key_Up);
    desk.box->setFocus(Qt::TabFocusReason);
    QTest::mouseClick(desk.box, Qt::LeftButton);
    desk.box->hidePopup();
    QTest::keyClick(desk.box, Qt::Key_Up);
    QCOMPARE(desk.shortcuts, 1);
    QCOMPARE(desk.box->currentIndex(), 1);
}

void TstComboKeys::comingBackToTheWindowChangesNothing()
{
    Desk desk(Qt::Key_Up);
    for (const auto reached : {Qt::TabFocusReason, Qt::MouseFocusReason}) {
        for (const auto back : {Qt::ActiveWindowFocusReason, Qt::PopupFocusReason}) {
            desk.box->setCurrentIndex(1);
            desk.shortcuts = 0;
            desk.other->setFocus(Qt::OtherFocusReason);
            desk.box->setFocus(reached);
            desk.other->setFocus(back);
            desk.box->setFocus(back);
            QTest::keyClick(desk.box, Qt::Key_Up);
            QCOMPARE(desk.shortcuts, reached == Qt::MouseFocusReason ? 1 : 0);
            QCOMPARE(desk.box->currentIndex(), reached == Qt::MouseFocusReason ? 1 : 0);
        }
    }
}

void TstComboKeys::theWheelChangesABoxWithTheFocusOnly()
{
    Desk desk(Qt::Key_F5);
    QVERIFY(desk.shown);
    const auto turn = [&desk] {
        const QPoint at(5, 5);
        QWheelEvent down(at, desk.box->mapToGlobal(at), {}, QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        down.accept();
        QCoreApplication::sendEvent(desk.box, &down);
        return down.isAccepted();
    };
    QVERIFY(!turn()); // left to what scrolls around the box
    QCOMPARE(desk.box->currentIndex(), 1);
    QVERIFY((desk.box->focusPolicy() & Qt::WheelFocus) != Qt::WheelFocus); // the first notch brings no focus
    desk.box->setFocus();
    QVERIFY(turn());
    QCOMPARE(desk.box->currentIndex(), 2);
}

QTEST_MAIN(TstComboKeys)
#include "tst_ComboKeys.moc"
