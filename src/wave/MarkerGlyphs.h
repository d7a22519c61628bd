#pragma once

#include "wave/DecodedSource.h"

#include <QColor>
#include <QHash>
#include <QImage>

class QPainter;

/// The small signs that decoders set on a row: each is drawn once and then copied.
///
/// Main thread.
class MarkerGlyphs {
public:
    /// Draws the sign of a type about (x, y), device pixels; nothing for a type that is none.
    /// @param line  colour of the row's trace, which the arrows take when waves are drawn in their channels' colours
    void draw(QPainter &painter, int type, int x, int y, QColor line);

private:
    [[nodiscard]] const QImage &glyph(int type, QColor arrow);

    QHash<quint64, QImage> m_glyphs; ///< by type and colour of arrows
    int m_dpi = 0;                   ///< that they were drawn for
};
