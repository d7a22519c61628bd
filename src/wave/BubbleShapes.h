#pragma once

#include "controls/PixelScale.h"
#include "wave/DecodedRow.h"

#include <QRect>

#include <span>
#include <vector>

constexpr int bubbleHeight = 14; ///< of a box around a decoded frame, pixels at 96 dpi

/// The pixels of boxes that do not overlap: `lids` are their upper and lower edges, a pixel high each, `walls` what
/// stands between them. Neighbours that touch are one rectangle.
struct BubbleShapes {
    std::vector<QRect> lids;
    std::vector<QRect> walls;
    std::vector<QRect> insides;
};

/// How many pixels a wide pen leaves out at the left and the right end of an edge's row: its corners are bevelled.
struct CornerCut {
    int left = 0;
    int right = 0;
};
/// What the painter makes of such corners: the rows of the upper edge, then those of the lower one, 2 s in all.
/// Cost: one small picture.
[[nodiscard]] std::vector<CornerCut> cornerCuts(PixelScale scale);

/// How many of the boxes, from the first one on, do not overlap: they can be painted at once.
[[nodiscard]] std::size_t apartFromBegin(std::span<const DecodedBubble> bubbles);

/// The pixels of boxes at the top of a row, drawn with a pen of width `s`, as far as they lie between the device
/// columns `left` and `right`. `out` is cleared first.
/// @param width  of the row, device pixels: a box that reaches far out of it is cut there
/// @param cuts  of cornerCuts()
void bubbleShapes(std::span<const DecodedBubble> bubbles, int width, int left, int right, PixelScale scale,
                  std::span<const CornerCut> cuts, BubbleShapes &out);

/// The column at which a box's text begins: it stands in the middle of the whole box, wherever that is cut.
[[nodiscard]] std::int64_t textColumn(const DecodedBubble &bubble);
