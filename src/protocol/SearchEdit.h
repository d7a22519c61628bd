#pragma once

#include <QColor>
#include <QLineEdit>

class QLabel;

/// The line in which something is searched for: a small glass at its left end, and a count at its right one.
///
/// Its text is what is searched for; who owns it listens to textChanged(), and to keyMoved() to go through what was
/// found. Main thread.
class SearchEdit : public QLineEdit {
    Q_OBJECT
public:
    struct Colors {
        QColor background{0x1f, 0x1f, 0x23};
        QColor border{0x1f, 0x1f, 0x23};
        QColor text{0xf7, 0xf7, 0xf7};
    };

    explicit SearchEdit(const Colors &colors, QWidget *parent = nullptr);

    /// Shows `count` at the right end; nothing for 0 or less.
    void setCount(qlonglong count);
    [[nodiscard]] QString countText() const;

signals:
    /// Qt::Key_Up or Qt::Key_Down, which would otherwise be shortcuts of the window.
    void keyMoved(int key);

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void placeLabels();

    QLabel *m_glass;
    QLabel *m_count;
};
