#include "app/Globals.h"
#include "wave/MenuDialog.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
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

QTEST_MAIN(TstMenuDialog)
#include "tst_MenuDialog.moc"
