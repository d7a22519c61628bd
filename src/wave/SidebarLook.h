#pragma once

#include <QColor>
#include <QFont>
#include <QString>

class MyButton;
class QPainter;
class QSize;

/// What the sidebars of digital and analog channels have in common to the eye. GUI thread.

/// The height of the controls in a line, and the side of a small button: device pixels.
[[nodiscard]] int sidebarLine();

/// The font, made smaller where it would not fit: the lowest row has the same height whatever the application's font.
/// @param pixels  device pixels
[[nodiscard]] QFont atMost(QFont font, int pixels);

/// The font of a sidebar's controls, as a style sheet: a font that a widget is given does not reach the parts of one
/// that has a sheet.
[[nodiscard]] QString sidebarFontStyle(const QFont &font);
/// The height of a field in that font.
[[nodiscard]] int sidebarFieldHeight(const QFont &font);

/// A small button without a face of its own.
void dressFlat(MyButton &button);

/// The frame around the buttons of a trigger, for the frame of that name.
[[nodiscard]] QString triggerFrameStyle(const QString &objectName);

/// Ground and bevel of a sidebar, and the column of its number in the channel's colour.
void paintSidebar(QPainter &painter, const QSize &size, int numberWidth, const QColor &color);
