#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

/// The small modal dialog of a long job: a title, a label, a bar and one button.
///
/// Reused: the owner sets the bar and the label before it shows the dialog again, with show() or with exec(). Escape
/// and the window's close box act exactly like the button, and do nothing while the button is hidden. Main thread.
class MyProgressDlg : public QDialog {
    Q_OBJECT
public:
    /// All texts are translated already.
    MyProgressDlg(const QString &title, const QString &label, const QString &button, QWidget *parent = nullptr);

    /// False: the button only emits rejected(), and the dialog stays until the job has really ended.
    bool closeOnButton = true;
    /// True: a progress of 100 or more accepts the dialog.
    bool autoAccept = false;

    void setLabelText(const QString &text);
    [[nodiscard]] QString labelText() const;
    /// The button keeps its place while it is hidden.
    void setButtonVisible(bool visible);
    /// What the bar shows, percent.
    [[nodiscard]] int progress() const;

public slots:
    /// Percent; below 0 counts as 0, above 100 as 100.
    void setProgress(int v);
    void reject() override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void fitHeight();

    QLabel *m_label;
    QProgressBar *m_bar;
    QPushButton *m_button;
};
