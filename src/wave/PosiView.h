#pragma once

#include <QScrollBar>

#include <cstdint>

/// Where the view stands in the capture, in steps of a ten-thousandth of it.
struct PosiBar {
    std::int32_t value;
    std::int32_t maxV;
    std::int32_t page;
};

/// @param sampleCount  length of the capture, samples; 0 for none
/// @param viewWidth    logical pixels
/// @param ratio        samples per logical pixel
/// @param viewStart    sample at logical pixel 0
/// All zero when there is nothing to show, or when a value is no number.
[[nodiscard]] PosiBar posiBar(std::int64_t sampleCount, int viewWidth, double ratio, double viewStart);

/// The position bar under the waves. It knows no capture: the main window gives it the figures on each refresh, and
/// gets the user's moves as a share of the whole. Main thread.
class PosiView : public QScrollBar {
    Q_OBJECT
public:
    explicit PosiView(QWidget *parent = nullptr);

    /// Of the handle: no grey, so that it cannot be taken for a wave; at least 3 : 1 in brightness both to its ground
    /// and to a white wave.
    [[nodiscard]] static QColor handleColor();
    static constexpr std::int32_t resolution = 10000;
    std::int32_t posi = 0; ///< the last value set by the program

    /// See posiBar(). Never comes back as a move.
    void updatePosi(std::int64_t sampleCount, int viewWidth, double ratio, double viewStart);

signals:
    /// The user moved the bar: the start of the view as a share of the capture, 0 to 1.
    void sigPosiChanged(double posi);

public slots:
    void slotBarValueChanged(int value);

private:
    bool m_updating = false; ///< a program update is under way: a range may cut the old value on its way
};
