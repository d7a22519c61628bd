#pragma once

#include <QDialog>
#include <QString>
#include <QVector>

class QLabel;

/// The dialog with all measured values of one analog channel, as they are when it is opened. Main thread.
class AChnMeasureDialog : public QDialog {
    Q_OBJECT
public:
    /// @param chnId  from 0
    /// @param text   the channel's, see WaveDataGen::aChnParamText()
    AChnMeasureDialog(int chnId, const QString &text, QWidget *parent = nullptr);

    QVector<QLabel *> valueLabels; ///< by parameter, in the order of `gMeasureNames`
};
