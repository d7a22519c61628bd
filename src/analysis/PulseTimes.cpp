#include "analysis/PulseTimes.h"

#include "analysis/MarkerTimes.h"

#include <algorithm>

namespace {

constexpr int significantDigits = 9;

QString unknownText()
{
    return QStringLiteral("###");
}

} // namespace

PulseTimes pulseTimes(const SmpEdgeInfo &info, std::int64_t rate)
{
    const double samplePs = psPerSecond / double(rate);
    const std::int64_t prev = std::max<std::int64_t>(info.prevEdge, 0);
    PulseTimes times{double(info.nextEdge - prev) * samplePs, -1.0, -1.0, -1.0};
    if (info.afterNextEdge > info.nextEdge) {
        const auto cycle = double(info.afterNextEdge - prev);
        times.period = cycle * samplePs;
        times.frequ = double(rate) / cycle;
        times.duty = (info.level != 0 ? times.width : times.period - times.width) / times.period;
    }
    return times;
}

QString unitText(double value, const QStringList &units)
{
    if (!(value > 0.0) || units.isEmpty()) {
        return unknownText();
    }
    int unit = 0;
    while (value >= 1000.0 && unit + 1 < units.size()) {
        value /= 1000.0;
        ++unit;
    }
    return QString::number(value, 'g', significantDigits) + units[unit];
}

QStringList pulseTexts(const PulseTimes &times, const QStringList &timeUnits, const QStringList &freqUnits)
{
    const QString duty = times.duty > 0.0
                             ? QString::number(times.duty * 100.0, 'g', significantDigits) + QLatin1Char('%')
                             : unknownText();
    return {unitText(times.width, timeUnits), unitText(times.period, timeUnits), duty,
            unitText(times.frequ, freqUnits)};
}

QStringList noPulseTexts()
{
    return {unknownText(), unknownText(), unknownText(), unknownText()};
}
