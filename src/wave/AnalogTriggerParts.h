#pragma once

#include <QString>

class MyButton;
class QEvent;
class QObject;
class QWidget;

/// What the lines of the analog trigger's controls have in common. GUI thread.
namespace AnalogTriggerParts {

inline constexpr int leastField = 40; ///< width of a field, pixels at 96 dpi: the column decides, not the style

/// What a screen reader says for one of them.
[[nodiscard]] QString spoken(const QString &control);
/// A button that sets the field beside it to zero.
/// @param field  what it is of, for a screen reader
[[nodiscard]] MyButton *makeZero(const QString &objectName, const QString &field, QWidget *parent);
/// To be asked by an event filter of the fields: keys that would zoom the view are the field's, and the wheel is that
/// of what lies around it, unless it has the focus. @return true when the event goes no further
[[nodiscard]] bool filterField(QObject *field, QEvent *event);

} // namespace AnalogTriggerParts
