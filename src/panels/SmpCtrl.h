#pragma once

#include <QWidget>

class MyButton;
class QProgressBar;

/// The start and stop controls of the sampling bar.
///
/// Built for the device of the moment and thrown away with it. It starts and stops nothing: whether a capture may begin
/// is for the session to say. The analog model has three buttons and shows the progress here; all others have one, and
/// show the progress in a dialog. Main thread.
class SmpCtrl : public QWidget {
    Q_OBJECT
public:
    explicit SmpCtrl(QWidget *parent = nullptr);

    MyButton *btnSingle = nullptr;
    MyButton *btnAuto = nullptr; ///< null but for the analog model
    MyButton *btnStop = nullptr; ///< null but for the analog model
    QProgressBar *smpBar = nullptr;

    /// The look of an instrument that is there; the buttons work in both looks, since a capture without an instrument
    /// is a simulated one.
    void showConnected(bool connected);
    /// The bar at 0, for a capture that is about to begin. Only the analog model shows it.
    void beginProgress();
    /// Percent; limited to 0 to 100. Only the analog model shows it.
    void setProgress(int percent);
    void hideProgress();

signals:
    /// The user wants a capture, or the end of the one that runs.
    void startAsked();
    void stopAsked();

public slots:
    /// Nothing: repeated capture does not exist.
    void autoClickedSlot();
    void normalClickedSlot();
    void singleClickedSlot();
    void stopClickedSlot();

private:
    MyButton *addButton(const QString &icon, const QString &name, void (SmpCtrl::*slot)());
    bool m_analog;
};
