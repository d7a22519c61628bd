#pragma once

#include <QCursor>
#include <QPoint>
#include <QWidget>

/// Where the menu of a button pops up, on the screen: at the pointer when that is on the button, and below the button
/// otherwise, as when a key has opened it. Main thread.
[[nodiscard]] inline QPoint popupPlace(const QWidget &button)
{
    const QPoint pointer = QCursor::pos();
    const bool byMouse = button.rect().contains(button.mapFromGlobal(pointer));
    return byMouse ? pointer : button.mapToGlobal(button.rect().bottomLeft());
}
