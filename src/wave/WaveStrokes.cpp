#include "wave/WaveStrokes.h"

#include <algorithm>

namespace {

constexpr double topMarginShare = 0.11;
constexpr double bottomShare = 0.89;
constexpr double leastArrow = 4.0; ///< logical pixels; a pair of shorter spans is not drawn
constexpr int mostHeads = 3;

/// Far outside any view, and small enough for the arithmetic behind it.
constexpr double columnLimit = 1e6;

int wholeColumns(double value)
{
    return int(std::clamp(value, -columnLimit, columnLimit));
}

/// The device column of a place between logical columns.
int deviceColumn(double logical, PixelScale scale)
{
    return wholeColumns(logical * scale.s()) + scale.s() / 2;
}

void addRightHead(QVector<QPoint> &points, int x, int y, int step)
{
    points << QPoint(x - step, y - step) << QPoint(x - step, y + step);
}

/// Both ends of the first arrow; returns the number of steps in a head.
int addFirstArrow(const ArrowSpans &spans, int y, PixelScale scale, ArrowStrokes &out)
{
    const int s = scale.s();
    const int x1 = deviceColumn(spans.span1Start, scale);
    const int x2 = deviceColumn(spans.span1End, scale);
    const int k = wholeColumns((spans.span1End - spans.span1Start - 1.0) * 0.5 - 1.0);
    if (k < 2) {
        out.lines << QLine(x1, y, x2, y);
    } else {
        out.lines << QLine(x1 + 2 * s, y, x2 - 2 * s, y);
        out.points << QPoint(x1, y) << QPoint(x2, y);
    }
    const int heads = std::clamp(k, 0, mostHeads);
    for (int i = 1; i <= heads; ++i) {
        out.points << QPoint(x1 + i * s, y - i * s) << QPoint(x1 + i * s, y + i * s);
        addRightHead(out.points, x2, y, i * s);
    }
    return heads;
}

void addSecondArrow(const ArrowSpans &spans, int y, int firstHeads, PixelScale scale, ArrowStrokes &out)
{
    const int s = scale.s();
    const int x3 = deviceColumn(spans.span2Start, scale);
    const int x4 = deviceColumn(spans.span2End, scale);
    const int k = wholeColumns(spans.span2End - spans.span2Start - 1.0);
    const bool pointed = firstHeads == 0 ? k >= 2 : k >= firstHeads;
    if (pointed) {
        out.lines << QLine(x3, y, x4 - 2 * s, y);
        out.points << QPoint(x4, y);
        const int heads = firstHeads == 0 ? std::min(k, mostHeads) : firstHeads;
        for (int i = 1; i <= heads; ++i) {
            addRightHead(out.points, x4, y, i * s);
        }
    } else if (k > 0) {
        out.lines << QLine(x3, y, x4, y);
    }
}

} // namespace

TraceLevels traceLevels(int height, PixelScale scale)
{
    const int last = height - 1;
    return {std::min(scale.dp(4) + int(topMarginShare * last) + scale.s() / 2, scale.dp(24)),
            std::max(scale.s() / 2 + int(bottomShare * last), last - scale.dp(20))};
}

void traceRects(std::span<const SmpWaveRun> runs, TraceLevels levels, PixelScale scale, int left, int right,
                std::vector<QRect> &out)
{
    out.clear();
    const int s = scale.s();
    int nextColumn = -1; // the logical column that would lengthen the block of verticals at the end of `out`
    for (const SmpWaveRun &run : runs) {
        const int xs = scale.column(run.x);
        if (xs - s > right || xs + run.width * s + s < left || run.kind < 0 || run.kind > 2) {
            continue;
        }
        if (run.kind != 2) {
            const int y = run.kind == 0 ? levels.lowY : levels.highY;
            out.push_back(strokeRect(QLine(xs, y, run.width * s + xs, y), s));
            nextColumn = -1;
        } else if (run.x == nextColumn) {
            out.back().setWidth(out.back().width() + s);
            ++nextColumn;
        } else {
            out.push_back(strokeRect(QLine(xs, levels.highY, xs, levels.lowY), s));
            nextColumn = run.x + 1;
        }
    }
}

void traceRows(std::span<const QRect> rects, TraceLevels levels, PixelScale scale, int width, QRgb ground, QRgb color,
               TraceRows &out)
{
    const auto columns = std::size_t(std::max(width, 0));
    for (std::vector<QRgb> *row : {&out.high, &out.between, &out.low}) {
        row->assign(columns, ground);
    }
    const int highTop = levels.highY - scale.s() / 2;
    for (const QRect &rect : rects) {
        const int from = std::clamp(rect.left(), 0, width);
        const int count = std::clamp(rect.right() + 1, from, width) - from;
        const auto paint = [&](std::vector<QRgb> &row) { std::fill_n(row.begin() + from, count, color); };
        const bool isVertical = rect.height() > scale.s();
        if (isVertical) {
            paint(out.between);
        }
        if (isVertical || rect.top() == highTop) {
            paint(out.high);
        }
        if (isVertical || rect.top() != highTop) {
            paint(out.low);
        }
    }
}

ArrowStrokes arrowStrokes(const ArrowSpans &spans, int height, PixelScale scale)
{
    ArrowStrokes out;
    if (spans.span1End - spans.span1Start < leastArrow && spans.span2End - spans.span2Start < leastArrow) {
        return out;
    }
    const int y = scale.s() / 2 + (scale.dp(4) + height) / 2;
    const int heads = addFirstArrow(spans, y, scale, out);
    if (spans.span2End > 0.0) {
        addSecondArrow(spans, y, heads, scale, out);
    }
    return out;
}
