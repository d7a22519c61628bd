#pragma once

#include "protocol/ExportOptions.h"

#include <QDialog>
#include <QList>

class QButtonGroup;
class QGroupBox;
class QRadioButton;
class QScrollArea;

/// Asks which of several kinds of file is to be written: one group for each option of the decoder. Main thread.
class ExportDialog : public QDialog {
    Q_OBJECT
public:
    /// The first choice is checked.
    explicit ExportDialog(const QVector<ExportOption> &options, QWidget *parent = nullptr);

    QList<QRadioButton *> exportButtons; ///< of all groups, in their order

public slots:
    void exportSavedClicked();
    void exportCancelClicked();

signals:
    /// The dialog has closed, and this is to be written.
    void chosen(const ExportChoice &choice);

private:
    [[nodiscard]] QScrollArea *makeGroups(const QVector<ExportOption> &options);
    [[nodiscard]] QGroupBox *makeGroup(const ExportOption &option, QButtonGroup &buttons);

    QVector<ExportChoice> m_choices; ///< of the same numbers as the buttons
};
