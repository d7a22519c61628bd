#include "wave/TimeMarkers.h"

#include "analysis/MarkerTimes.h"
#include "controls/Look.h"
#include "controls/Truncate.h"

#include <algorithm>

namespace {

constexpr std::int32_t farColumn = 1'000'000; ///< logical pixels beyond every screen; times any scale an int
constexpr int flagTip = 7;                    ///< pixels at 96 dpi: half of the width, and the height of the tip
constexpr int flagBody = 9;                   ///< pixels at 96 dpi

} // namespace

MarkerState TimeMarkers::stateOf(int number)
{
    const bool known = number >= int(MarkerState::off) && number <= int(MarkerState::placed);
    return known ? MarkerState(number) : MarkerState::off;
}

MarkerColors TimeMarkers::colors(MarkerState state)
{
    if (state == MarkerState::placed) {
        return {QColor(31, 191, 31), gGreys.value(1)};
    }
    return {QColor(0, 255, 0), gGreys.value(0)};
}

double TimeMarkers::sampleAt(int x, const TimeWindow &window, PixelScale scale)
{
    return MarkerTimes::sampleAt(x / scale.s(), window.start, window.ratio);
}

int TimeMarkers::columnOf(double sample, const TimeWindow &window, PixelScale scale)
{
    const std::int32_t logical = truncated32((sample - window.start) / window.ratio);
    return std::clamp(logical, -farColumn, farColumn) * scale.s();
}

double TimeMarkers::snapped(double sample, const SmpEdgeInfo &edges, double ratio, PixelScale scale)
{
    MarkerTimes::NearEdge edge;
    const bool attracts =
        MarkerTimes::nearestEdge(sample, edges, edge) && edge.distance / ratio * scale.s() <= scale.dp(snapReach);
    return attracts ? edge.position : sample;
}

bool TimeMarkers::covers(int x, int markerX, PixelScale scale)
{
    const int s = scale.s();
    return x >= markerX - s && x < markerX + 2 * s;
}

QSize TimeMarkers::flagSize(PixelScale scale)
{
    const int tip = scale.dp(flagTip);
    return {2 * tip + scale.s(), tip + scale.dp(flagBody) + scale.s()};
}

QPolygon TimeMarkers::flagOutline(PixelScale scale)
{
    const int p = scale.s() / 2; // centre of the first stroke
    const int tip = scale.dp(flagTip);
    const int body = scale.dp(flagBody);
    return QPolygon(
        QVector<QPoint>{{p, p}, {2 * tip + p, p}, {2 * tip + p, p + body}, {tip + p, p + body + tip}, {p, p + body}});
}

int TimeMarkers::flagBaseline(PixelScale scale)
{
    return scale.dp(flagBody);
}

QRect TimeMarkers::flagPlace(int x, int rulerHeight, PixelScale scale)
{
    const QSize size = flagSize(scale);
    return {QPoint(x + scale.s() / 2 - size.width() / 2, rulerHeight - size.height()), size};
}
