#pragma once

#include <QPointer>
#include <QString>
#include <QVector>
#include <QWidget>

#include <cstdint>
#include <functional>

class MenuDialog;
class MyButton;
class QGridLayout;
class QLabel;

/// The section "Measure": a table of the analog channels' measured values, one row a parameter that the user chose.
///
/// A parameter is known by its place in `gMeasureNames`. Those names are an oscilloscope's own terms: they are shown as
/// they are in every language, so that a row always finds its value in the channels' texts. What is chosen lasts as
/// long as the program. Main thread.
class MeasureViewAChn : public QWidget {
    Q_OBJECT
public:
    static constexpr int rowCount = 7;
    static constexpr int channelCount = 2;

    explicit MeasureViewAChn(QWidget *parent = nullptr);
    ~MeasureViewAChn() override;

    /// Another device: shows its values, or none.
    void reload();

    bool deployed = true;
    MyButton *btnExpand = nullptr;
    MyButton *btnSetting = nullptr;
    QWidget *table = nullptr;
    QVector<QLabel *> chnLabels;    ///< one a channel
    QVector<QLabel *> nameLabels;   ///< by row, as the three below
    QVector<QLabel *> value1Labels; ///< of the first channel
    QVector<QLabel *> value2Labels; ///< of the second channel
    QVector<int> shownIds;          ///< parameters; -1 for a row that is free
    std::int32_t shownCount = 0;    ///< rows in use: the first ones

    /// The measured values of a channel as one text, see WaveDataGen::aChnParamText(), where it asks at first.
    std::function<QString(int chn)> paramText;

public slots:
    /// The channels' texts are new: shows their values.
    void slotMeasureChanged();
    void slotDeployPbClicked();
    /// Lets the user choose the rows.
    void slotMeasPbClicked();
    /// Shows all values of a channel in a dialog, and returns when that is closed.
    void slotShowAllMeasures(int chnId);
    /// The parameters of the rows, `count` of them; those below 0 are passed over. Nothing for more than there are
    /// rows.
    void slotUpdateMeasuresShow(const qint32 *Index, int count);
    void slotRemoveAllMeasuresShow();

private:
    void buildTable();
    void showRows();
    [[nodiscard]] QVector<QLabel *> &valuesOf(int chn) { return chn == 0 ? value1Labels : value2Labels; }

    QPointer<MenuDialog> m_menu; ///< the one that is open
};
