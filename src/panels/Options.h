#pragma once

#include <QDialog>

class QBoxLayout;
class QButtonGroup;
class QStringList;

/// The dialog of the program's own options: four choices, stored when it is accepted.
///
/// Animated zooming, the view after a capture and the colours take effect at once, without a repaint; the check for
/// updates at the next start. Main thread.
class Options : public QDialog {
    Q_OBJECT
public:
    explicit Options(QWidget *parent = nullptr);

public slots:
    /// Stores all four choices and closes.
    void accept() override;

private:
    /// A group of radio buttons below `title`, which gets its blanks here; texts are translated. The buttons' ids are
    /// the stored `values`.
    QButtonGroup *addChoice(const QString &title, const QStringList &texts, const QVector<int> &values, int checked);

    QButtonGroup *m_update = nullptr;
    QButtonGroup *m_animate = nullptr;
    QButtonGroup *m_view = nullptr;
    QButtonGroup *m_colour = nullptr;
};
