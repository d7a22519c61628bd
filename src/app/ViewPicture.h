#pragma once

#include <QImage>
#include <QPicture>
#include <QSize>

class QPainter;
class QWidget;

/// The view as a picture: the ruler, and the rows with their names and waves below it, as they are seen at this moment.
///
/// A value over two widgets, which outlive it. Main thread. Cost: that of painting them once.
class ViewPicture {
public:
    /// @param ruler, rows  widgets of one window, not owned; the ruler is painted over what the rows leave above them
    ViewPicture(QWidget *ruler, QWidget *rows) : m_ruler(ruler), m_rows(rows) {}

    [[nodiscard]] QSize size() const; ///< pixels
    [[nodiscard]] QImage image() const;
    /// The same as shapes and texts; only icons are pixels.
    [[nodiscard]] QPicture shapes() const;

private:
    void paint(QPainter &painter) const;

    QWidget *m_ruler;
    QWidget *m_rows;
};
