#pragma once

#include "controls/PixelScale.h"
#include "store/SmpData.h"
#include "wave/PulseHover.h"

#include <QLine>
#include <QPoint>
#include <QRect>
#include <QVector>

#include <span>
#include <vector>

/// The y of a logic trace's two levels, in device pixels from the top of its row.
struct TraceLevels {
    int highY;
    int lowY;
};

[[nodiscard]] TraceLevels traceLevels(int height, PixelScale scale);

/// The pixels that a stroke parallel to an axis covers: a pen of width `s` with square caps, no antialiasing.
[[nodiscard]] QRect strokeRect(const QLine &line, int s);

/// The pixels of a trace as rectangles, each run's stroke once and the strokes of neighbouring transition columns as
/// one. `out` is cleared first, so that a caller may keep its memory.
/// @param left, right  device columns that are wanted; strokes wholly outside may be left out
/// Cost: one step a run.
void traceRects(std::span<const SmpWaveRun> runs, TraceLevels levels, PixelScale scale, int left, int right,
                std::vector<QRect> &out);

/// What the arrows of a pulse are made of. Device pixels from the top left of the item.
struct ArrowStrokes {
    QVector<QLine> lines;
    QVector<QPoint> points;
};

/// @param height  of the item, device pixels
[[nodiscard]] ArrowStrokes arrowStrokes(const ArrowSpans &spans, int height, PixelScale scale);
