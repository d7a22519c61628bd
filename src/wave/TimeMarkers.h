#pragma once

#include "controls/PixelScale.h"
#include "wave/TimeAxis.h"

#include <QColor>
#include <QPolygon>
#include <QRect>

#include <cstdint>

struct SmpEdgeInfo;

/// What a marker does at present: the same numbers for the line in the waves, its flag in the ruler and the lines of
/// voltage.
enum class MarkerState : std::int32_t {
    off = 0,       ///< not shown
    following = 1, ///< attached to the pointer, bright; at most one
    hovered = 2,   ///< the pointer is over it, bright
    placed = 3,    ///< plain
};

/// The colours of a marker in one state.
struct MarkerColors {
    QColor line; ///< of the line, and of the flag's outline
    QColor face; ///< of the flag
};

/// Timing markers on a screen: places and colours, over plain values. What needs no screen is MarkerTimes'.
///
/// Pure, any thread; only colors() reads the palette, on the main thread. `x` is in device pixels of the wave view,
/// positions are samples. Windows of any kind are taken, also one whose ratio is still 0.
namespace TimeMarkers {

inline constexpr int snapReach = 10; ///< logical pixels at 96 dpi, within which an edge attracts a marker

/// A number that came as a state; anything else than a state is `off`.
[[nodiscard]] MarkerState stateOf(int number);
[[nodiscard]] MarkerColors colors(MarkerState state);

/// The whole sample nearest to a column; the logical column is truncated first.
[[nodiscard]] double sampleAt(int x, const TimeWindow &window, PixelScale scale);
/// The first device pixel of the logical column of a sample. Far outside of every screen it stays there.
[[nodiscard]] int columnOf(double sample, const TimeWindow &window, PixelScale scale);
/// Where a marker at `sample` comes to rest: on the nearer edge if that is within reach, else at `sample`. A previous
/// edge of -1 is the capture's start; of two equally near edges the next one attracts.
/// @param edges  around `sample`
[[nodiscard]] double snapped(double sample, const SmpEdgeInfo &edges, double ratio, PixelScale scale);
/// True when the pointer at `x` is over a marker that begins at `markerX`, or one stroke beside it.
[[nodiscard]] bool covers(int x, int markerX, PixelScale scale);

/// The flag of a marker in the ruler, pointing down at its line. Device pixels.
[[nodiscard]] QSize flagSize(PixelScale scale);
[[nodiscard]] QPolygon flagOutline(PixelScale scale);
[[nodiscard]] int flagBaseline(PixelScale scale); ///< of the label
/// The flag's place in a ruler of height `rulerHeight` for a marker that begins at `x`.
[[nodiscard]] QRect flagPlace(int x, int rulerHeight, PixelScale scale);

} // namespace TimeMarkers
