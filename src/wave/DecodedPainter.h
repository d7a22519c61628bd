#pragma once

#include "wave/BubbleShapes.h"
#include "wave/BubbleTexts.h"
#include "wave/DecodedRow.h"
#include "wave/MarkerGlyphs.h"

#include <QColor>
#include <QPoint>
#include <QVector>

#include <memory>

class QPainter;

/// Paints what is decoded over the trace of a row: boxes with texts at the top, signs at the middle.
///
/// It keeps no result from one paint to the next, only what texts and signs look like. Main thread.
class DecodedPainter {
public:
    /// The one that all rows use; it goes with the last of them.
    [[nodiscard]] static std::shared_ptr<DecodedPainter> shared();

    /// The painter's origin is the row's top left; pen, brush and font are changed.
    /// @param height  of the row, device pixels
    /// @param line  colour of the row's trace
    /// @param left, right  device columns that must be painted
    /// Cost: follows the row's width, whatever the number of results.
    void paint(QPainter &painter, int chn, const DecodedView &view, int height, QColor line, int left, int right);

private:
    void paintBoxes(QPainter &painter, std::span<const DecodedBubble> boxes, const DecodedView &view, int left,
                    int right);
    void paintTexts(QPainter &painter, std::span<const DecodedBubble> boxes, const DecodedView &view, int left,
                    int right);
    void paintMarkers(QPainter &painter, const DecodedView &view, int height, QColor line, int left, int right);

    BubbleTexts m_texts;
    MarkerGlyphs m_glyphs;
    DecodedRow m_row; ///< scratch of one paint, kept for its memory, as the one below
    BubbleShapes m_shapes;
    std::vector<CornerCut> m_cuts; ///< of the present scale
    QColor m_outline;              ///< of the row's boxes
};
