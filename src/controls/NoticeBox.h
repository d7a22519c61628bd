#pragma once

#include <QMessageBox>
#include <QString>

/// Shows a modal box with one button "Close" (translated) and returns when it is closed. Main thread.
/// The texts come in translated.
/// @param textStyle  style sheet of the text, on a light ground; empty for the program's dark look
void showNotice(QWidget *parent, QMessageBox::Icon kind, const QString &title, const QString &text,
                const QString &textStyle = QString());

/// Keeps the lines of the box's text whole as far as they are no wider than dp(400) and the screen has the room, and
/// wraps longer ones there: Qt's own limit is a count of pixels, so that a box gets narrow as the screen gets fine.
/// Call it last, before the box is shown.
void fitNotice(QMessageBox &box);
