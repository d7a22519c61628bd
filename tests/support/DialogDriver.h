#pragma once

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <functional>

/// Answers dialogs as a user does while this lives: each dialog of class `Dialog` that appears is handed to `act`, once
/// it is on the screen. What does not end by that is rejected, so that no test waits for a person.
template<class Dialog>
class DialogDriver : public QObject {
public:
    explicit DialogDriver(std::function<void(Dialog &)> act) : m_act(std::move(act)) { qApp->installEventFilter(this); }

    int count = 0; ///< dialogs seen

    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *dialog = qobject_cast<Dialog *>(object);
        if (dialog != nullptr && event->type() == QEvent::Show) {
            ++count;
            QTimer::singleShot(0, dialog, [this, dialog] {
                m_act(*dialog);
                QTimer::singleShot(0, dialog, [dialog] {
                    if (dialog->isVisible()) {
                        dialog->reject();
                    }
                });
            });
        }
        return false;
    }

private:
    std::function<void(Dialog &)> m_act;
};

/// Types `path` into Qt's own file dialog and presses its button.
inline void chooseFile(QFileDialog &dialog, const QString &path)
{
    auto *name = dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    if (!path.isEmpty()) {
        name->setText(path);
    }
    const auto buttons = dialog.findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->isDefault()) {
            button->click();
        }
    }
}

/// Presses the button of that text.
inline void pressButton(QWidget &dialog, const QString &text)
{
    const auto buttons = dialog.findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (button->text() == text) {
            button->click();
            return;
        }
    }
}
