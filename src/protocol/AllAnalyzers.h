#pragma once

#include <QDialog>
#include <QStringList>

class QListWidget;
class QPushButton;
class SearchEdit;

/// The dialog "All Protocol Analyzers": a list to search and to choose from. A search picks the first that it finds,
/// and Up and Down go on from there while more is typed. Of fixed size, made once and then shown again. Main thread.
class AllAnalyzers : public QDialog {
    Q_OBJECT
public:
    explicit AllAnalyzers(QWidget *parent = nullptr);

    /// What there is to choose from, in this order; the same ones each time, though their names may change.
    void setNames(const QStringList &names);
    /// Shows the dialog until the user has chosen. @return the place of the chosen one in the list, -1 for none
    [[nodiscard]] int choose();

signals:
    /// The table of models is asked for.
    void supportWanted();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void slotSearchChanged(const QString &text);
    void moveByKey(int key);
    void slotListWidgetClicked();
    void slotListWidgetDoubleClicked();
    void finish(int result);

private:
    void selectPicked();
    [[nodiscard]] QWidget *makeTop();

    SearchEdit *m_search;
    QListWidget *m_list;
    QPushButton *m_ok = nullptr;
    QStringList m_names;
    int m_picked = -1; ///< place of the one that was chosen last; two may have one name
};
