#pragma once

#include <QStringList>

#include <cstdint>

struct SmpEdgeInfo;

inline constexpr double psPerSecond = 1e12; ///< all times here are picoseconds

/// The arithmetic of timing markers without a screen: names, samples, times, texts.
///
/// Pure, any thread, cost a few operations each. Positions are samples.
namespace MarkerTimes {

/// An edge beside a position.
struct NearEdge {
    double position = 0; ///< sample
    double distance = 0; ///< samples, 0 or above
};

/// "A1", "A2", "B1" and so on for id 0, 1, 2: pair id / 2, without an upper bound.
/// @param id  0 or above
[[nodiscard]] QString label(int id);
/// The first id of the pair that `id` belongs to.
[[nodiscard]] constexpr int firstOfPair(int id)
{
    return id / 2 * 2;
}

/// The whole sample nearest to column `column` of a view that begins at sample `start`.
/// @param column  logical pixels
/// @param ratio   samples per logical pixel
[[nodiscard]] double sampleAt(int column, double start, double ratio);

/// The nearer of the edges around `sample`; of two equally near ones the next. A previous edge of -1 is the capture's
/// start.
/// @return false without any edge; `near` then stays as it is
[[nodiscard]] bool nearestEdge(double sample, const SmpEdgeInfo &edges, NearEdge &near);

/// The time of `sample` in whole picoseconds, negative before `trigger`.
/// @param rate  Hz, above 0
[[nodiscard]] double timeOf(double sample, std::int64_t trigger, std::int64_t rate);
/// The time between two samples in whole picoseconds.
[[nodiscard]] double distanceOf(double a, double b, std::int64_t rate);
/// `ps` in the largest of `units` (ps, ns and so on) that leaves at least 1 of it, with as many digits as the whole
/// number has characters, but at most the 17 that a double tells apart.
[[nodiscard]] QString timeText(double ps, const QStringList &units);

/// Time and sample of a position, both from the trigger: "12.5us  [125]".
/// @param rate  Hz, above 0
[[nodiscard]] QString positionText(double sample, std::int64_t trigger, std::int64_t rate, const QStringList &units);

} // namespace MarkerTimes
