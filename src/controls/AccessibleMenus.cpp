#include "controls/AccessibleMenus.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QMenu>

namespace {

/// A widget with the menus that belong to it, while they are open, behind its other children.
class AccessibleMenuOwner : public QAccessibleWidget {
public:
    AccessibleMenuOwner(QWidget *widget, QAccessible::Role role) : QAccessibleWidget(widget, role) {}

    [[nodiscard]] int childCount() const override { return QAccessibleWidget::childCount() + openMenus().size(); }

    [[nodiscard]] QAccessibleInterface *child(int index) const override
    {
        const int own = QAccessibleWidget::childCount();
        if (index < own) {
            return QAccessibleWidget::child(index);
        }
        return QAccessible::queryAccessibleInterface(openMenus().value(index - own));
    }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override
    {
        const int place = child == nullptr ? -1 : openMenus().indexOf(qobject_cast<QMenu *>(child->object()));
        return place < 0 ? QAccessibleWidget::indexOfChild(child) : QAccessibleWidget::childCount() + place;
    }

private:
    [[nodiscard]] QList<QMenu *> openMenus() const
    {
        QList<QMenu *> open;
        for (QMenu *menu : widget()->findChildren<QMenu *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (menu->isVisible()) {
                open.append(menu);
            }
        }
        return open;
    }
};

/// The menu with forms: Qt would list its actions, which have no texts.
class AccessibleForms : public AccessibleMenuOwner {
public:
    explicit AccessibleForms(QWidget *menu) : AccessibleMenuOwner(menu, QAccessible::Dialog) {}

    [[nodiscard]] QAccessibleInterface *parent() const override
    {
        QWidget *owner = widget()->parentWidget();
        return owner != nullptr ? QAccessible::queryAccessibleInterface(owner) : AccessibleMenuOwner::parent();
    }
};

/// Asked for each class of an object, from its own up to QObject. "QFrame" and "QWidget" are reached by what Qt knows
/// no better; the roles are those that it gives them.
QAccessibleInterface *makeInterface(const QString &className, QObject *object)
{
    auto *widget = qobject_cast<QWidget *>(object);
    if (widget != nullptr && className == QLatin1String("MenuDialog")) {
        return new AccessibleForms(widget);
    }
    if (widget != nullptr && className == QLatin1String("QFrame")) {
        return new AccessibleMenuOwner(widget, QAccessible::Border);
    }
    const bool isPanel = widget != nullptr && className == QLatin1String("QWidget");
    return isPanel ? new AccessibleMenuOwner(widget, QAccessible::Client) : nullptr;
}

} // namespace

void installAccessibleMenus()
{
    static const bool once = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(once)
}
