#pragma once

#include <QLabel>

class QFontMetrics;

/// `text` cut to `room` pixels with an ellipsis. Of a number with a unit it is the last digits that go: the unit stays.
[[nodiscard]] QString elidedValue(const QString &text, const QFontMetrics &metrics, int room);

/// A value in a column that may be narrower than the value: what does not fit ends in an ellipsis, and the pointer
/// brings the whole text. It never asks for more room than "###" needs. Main thread.
class TimingMarkerTip : public QLabel {
    Q_OBJECT
public:
    /// Starts as "###".
    explicit TimingMarkerTip(QWidget *parent = nullptr);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void enterEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};
