#pragma once

#include "panels/ExportRange.h"

#include <QDialog>
#include <QVector>

#include <cstdint>
#include <vector>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QRadioButton;

/// Asks which digital channels and which part of the capture to save or to export.
///
/// Lives on the stack of the action that asks; modal. It takes what it shows of `gDev` and of the markers when it is
/// made, and is not touched by what happens to them later; the capture itself is read again in getSelection(). The
/// boxes of the analog channels can be clicked, but nothing reads them: no format holds analog channels. Main thread.
class ExportDataSet : public QDialog {
    Q_OBJECT
public:
    /// @param pairs  the pairs of timing markers that are shown, such as MainView::shownPairs()
    explicit ExportDataSet(const QVector<ShownPair> &pairs, QWidget *parent = nullptr);

    /// What was chosen, once the dialog has been accepted.
    /// @param chnSelect   out, one byte for each digital channel of the present store, 1 for a chosen one
    /// @param start, end  out, in samples; DataFile::setRange() takes them as they come, reversed or out of range
    void getSelection(std::vector<std::uint8_t> &chnSelect, double &start, double &end) const;

    /// Stays open while an interval is chosen and one of its fields holds what is no number: that is told
    /// at the field. An empty one is the trigger.
    void accept() override;

private:
    enum Time { AllTime, TimingMarkers, Interval };

    [[nodiscard]] static QVector<QCheckBox *> makeBoxes(const QVector<bool> &checked, int firstNumber);
    [[nodiscard]] static QGroupBox *makeGroup(const QString &title, const QVector<QCheckBox *> &boxes);
    /// Makes all columns of boxes as wide as the widest.
    void evenColumns();
    [[nodiscard]] QGroupBox *makeTimeGroup();
    QRadioButton *addChoice(Time time, const QString &text);
    QLabel *addField(QLineEdit *&field, const QString &label, const QString &text);
    void enableChoices();

    const ExportMarkers m_markers;
    QVector<QCheckBox *> m_chnBoxes;
    QVector<QCheckBox *> m_aChnBoxes;
    QButtonGroup *m_time;
    QComboBox *m_pair = nullptr;
    QLabel *m_startLabel = nullptr;
    QLabel *m_endLabel = nullptr;
    QLineEdit *m_start = nullptr;
    QLineEdit *m_end = nullptr;
};
