#include "wave/BubbleShapes.h"

#include <QImage>
#include <QPainter>
#include <QPen>

#include <algorithm>

namespace {

constexpr int overhang = 10; ///< how far a cut box reaches out of the row, pixels at 96 dpi

/// The columns [from, to) as a rectangle behind the last one, or as more of that.
void addColumns(std::vector<QRect> &rects, int from, int to, int top, int height)
{
    if (!rects.empty() && from <= rects.back().right() + 1) {
        rects.back().setRight(std::max(rects.back().right(), to - 1));
    } else {
        rects.emplace_back(from, top, to - from, height);
    }
}

/// The upper and the lower edge over the columns [from, to), row by row; nothing when there are none.
void addLids(std::vector<QRect> &rects, int from, int to, int s, int within, std::span<const CornerCut> cuts)
{
    for (int row = 0; row < 2 * s && from < to; ++row) {
        const CornerCut &cut = cuts[std::size_t(row)];
        const int y = row < s ? row : within + row;
        rects.emplace_back(from + cut.left, y, to - from - cut.left - cut.right, 1);
    }
}

} // namespace

std::size_t apartFromBegin(std::span<const DecodedBubble> bubbles)
{
    std::size_t count = bubbles.empty() ? 0 : 1;
    while (count < bubbles.size() && bubbles[count].x1 >= bubbles[count - 1].x2) {
        ++count;
    }
    return count;
}

std::vector<CornerCut> cornerCuts(PixelScale scale)
{
    const int s = scale.s();
    const int margin = 2 * s;
    const int width = 8 * s;
    const int height = scale.dp(bubbleHeight);
    QImage image(width + 2 * margin, height + 2 * margin, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setPen(QPen(Qt::white, s, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.drawRect(margin, margin, width, height);
    painter.end();
    const int from = margin - s / 2; // of the whole outline, as the two below
    const int to = margin + width - s / 2 + s;
    const auto isBlack = [&image](int x, int y) { return qGreen(image.pixel(x, y)) == 0; };
    std::vector<CornerCut> cuts;
    for (int row = 0; row < 2 * s; ++row) {
        const int y = row < s ? margin - s / 2 + row : margin + height - s / 2 + row - s;
        CornerCut cut;
        while (cut.left < s && isBlack(from + cut.left, y)) {
            ++cut.left;
        }
        while (cut.right < s && isBlack(to - 1 - cut.right, y)) {
            ++cut.right;
        }
        cuts.push_back(cut);
    }
    return cuts;
}

void bubbleShapes(std::span<const DecodedBubble> bubbles, int width, int left, int right, PixelScale scale,
                  std::span<const CornerCut> cuts, BubbleShapes &out)
{
    for (std::vector<QRect> *rects : {&out.lids, &out.walls, &out.insides}) {
        rects->clear();
    }
    const int s = scale.s();
    const int within = scale.dp(bubbleHeight) - s; // rows between the two edges
    const int reach = scale.dp(overhang);
    int chainFrom = -2 * reach; // columns of boxes that share their walls, none so far
    int chainTo = chainFrom;
    for (const DecodedBubble &bubble : bubbles) {
        const auto x1 = std::max<std::int64_t>(bubble.x1, -reach);
        const auto x2 = std::min<std::int64_t>(bubble.x2, width + reach);
        if (x1 - s > right || x2 + s < left) {
            continue;
        }
        const int from = int(x1) - s / 2;
        const int to = int(x2) - s / 2 + s;
        if (from >= chainTo) {
            addLids(out.lids, chainFrom, chainTo, s, within, cuts);
            chainFrom = from;
        }
        chainTo = to;
        addColumns(out.walls, from, std::min(from + s, to), s, within);
        if (to - from > 2 * s) {
            out.insides.emplace_back(from + s, s, to - from - 2 * s, within);
        }
        addColumns(out.walls, to - s, to, s, within);
    }
    addLids(out.lids, chainFrom, chainTo, s, within, cuts);
}

std::int64_t textColumn(const DecodedBubble &bubble)
{
    return (bubble.x2 - bubble.textWidth + 1 + bubble.x1) / 2;
}
