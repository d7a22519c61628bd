#include "wave/AnalogScale.h"

#include "controls/Truncate.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr int millivoltsInAVolt = 1000;
constexpr double firstTag = 0.3; ///< of the area's height
constexpr double nextTag = 0.4;
constexpr double steepStroke = 16.0; ///< rows for each column

/// The whole number that a text begins with, 0 for none.
int leadingNumber(const QString &text)
{
    int digits = 0;
    while (digits < text.size() && text.at(digits) >= QLatin1Char('0') && text.at(digits) <= QLatin1Char('9')) {
        ++digits;
    }
    return text.leftRef(digits).toInt();
}

/// Cuts off what of a stroke lies on the far side of a row. @return false when that is all of it
bool cutAt(QLineF &line, double row, bool below)
{
    const auto isBeyond = [=](double y) { return below ? y > row : y < row; };
    const bool first = isBeyond(line.y1());
    const bool second = isBeyond(line.y2());
    if (first && second) {
        return false;
    }
    if (first || second) {
        const QPointF cut(line.x1() + line.dx() * (row - line.y1()) / line.dy(), row);
        line = first ? QLineF(cut, line.p2()) : QLineF(line.p1(), cut);
    }
    return true;
}

/// Adds a stroke from one column to the next as two bars that meet at half of its height.
/// @param isNext  the last bar belongs to the stroke's first point
void addBars(const QLineF &line, int stroke, bool isNext, std::vector<QRect> &bars)
{
    const int from = truncated32(line.y1()) - stroke / 2;
    const int to = truncated32(line.y2()) - stroke / 2;
    const int middle = from + (to - from) / 2;
    const auto barOf = [stroke](double column, int y1, int y2) {
        return QRect(truncated32(column) - stroke / 2, std::min(y1, y2), stroke, std::abs(y2 - y1) + stroke);
    };
    const QRect first = barOf(line.x1(), from, middle);
    if (isNext) {
        bars.back() = bars.back().united(first);
    } else {
        bars.push_back(first);
    }
    bars.push_back(barOf(line.x2(), middle, to));
}

} // namespace

int voltDivOfText(const QString &text)
{
    if (text.endsWith(QLatin1String("mV/div"))) {
        return leadingNumber(text);
    }
    if (text.endsWith(QLatin1String("V/div"))) {
        return truncated32(double(leadingNumber(text)) * millivoltsInAVolt);
    }
    return 0;
}

QString voltDivText(int millivolts)
{
    if (millivolts % millivoltsInAVolt != 0) {
        return QString::number(millivolts) + QStringLiteral("mV/div");
    }
    return QString::number(millivolts / millivoltsInAVolt) + QStringLiteral("V/div");
}

bool isPlace(TagPlace place)
{
    return place.refHeight > 0 && place.y >= 0 && place.y <= place.refHeight;
}

TagPlace startPlace(int index, int height, int s)
{
    const int logical = height / s;
    return {truncated32((index * nextTag + firstTag) * logical), logical};
}

TagPlace placeAt(int centre, int height, int s)
{
    return {centre / s, height / s};
}

int centreOf(TagPlace place, int height, int s)
{
    const int logical = height / s;
    return truncated32(double(place.y) * logical / place.refHeight) * s;
}

int voltageAt(int centre, int zeroY, int fullScale, int height, int s)
{
    const int logical = height / s;
    const int rows = zeroY / s - centre / s;
    return logical < 1 ? 0 : truncated32(double(rows) * fullScale / logical);
}

int rowOfVoltage(int millivolts, int zeroY, int fullScale, int height, int s)
{
    if (fullScale == 0) {
        return zeroY;
    }
    const int logical = height / s;
    const int zero = zeroY / s;
    const double row = double(truncated32(zero - double(millivolts) * logical / fullScale)) * s;
    return row > height ? height - s : truncated32(std::max(row, 0.0));
}

void traceStrokes(std::span<const SmpAChnPoint> points, const TraceScale &trace, PixelScale scale, int left, int right,
                  TraceStrokes &strokes)
{
    strokes.lines.clear();
    strokes.bars.clear();
    if (trace.fullScale == 0 || trace.height == 0 || points.size() < 2) {
        return;
    }
    const double sign = trace.reversed ? -1.0 : 1.0;
    const int stroke = scale.s();
    // Positions stay 64 bits wide: a point may lie as far to the right as its number goes.
    const auto columnOf = [stroke](const SmpAChnPoint &point) {
        const std::int64_t column = std::int64_t(point.x) * stroke + stroke / 2;
        return double(column);
    };
    const auto rowOf = [&](const SmpAChnPoint &point) {
        return double(truncated32(trace.zeroY - sign * point.value * trace.height / trace.fullScale));
    };
    QPointF from(columnOf(points[0]), rowOf(points[0]));
    bool lastIsBar = false;
    for (const SmpAChnPoint &point : points.subspan(1)) {
        const QPointF to(columnOf(point), rowOf(point));
        QLineF line(from, to);
        const bool isExposed = to.x() >= left - stroke && from.x() <= right + stroke;
        const bool isSeen = isExposed && cutAt(line, 0, false) && cutAt(line, trace.height - 1, true);
        const bool isSteep = to.x() - from.x() <= stroke && std::abs(line.dy()) > steepStroke * stroke;
        if (isSeen && isSteep) {
            addBars(line, stroke, lastIsBar, strokes.bars);
        } else if (isSeen) {
            strokes.lines.push_back(line);
        }
        lastIsBar = isSeen && isSteep && line.p2() == to;
        from = to;
    }
}
