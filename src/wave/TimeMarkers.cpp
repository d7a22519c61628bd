#include "wave/TimeMarkers.h"

#include "controls/Look.h"
#include "controls/Truncate.h"
#include "store/SmpData.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int mostDigits = 17;                ///< what lies beyond is noise of the binary form
constexpr double mostDigitsFrom = 1e17;       ///< from here on a whole number has more
constexpr std::int32_t farColumn = 1'000'000; ///< logical pixels beyond every screen; times any scale an int
constexpr int flagTip = 7;                    ///< pixels at 96 dpi: half of the width, and the height of the tip
constexpr int flagBody = 9;                   ///< pixels at 96 dpi

} // namespace

QString TimeMarkers::label(int id)
{
    return QChar(ushort(u'A' + id / 2)) + QString::number(id % 2 + 1);
}

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
    return double(truncated64(x / scale.s() * window.ratio + window.start + 0.5));
}

int TimeMarkers::columnOf(double sample, const TimeWindow &window, PixelScale scale)
{
    const std::int32_t logical = truncated32((sample - window.start) / window.ratio);
    return std::clamp(logical, -farColumn, farColumn) * scale.s();
}

double TimeMarkers::snapped(double sample, const SmpEdgeInfo &edges, double ratio, PixelScale scale)
{
    if (edges.prevEdge == -1 && edges.nextEdge == -1) {
        return sample;
    }
    const auto prev = double(std::max<std::int64_t>(edges.prevEdge, 0));
    const auto next = double(std::max<std::int64_t>(edges.nextEdge, 0));
    const double toPrev = std::abs(sample - prev);
    const double toNext = std::abs(next - sample);
    const bool takesNext = toNext <= toPrev;
    const double distance = takesNext ? toNext : toPrev;
    if (!(distance / ratio * scale.s() <= scale.dp(snapReach))) {
        return sample;
    }
    return takesNext ? next : prev;
}

bool TimeMarkers::covers(int x, int markerX, PixelScale scale)
{
    const int s = scale.s();
    return x >= markerX - s && x < markerX + 2 * s;
}

double TimeMarkers::timeOf(double sample, std::int64_t trigger, std::int64_t rate)
{
    return std::trunc((sample - double(trigger)) * TimeAxis::psPerSecond / double(rate));
}

double TimeMarkers::distanceOf(double a, double b, std::int64_t rate)
{
    return std::trunc(std::abs(a - b) * TimeAxis::psPerSecond / double(rate));
}

QString TimeMarkers::timeText(double ps, const QStringList &units)
{
    const double magnitude = std::abs(ps);
    const int digits =
        magnitude < mostDigitsFrom ? std::min(mostDigits, int(QString::number(qlonglong(ps)).size())) : mostDigits;
    // One division by the whole factor: several in a row would each add an error.
    double factor = 1.0;
    int unit = 0;
    while (magnitude / factor >= 1000.0 && unit + 1 < units.size()) {
        factor *= 1000.0;
        ++unit;
    }
    return QString::number(ps / factor, 'g', digits) + units.value(unit);
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
