#pragma once

#include <QMessageBox>
#include <QString>

/// Shows a modal box with one button "Close" (translated) and returns when it is closed. Main thread.
/// The texts come in translated.
void showNotice(QWidget *parent, QMessageBox::Icon kind, const QString &title, const QString &text);
