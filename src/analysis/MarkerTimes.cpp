#include "analysis/MarkerTimes.h"

#include "store/SmpData.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int mostDigits = 17;            ///< what lies beyond is noise of the binary form
constexpr double mostDigitsFrom = 1e17;   ///< from here on a whole number has more
constexpr double wholeSampleLimit = 9e18; ///< beyond any window; a 64-bit number all the same

} // namespace

QString MarkerTimes::label(int id)
{
    return QChar(ushort(u'A' + id / 2)) + QString::number(id % 2 + 1);
}

double MarkerTimes::sampleAt(int column, double start, double ratio)
{
    const double sample = std::trunc(column * ratio + start + 0.5);
    return std::isnan(sample) ? 0.0 : std::clamp(sample, -wholeSampleLimit, wholeSampleLimit);
}

bool MarkerTimes::nearestEdge(double sample, const SmpEdgeInfo &edges, NearEdge &near)
{
    if (edges.prevEdge == -1 && edges.nextEdge == -1) {
        return false;
    }
    const auto prev = double(std::max<std::int64_t>(edges.prevEdge, 0));
    const auto next = double(std::max<std::int64_t>(edges.nextEdge, 0));
    const double toPrev = std::abs(sample - prev);
    const double toNext = std::abs(next - sample);
    near = toNext <= toPrev ? NearEdge{next, toNext} : NearEdge{prev, toPrev};
    return true;
}

double MarkerTimes::timeOf(double sample, std::int64_t trigger, std::int64_t rate)
{
    return std::trunc((sample - double(trigger)) * psPerSecond / double(rate));
}

double MarkerTimes::distanceOf(double a, double b, std::int64_t rate)
{
    return std::trunc(std::abs(a - b) * psPerSecond / double(rate));
}

QString MarkerTimes::timeText(double ps, const QStringList &units)
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

QString MarkerTimes::positionText(double sample, std::int64_t trigger, std::int64_t rate, const QStringList &units)
{
    const QString time = timeText(timeOf(sample, trigger, rate), units);
    return QStringLiteral("%1  [%2]").arg(time).arg(qlonglong(sample) - trigger);
}
