#pragma once

#include <cstdint>

/// What part of a capture the view shows. Sample at logical pixel x = start + x * ratio.
struct TimeWindow {
    double start = 0.0; ///< sample position of logical pixel 0; negative or past the data's end while a view settles
    double ratio = 0.0; ///< samples per logical pixel; 0 until there was data
    bool operator==(const TimeWindow &) const = default;
};

/// The arithmetic of the time axis: windows from windows, over plain values.
///
/// Pure and without allocation; any thread. Widths are logical pixels, `count` is the capture's length in samples, 0
/// for none. Every function takes whatever doubles come (infinities, NaN) and answers with finite numbers; half a view
/// is always the whole number width / 2.
namespace TimeAxis {

inline constexpr double minRatio = 0.01;   ///< samples per pixel, the deepest zoom
inline constexpr double ratioLimit = 1e15; ///< beyond any capture: keeps repeated zooming out finite
inline constexpr double startLimit = 1e18; ///< samples, on both sides
inline constexpr int animStepCount = 7;    ///< frames of an animated zoom, which together make a factor of two

/// What a new capture is placed by.
struct Placement {
    int viewState = 0; ///< 1 everything, 2 the same place relative to the trigger, any other: trigger in the middle
    std::int64_t trgPos = 0;
    std::int64_t lastTrgPos = 0; ///< of the capture before
    bool clampToData = true;
};

/// One frame of an animated zoom.
struct ZoomFrame {
    TimeWindow window;
    bool atLimit = false; ///< the deepest zoom is reached: the animation ends here
};

/// A window pulled back into the data.
struct Settled {
    TimeWindow window;
    bool changed = false; ///< false: the window lay in the data already
};

/// `x` cut to the columns 0 to width - 1; 0 for a view without columns.
[[nodiscard]] int clampColumn(int x, int width);
/// A ratio outside 0 to ratioLimit, and a start outside the startLimit, are cut; infinite ratios and NaN become 0.
[[nodiscard]] TimeWindow finite(TimeWindow window);

/// The ratio at which the whole capture fills the view; 0 for a view without columns.
[[nodiscard]] double fitRatio(std::int64_t count, int width);
[[nodiscard]] TimeWindow fit(std::int64_t count, int width);
/// `ratio` within minRatio and the fitting ratio; the lower bound wins. NaN counts as the upper one.
[[nodiscard]] double clampRatio(double ratio, std::int64_t count, int width);
/// The window with `ratio` that holds the sample under column `x` in place.
[[nodiscard]] TimeWindow zoomAbout(const TimeWindow &window, int x, double ratio);
/// Frame `step` (1 to animStepCount) of an animated zoom that began at `base`, with column `x` held in place.
[[nodiscard]] ZoomFrame zoomFrame(const TimeWindow &base, int x, int step, bool zoomIn);
/// Samples a to b fill the middle half of the view; a range that is told backwards is turned round.
[[nodiscard]] TimeWindow showRange(double a, double b, int width);
/// Samples a to b fill the view, but not nearer than minRatio; a range that is told backwards is turned round.
[[nodiscard]] TimeWindow fillWith(double a, double b, int width);
/// `position` in the middle column.
[[nodiscard]] TimeWindow centredOn(const TimeWindow &window, double position, int width);
/// The sample at the right end of the window, from which the next edge is looked for.
[[nodiscard]] std::int64_t rightEnd(const TimeWindow &window, int width);

/// Pulls the window back into the data. A view without columns is left as it is.
[[nodiscard]] Settled settle(const TimeWindow &window, std::int64_t count, int width);
/// The window in which a new capture is shown.
[[nodiscard]] TimeWindow place(const TimeWindow &window, std::int64_t count, int width, const Placement &placement);

} // namespace TimeAxis
