#pragma once

#include <QDialog>

class QTableView;

/// The dialog "Device Supported List": which model decodes what. Fixed text, whatever plug-ins are there; made once and
/// then shown again. Main thread.
class SupportTable : public QDialog {
    Q_OBJECT
public:
    explicit SupportTable(QWidget *parent = nullptr);

    [[nodiscard]] QTableView *table() const { return m_table; }

private:
    void buildTable();

    QTableView *m_table;
};
