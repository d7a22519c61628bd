#include "controls/Look.h"
#include "controls/MenuDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidgetAction>

class TstMenuDialog : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aClickInTheFormLeavesTheMenuOpen();
    void anActionThatMayHideTheMenuClosesIt_data();
    void anActionThatMayHideTheMenuClosesIt();
    void aButtonInTheFormWorksAndTheMenuStays();
    void theFormBelongsToTheMenu();
    void thePanelIsLight();

    void tabWalksFromControlToControlAndRoundAgain();
    void enterPressesTheFocusedButtonOrElseTheDefaultOne();
    void enterPressesAChoiceWhereThereIsNoDefaultButton();
    void keysThatAFieldLeavesOverDoNothingButEscape();
    void aMenuWithoutAFormKeepsItsKeys();
    void aMenuThatStepsAsideComesBackWhereItWas();
    void aMenuThatIsDismissedAsideStaysAway();
    void execLastsWhileTheMenuStandsAside();
    void aMenuMayGoWhileItStandsAside();
};

void TstMenuDialog::initTestCase()
{
    globalsFillTables();
    gDpi = 96;
}

void TstMenuDialog::aClickInTheFormLeavesTheMenuOpen()
{
    MenuDialog menu;
    auto *form = new QLabel(QStringLiteral("A form with some room"));
    form->setFixedSize(200, 80);
    QAction *action = menu.addForm(form);
    QSignalSpy activated(action, &QAction::triggered);
    menu.popup(QPoint(10, 10));
    QVERIFY(QTest::qWaitForWindowExposed(&menu));
    QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(action).center());
    QVERIFY(menu.isVisible());
    QCOMPARE(activated.size(), 1);
    QTest::keyClick(&menu, Qt::Key_Escape);
    QVERIFY(!menu.isVisible());
}

void TstMenuDialog::anActionThatMayHideTheMenuClosesIt_data()
{
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<bool>("closes");
    QTest::newRow("absent") << QVariant() << false;
    QTest::newRow("text true") << QVariant(QStringLiteral("true")) << true;
    QTest::newRow("true") << QVariant(true) << true;
    QTest::newRow("text false") << QVariant(QStringLiteral("false")) << false;
    QTest::newRow("other case") << QVariant(QStringLiteral("TRUE")) << false;
    QTest::newRow("number") << QVariant(1) << false;
}

void TstMenuDialog::anActionThatMayHideTheMenuClosesIt()
{
    QFETCH(QVariant, property);
    QFETCH(bool, closes);
    MenuDialog menu;
    QAction *action = menu.addAction(QStringLiteral("Something"));
    action->setProperty("canHideMenu", property);
    QSignalSpy activated(action, &QAction::triggered);
    menu.popup(QPoint(10, 10));
    QVERIFY(QTest::qWaitForWindowExposed(&menu));
    const QPoint place = menu.actionGeometry(action).center();
    QTest::mouseMove(&menu, place);
    QTest::mouseClick(&menu, Qt::LeftButton, {}, place);
    QCOMPARE(activated.size(), 1);
    QCOMPARE(menu.isVisible(), !closes);
}

void TstMenuDialog::aButtonInTheFormWorksAndTheMenuStays()
{
    MenuDialog menu;
    auto *form = new QWidget;
    form->setFixedSize(200, 80);
    auto *button = new QPushButton(QStringLiteral("Press"), form);
    menu.addForm(form);
    QSignalSpy clicked(button, &QPushButton::clicked);
    menu.popup(QPoint(10, 10));
    QVERIFY(QTest::qWaitForWindowExposed(&menu));
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(clicked.size(), 1);
    QVERIFY(menu.isVisible());
}

void TstMenuDialog::theFormBelongsToTheMenu()
{
    QPointer<QWidget> form = new QWidget;
    {
        MenuDialog menu;
        menu.addForm(form);
        QCOMPARE(menu.actions().size(), 1);
    }
    QVERIFY(form.isNull());
}

void TstMenuDialog::thePanelIsLight()
{
    MenuDialog menu;
    auto *form = new QLabel;
    form->setFixedSize(200, 80);
    menu.addForm(form);
    menu.popup(QPoint(10, 10));
    QVERIFY(QTest::qWaitForWindowExposed(&menu));
    const QImage image = menu.grab().toImage();
    QCOMPARE(image.pixelColor(image.width() / 2, image.height() / 2), QColor(0xf0, 0xf0, 0xf0));
}

// ---- keys in a form

namespace {

/// A menu with a field, a check box, a default button and another one.
struct FormMenu : MenuDialog {
    FormMenu()
    {
        auto *form = new QWidget;
        auto *column = new QVBoxLayout(form);
        for (QWidget *part : {static_cast<QWidget *>(field), static_cast<QWidget *>(box), static_cast<QWidget *>(first),
                              static_cast<QWidget *>(second)}) {
            column->addWidget(part);
        }
        first->setDefault(true);
        addForm(form);
        popup(QPoint(10, 10));
        isShown = QTest::qWaitForWindowExposed(this);
        field->setFocus();
    }
    QLineEdit *field = new QLineEdit;
    QCheckBox *box = new QCheckBox(QStringLiteral("Box"));
    QPushButton *first = new QPushButton(QStringLiteral("First"));
    QPushButton *second = new QPushButton(QStringLiteral("Second"));
    bool isShown = false;
};

} // namespace

void TstMenuDialog::tabWalksFromControlToControlAndRoundAgain()
{
    FormMenu menu;
    const QVector<QWidget *> parts{menu.field, menu.box, menu.first, menu.second};
    for (int i = 1; i < 9; ++i) {
        QTest::keyClick(menu.focusWidget(), Qt::Key_Tab);
        QCOMPARE(menu.focusWidget(), parts.at(i % 4));
    }
    QTest::keyClick(menu.focusWidget(), Qt::Key_Backtab);
    QCOMPARE(menu.focusWidget(), menu.second);
    QVERIFY(menu.isVisible());
    for (QWidget *part :
         {static_cast<QWidget *>(menu.field), static_cast<QWidget *>(menu.box), static_cast<QWidget *>(menu.first)}) {
        part->setEnabled(false);
    }
    menu.second->setFocus();
    QTest::keyClick(menu.second, Qt::Key_Tab);
    QCOMPARE(menu.focusWidget(), menu.second); // the only one keeps it
}

void TstMenuDialog::enterPressesTheFocusedButtonOrElseTheDefaultOne()
{
    FormMenu menu;
    const QSignalSpy first(menu.first, &QPushButton::clicked);
    const QSignalSpy second(menu.second, &QPushButton::clicked);
    QTest::keyClick(menu.field, Qt::Key_Return);
    QCOMPARE(first.size(), 1);
    QTest::keyClick(menu.box, Qt::Key_Enter);
    QCOMPARE(first.size(), 2);
    QVERIFY(!menu.box->isChecked());
    menu.second->setFocus();
    QTest::keyClick(menu.second, Qt::Key_Return);
    QCOMPARE(second.size(), 1);
    QCOMPARE(first.size(), 2);
    menu.first->setEnabled(false);
    menu.field->setFocus();
    QTest::keyClick(menu.field, Qt::Key_Return);
    QCOMPARE(first.size(), 2);
    QVERIFY(menu.isVisible());
}

void TstMenuDialog::enterPressesAChoiceWhereThereIsNoDefaultButton()
{
    FormMenu menu;
    menu.first->setDefault(false);
    menu.box->setFocus();
    QTest::keyClick(menu.box, Qt::Key_Return);
    QVERIFY(menu.box->isChecked());
}

void TstMenuDialog::keysThatAFieldLeavesOverDoNothingButEscape()
{
    FormMenu menu;
    const QSignalSpy activated(menu.actions().constFirst(), &QAction::triggered);
    for (const int key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_F1, Qt::Key_Home}) {
        QTest::keyClick(menu.field, Qt::Key(key));
        QCOMPARE(menu.focusWidget(), menu.field);
    }
    QVERIFY(menu.isVisible());
    QCOMPARE(activated.size(), 0);
    QTest::keyClick(menu.field, Qt::Key_Escape);
    QVERIFY(!menu.isVisible());
}

void TstMenuDialog::aMenuWithoutAFormKeepsItsKeys()
{
    MenuDialog menu;
    menu.addAction(QStringLiteral("One"));
    QAction *two = menu.addAction(QStringLiteral("Two"));
    menu.popup(QPoint(10, 10));
    QVERIFY(QTest::qWaitForWindowExposed(&menu));
    QTest::keyClick(&menu, Qt::Key_Down);
    QTest::keyClick(&menu, Qt::Key_Down);
    QCOMPARE(menu.activeAction(), two);
    const QSignalSpy activated(two, &QAction::triggered);
    QTest::keyClick(&menu, Qt::Key_Return);
    QCOMPARE(activated.size(), 1);
}

// ---- off the screen for a box

void TstMenuDialog::aMenuThatStepsAsideComesBackWhereItWas()
{
    FormMenu menu;
    const QPoint place = menu.pos();
    menu.second->setFocus();
    bool wasShown = true;
    bool wasPopup = true;
    menu.stepAside([&] {
        wasShown = menu.isVisible();
        wasPopup = QApplication::activePopupWidget() != nullptr;
    });
    QVERIFY(!wasShown && !wasPopup);
    QVERIFY(menu.isVisible());
    QCOMPARE(menu.pos(), place);
    QCOMPARE(menu.focusWidget(), menu.second);
}

void TstMenuDialog::aMenuThatIsDismissedAsideStaysAway()
{
    FormMenu menu;
    menu.stepAside([&] { menu.dismiss(); });
    QVERIFY(!menu.isVisible());
    menu.popup(QPoint(10, 10)); // and can be used again
    QVERIFY(menu.isVisible());
    menu.dismiss();
    QVERIFY(!menu.isVisible());
}

void TstMenuDialog::execLastsWhileTheMenuStandsAside()
{
    MenuDialog menu;
    menu.addForm(new QLabel(QStringLiteral("Form")));
    QStringList seen;
    QTimer::singleShot(0, &menu, [&] {
        menu.stepAside([&] { QCoreApplication::processEvents(); });
        QTimer::singleShot(0, &menu, [&] {
            seen += QStringLiteral("back");
            menu.stepAside([&] {
                menu.dismiss();
                seen += QStringLiteral("dismissed");
            });
        });
    });
    menu.exec(QPoint(10, 10));
    QCOMPARE(seen, QStringList({QStringLiteral("back"), QStringLiteral("dismissed")}));
}

void TstMenuDialog::aMenuMayGoWhileItStandsAside()
{
    auto *menu = new MenuDialog;
    menu->popup(QPoint(10, 10));
    menu->stepAside([menu] { delete menu; });
    QVERIFY(QApplication::activePopupWidget() == nullptr);
}

QTEST_MAIN(TstMenuDialog)
#include "tst_MenuDialog.moc"
