#pragma once

#include "controls/PixelScale.h"
#include "store/SmpData.h"
#include "wave/PulseHover.h"

#include <QLine>
#include <QPoint>
#include <QRect>
#include <QRgb>
#include <QVector>

#include <algorithm>
#include <cstdlib>
#include <span>
#include <vector>

/// The y of a logic trace's two levels, in device pixels from the top of its row.
struct TraceLevels {
    int highY;
    int lowY;
};

[[nodiscard]] TraceLevels traceLevels(int height, PixelScale scale);

/// The pixels that a stroke parallel to an axis covers: a pen of width `s` with square caps, no antialiasing.
[[nodiscard]] inline QRect strokeRect(const QLine &line, int s)
{
    const int left = std::min(line.x1(), line.x2());
    const int top = std::min(line.y1(), line.y2());
    return {left - s / 2, top - s / 2, std::abs(line.dx()) + s, std::abs(line.dy()) + s};
}

/// The pixels of a trace as rectangles, each run's stroke once and the strokes of neighbouring transition columns as
/// one. `out` is cleared first, so that a caller may keep its memory.
/// @param left, right  device columns that are wanted; strokes wholly outside may be left out
/// Cost: one step a run.
void traceRects(std::span<const SmpWaveRun> runs, TraceLevels levels, PixelScale scale, int left, int right,
                std::vector<QRect> &out);

/// A trace as the three kinds of pixel rows that it consists of: where it is high, between the levels, where it is low.
/// Each holds one pixel for each device column, in the format of QImage::Format_RGB32.
struct TraceRows {
    std::vector<QRgb> high;
    std::vector<QRgb> between;
    std::vector<QRgb> low;
};

/// The rows of a trace whose rectangles are `rects`, from device column 0 to `width` - 1. `out` keeps its memory.
/// Cost: one step a column and rectangle; painting them costs one pass over the trace's pixels, however many
/// transitions it has, where thousands of narrow rectangles cost several.
void traceRows(std::span<const QRect> rects, TraceLevels levels, PixelScale scale, int width, QRgb ground, QRgb color,
               TraceRows &out);

/// What the arrows of a pulse are made of. Device pixels from the top left of the item.
struct ArrowStrokes {
    QVector<QLine> lines;
    QVector<QPoint> points;
};

/// @param height  of the item, device pixels
[[nodiscard]] ArrowStrokes arrowStrokes(const ArrowSpans &spans, int height, PixelScale scale);
