#pragma once

#include <QPair>
#include <QString>
#include <QVector>
#include <QWidget>

#include <optional>
#include <vector>

class QComboBox;
class QLabel;
class QLineEdit;

/// Reads a threshold, from its field or from the configuration.
/// @return volts, from -4.0 to 4.0 inclusive; nothing for any other number and for what is none
[[nodiscard]] std::optional<double> thresholdOf(const QString &text);

/// The thresholds of the inputs, chosen by logic family or as a voltage: a row for all channels, or on the 32-channel
/// model one for each half of them.
///
/// Built for the device of the moment and thrown away with it; it reads `gDev` anew at each change. What a row shows is
/// applied and saved at once, a typed voltage when its field is finished. Building it applies what was saved. An entry
/// that is refused is told in a modal box, during which the event loop runs. Main thread.
class VthSetting : public QWidget {
    Q_OBJECT
public:
    explicit VthSetting(QWidget *parent = nullptr);
    ~VthSetting() override;

    // One entry a row.
    QVector<QLabel *> labels;
    QVector<QComboBox *> levelBoxes;
    QVector<QLineEdit *> vthEdits;
    QVector<QLabel *> units;
    /// Names and volts of the families, in the order of the boxes. The last one stands for the field; its volts are
    /// what a field starts from for which nothing is saved.
    QVector<QPair<QString, double>> presets;

    /// Takes what is being typed, as if its field had lost the focus.
    /// @return false when it was refused; the user has been told
    bool finishEntries();
    /// Asks whether the panel may be deleted. While its box is open it may not: Qt comes back to its field when the
    /// box has been closed. It then hides, changes nothing any more, and deletes itself behind the box.
    [[nodiscard]] bool mayGo();

public slots:
    /// Takes a family for the first row; a negative index is none.
    void slotVioClicked(int index);
    /// Takes the voltage in the first row's field, unless it has been taken already.
    void slotVthEditFinish();
    // The same for the second row; nothing on a panel of one.
    void slotVioClicked2(int index);
    void slotVthEditFinish2();

protected:
    /// Escape takes back what is typed.
    void keyPressEvent(QKeyEvent *event) override;

private:
    void addRow(const QString &label);
    void layOut();
    [[nodiscard]] double savedVolts(int row) const;
    [[nodiscard]] int savedLevel(int row) const;
    void takeLevel(int row, int index);
    bool takeVoltage(int row);
    void refuse(int row);
    /// Takes what stands in fields without the focus and is not in effect yet: the zero of a refusal, which came while
    /// Qt was finishing the field and so does not count as edited, and what was finished while a box was open.
    void takeLeftFields();

    std::vector<std::optional<QString>> m_taken; ///< the field's text that is in effect; none behind a refused one
    bool m_telling = false;                      ///< the box is open
    bool m_leaving = false;                      ///< another panel has taken the place
};
