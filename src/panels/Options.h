#pragma once

#include <QDialog>

class QBoxLayout;
class QButtonGroup;
class QSpinBox;
class QStringList;

/// The dialog of the program's own options: four choices and what captures are kept, stored when it is accepted.
///
/// Animated zooming, the view after a capture and the colours take effect at once, without a repaint; what is kept with
/// the next capture; the check for updates at the next start. Main thread.
class Options : public QDialog {
    Q_OBJECT
public:
    /// @param checksAtStart  this build looks for newer versions at its start unless the first choice forbids it; told
    ///                       in that choice's tool tip, together with what is sent
    explicit Options(QWidget *parent = nullptr, bool checksAtStart = true);

public slots:
    /// Stores all choices and closes.
    void accept() override;

private:
    /// A group of radio buttons below `title`, which gets its blanks here; texts are translated. The buttons' ids are
    /// the stored `values`.
    QButtonGroup *addChoice(const QString &title, const QStringList &texts, const QVector<int> &values, int checked);

    void tellWhatIsSent(QWidget &box, bool checksAtStart);
    /// Which captures are kept, and how many.
    void addHistory();
    QSpinBox *addLimit(QBoxLayout &row, const QString &name, int most, int value);

    QButtonGroup *m_update = nullptr;
    QButtonGroup *m_animate = nullptr;
    QButtonGroup *m_view = nullptr;
    QButtonGroup *m_colour = nullptr;
    QButtonGroup *m_keep = nullptr;
    QSpinBox *m_captures = nullptr;
    QSpinBox *m_gigabytes = nullptr;
};
