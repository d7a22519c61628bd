#include "controls/AccessibleMenus.h"
#include "controls/Look.h"
#include "controls/MenuDialog.h"
#include "controls/MyButton.h"

#include <QAccessible>
#include <QCheckBox>
#include <QFrame>
#include <QTest>
#include <QVBoxLayout>

namespace {

/// A panel of one's own.
class Panel : public QWidget {
    Q_OBJECT
};

/// One with a frame, as the panels of the analog area.
class FramedPanel : public QFrame {
    Q_OBJECT
};

QStringList childNames(QWidget &widget)
{
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(&widget);
    QStringList names;
    for (int i = 0; i < face->childCount(); ++i) {
        names += face->child(i)->text(QAccessible::Name);
    }
    return names;
}

} // namespace

class TstAccessibleMenus : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        globalsFillTables();
        installAccessibleMenus();
        installAccessibleMenus();
    }
    void anOpenMenuIsAChildOfItsOwner();
    void theFormsOfAFramedPanelAreInTheTree();
    void aMenuMadeAfterItsOwnerWasAskedForIsFoundToo();
    void theFormsOfAMenuAreItsChildren();
    void aSelectedButtonIsChecked();
};

void TstAccessibleMenus::anOpenMenuIsAChildOfItsOwner()
{
    Panel panel;
    QMenu menu(&panel);
    menu.setAccessibleName(QStringLiteral("heights"));
    menu.addAction(QStringLiteral("x1"));
    QCOMPARE(childNames(panel), QStringList());
    panel.show();
    menu.popup(QPoint(0, 0));
    QCOMPARE(childNames(panel), QStringList{QStringLiteral("heights")});
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(&panel);
    QCOMPARE(face->indexOfChild(face->child(0)), 0);
    QCOMPARE(face->child(0)->role(), QAccessible::PopupMenu);
    QCOMPARE(face->child(0)->child(0)->text(QAccessible::Name), QStringLiteral("x1"));
    menu.hide();
    QCOMPARE(childNames(panel), QStringList());
    QCOMPARE(face->child(0), nullptr);
    QCOMPARE(face->child(-1), nullptr);
}

void TstAccessibleMenus::theFormsOfAFramedPanelAreInTheTree()
{
    FramedPanel panel;
    MyButton button(QStringLiteral("of the panel"), &panel);
    MenuDialog menu(&panel);
    menu.setAccessibleName(QStringLiteral("sensitivity"));
    menu.addForm(new QCheckBox(QStringLiteral("on")));
    panel.show();
    QCOMPARE(childNames(panel), QStringList{QStringLiteral("of the panel")});
    menu.popup(QPoint(0, 0));
    QCOMPARE(childNames(panel), (QStringList{QStringLiteral("of the panel"), QStringLiteral("sensitivity")}));
    QCOMPARE(QAccessible::queryAccessibleInterface(&panel)->role(), QAccessible::Border);
}

void TstAccessibleMenus::aMenuMadeAfterItsOwnerWasAskedForIsFoundToo()
{
    Panel panel;
    MyButton button(QStringLiteral("of the panel"), &panel);
    QCOMPARE(childNames(panel), QStringList{QStringLiteral("of the panel")});
    QMenu menu(&panel);
    menu.setAccessibleName(QStringLiteral("late"));
    menu.addAction(QStringLiteral("x1"));
    menu.popup(QPoint(0, 0));
    QCOMPARE(childNames(panel), (QStringList{QStringLiteral("of the panel"), QStringLiteral("late")}));
}

void TstAccessibleMenus::theFormsOfAMenuAreItsChildren()
{
    Panel panel;
    MenuDialog menu(&panel);
    auto *form = new QWidget;
    auto *column = new QVBoxLayout(form);
    column->addWidget(new QCheckBox(QStringLiteral("CH0")));
    menu.addForm(form);
    panel.show();
    menu.popup(QPoint(0, 0));
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(&panel)->child(0);
    QVERIFY(face != nullptr);
    QCOMPARE(face->object(), &menu);
    QCOMPARE(face->parent()->object(), &panel);
    QCOMPARE(face->child(0)->object(), form);
    QCOMPARE(childNames(*form), QStringList{QStringLiteral("CH0")});
}

void TstAccessibleMenus::aSelectedButtonIsChecked()
{
    MyButton plain(QStringLiteral("plain"));
    MyButton trigger(QStringLiteral("trigger"));
    trigger.setCheckable(true);
    const auto isChecked = [](MyButton &button) {
        return bool(QAccessible::queryAccessibleInterface(&button)->state().checked);
    };
    for (const bool on : {true, false, true}) {
        plain.setSelected(on);
        trigger.setSelected(on);
        QCOMPARE(isChecked(trigger), on);
        QVERIFY(!isChecked(plain));
    }
}

QTEST_MAIN(TstAccessibleMenus)
#include "tst_AccessibleMenus.moc"
