#pragma once

#include <QColor>
#include <QWidget>

class QGridLayout;
class QLabel;

/// Black or white, whichever can be read better on `ground`.
[[nodiscard]] QColor readableOn(const QColor &ground);

/// What stands to the left of a digital channel's row: the channel's number on its colour, its name, and the name of
/// the decoder that uses it.
///
/// Placed by the main view, which also decides its height. GUI thread.
class ItemChnSidebar : public QWidget {
    Q_OBJECT
public:
    ItemChnSidebar(int channel, int row, int multiplier, QWidget *parent);

    [[nodiscard]] int channel() const { return chnIndex; }
    [[nodiscard]] int row() const { return showIndex; }         ///< 0 is the topmost
    [[nodiscard]] int multiplier() const { return showMultip; } ///< 1 to 15

    /// Shown beside the number; cut with an ellipsis where it does not fit, and then whole as the tool tip.
    void setChnName(const QString &name);
    /// Shown below the name; empty for none.
    void setAnalyzerLabel(const QString &label);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void buildGrid();
    [[nodiscard]] QColor chnColor() const;
    void showElided(QLabel &label, const QString &text);

    const int chnIndex;   ///< physical channel
    const int showIndex;  ///< row position
    const int showMultip; ///< height factor
    QLabel *numberLabel;
    QLabel *nameLabel;
    QLabel *analyzerLabel;
    QGridLayout *layout;
};
