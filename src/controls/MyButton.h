#pragma once

#include <QColor>
#include <QIcon>
#include <QPainterPath>
#include <QPushButton>

/// Corner radii in pixels; 0 gives a square corner. A radius above half of the shorter side counts as that half.
struct CornerRadii {
    int topRight = 0;
    int topLeft = 0;
    int bottomLeft = 0;
    int bottomRight = 0;
};

/// The outline of `rect` with rounded corners, closed.
[[nodiscard]] QPainterPath roundedOutline(const QRectF &rect, const CornerRadii &radii);

/// The button of the panels: a rounded face with an icon or a text, all painted here.
///
/// The looks are plain members: set them while building, and call update() after a later change; the two setters do
/// that. `selected` belongs to the caller and is not QAbstractButton's checked state, which follows it on a checkable
/// button, so that a screen reader can tell it. Main thread.
class MyButton : public QPushButton {
    Q_OBJECT
public:
    explicit MyButton(QWidget *parent = nullptr);
    MyButton(const QIcon &icon, const QString &toolTip, QWidget *parent = nullptr);
    explicit MyButton(const QString &text, QWidget *parent = nullptr);

    bool hovered = false;        ///< the pointer is over it
    bool selected = false;       ///< shows `checkedColor` and `checkedIcon`
    bool gradient = true;        ///< lightens the face towards the top and the bottom
    bool useCheckedIcon = false; ///< shows `checkedIcon` also when not selected
    int value = -1;              ///< the caller's payload, such as a trigger code
    int penWidth = 0;            ///< border, pixels; 0 for none
    CornerRadii radii;
    QColor borderColor;
    QColor faceColor;
    QColor hoverColor;
    QColor checkedColor;
    QColor textColor; ///< while enabled
    QIcon checkedIcon;

    void setSelected(bool on);
    void setUseCheckedIcon(bool on);
    /// All four corners alike, pixels.
    void setRadius(int radius);
    /// The focus came by key.
    [[nodiscard]] bool hasKeyFocus() const { return m_keyFocus && hasFocus(); }
    /// Takes the keyboard's focus over from the button whose place it takes, and shows it if that one did.
    void takeFocusFrom(const MyButton &replaced);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    [[nodiscard]] QBrush faceBrush() const;
    void paintFocus(QPainter &painter) const;
    bool m_keyFocus = false; ///< the focus came by key, so it is shown
};
