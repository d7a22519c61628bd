#pragma once

#include <QMessageBox>
#include <QString>

/// Shows a modal box with one button "Close" (translated) and returns when it is closed. Main thread.
/// The texts come in translated.
/// @param textStyle  style sheet of the text, on a light ground; empty for the program's dark look
void showNotice(QWidget *parent, QMessageBox::Icon kind, const QString &title, const QString &text,
                const QString &textStyle = QString());
