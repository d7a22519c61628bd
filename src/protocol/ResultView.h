#pragma once

#include <QListView>

class MyScrollbar;

/// The rows of the results list that are seen, with a bar of the list's own at the right: the view itself never
/// scrolls, since it holds one page only.
///
/// As high as a whole number of rows, whatever room it is given. Main thread.
class ResultView : public QListView {
    Q_OBJECT
public:
    explicit ResultView(QWidget *parent = nullptr);

    /// The height of a row, pixels. The bar's values are in pixels too.
    [[nodiscard]] static int gridHeight();
    [[nodiscard]] int rowsThatFit() const { return m_rows; }
    /// The row that is marked; -1 for none.
    [[nodiscard]] int currentRow() const;
    /// Marks a row of the page; none for one that is not on it.
    void markRow(int row);

    MyScrollbar *bar = nullptr;

signals:
    /// So many rows fit.
    void listRowChanged(int rows);
    /// A row was clicked, or chosen by the Enter key.
    void rowChosen(const QModelIndex &index);
    /// By two clicks of which the first was on a row: the page may be another one at the second.
    void rowDoubleClicked();
    /// A key that moves through the list: Qt::Key_Up, Key_Down, Key_PageUp, Key_PageDown, Key_Home or Key_End.
    void keyMoved(int key);
    /// The marked row's text is to be copied, or that of all rows on show.
    void copyWanted(bool allRows);
    /// A menu is asked for, at a place on the screen. The row there is marked.
    void menuWanted(const QPoint &place);

protected:
    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    /// Framed while it has the keyboard's focus, as the line above it is.
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    /// Gives up what is left below the last whole row.
    void fitRows();
    void showTip(const QPoint &place);

    int m_rows = 0;
    int m_tipY = -1;             ///< where the pointer was when the tip was last decided on; -1 off the rows
    int m_turned = 0;            ///< of the wheel, since the last whole notch
    bool m_isRowPressed = false; ///< by the last press, the second of a double click left out
};
