#include "wave/AnalogTriggerParts.h"

#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "settings/Language.h"
#include "wave/SidebarLook.h"

#include <QKeyEvent>
#include <QWidget>

namespace {

/// Keys of a field with arrows, which would zoom the view.
bool belongsToField(const QKeyEvent &event)
{
    const int key = event.key();
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
}

} // namespace

QString AnalogTriggerParts::spoken(const QString &control)
{
    return ::tr("Analog trigger") + QStringLiteral(", ") + control;
}

MyButton *AnalogTriggerParts::makeZero(const QString &objectName, const QString &field, QWidget *parent)
{
    auto *button = new MyButton(sharedIcon(QStringLiteral(":/res/reset")), ::tr("Reset to Zero"), parent);
    button->setObjectName(objectName);
    dressFlat(*button);
    button->setRadius(dp(3));
    button->setIconSize(QSize(dp(14), dp(14)));
    button->setFixedSize(sidebarLine(), sidebarLine());
    button->setAccessibleName(spoken(field + QStringLiteral(", ") + button->toolTip()));
    return button;
}

bool AnalogTriggerParts::filterField(QObject *field, QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && belongsToField(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::Wheel && !static_cast<QWidget *>(field)->hasFocus()) {
        event->ignore(); // what lies around the field scrolls
        return true;
    }
    return false;
}
