#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

#include <cstdint>

class QComboBox;
class QLabel;

/// How long `depth` samples take at `rate` Hz, as it stands behind a word: ": 20ms". Empty without a rate.
[[nodiscard]] QString sampleTimeText(std::int64_t depth, std::int64_t rate);

/// Puts `part` into `label`: before a closing parenthesis at its end, otherwise at the end.
[[nodiscard]] QString withPartInParenthesis(const QString &label, const QString &part);

/// What the list of `depths` tells of itself, translated; the mark "*" is explained if one of them bears it.
[[nodiscard]] QString depthToolTip(const QStringList &depths);

/// Depth and rate of the next capture.
///
/// Built for the device of the moment and thrown away with it; it reads `gDev` anew at each change. Main thread.
class SmpSetting : public QWidget {
    Q_OBJECT
public:
    explicit SmpSetting(QWidget *parent = nullptr);

    QComboBox *depthBox = nullptr;
    QComboBox *frequBox = nullptr;
    QLabel *depthLabel = nullptr;

signals:
    /// The rate has changed.
    void frequViewChanged();

public slots:
    /// The device has lowered the rate by itself.
    void updateFreqIndex();
    void sampleDepthClickedSlot(int index);
    void sampleFrequClickedSlot(int index);

private:
    /// A list of entries that do not change any more, as wide as they need.
    QComboBox *addBox(const QString &name, const QStringList &entries);
    void updateDepthLabel();
};
