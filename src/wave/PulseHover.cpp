#include "wave/PulseHover.h"

#include "wave/TimeAxis.h"

#include <algorithm>

namespace {

constexpr int significantDigits = 9;
constexpr double overhang = 10.0;    ///< logical pixels by which an arrow may pass the view's edges
constexpr double gapAtEdge = 2.0;    ///< logical pixels between an arrow's end and its edge
constexpr double gapAfterEdge = 3.0; ///< the same at the start of the second arrow
constexpr double sampleLimit = double(std::int64_t(1) << 40); ///< positions have 40 bits

std::int64_t prevOrStart(const SmpEdgeInfo &info)
{
    return std::max<std::int64_t>(info.prevEdge, 0);
}

QString unknownText()
{
    return QStringLiteral("###");
}

} // namespace

std::int64_t sampleUnder(int x, const WaveWindow &window)
{
    const double sample = window.start + x * window.ratio;
    const bool inRange = sample > -1.0 && sample < sampleLimit;
    return inRange ? std::int64_t(sample) : -1;
}

PulseTimes pulseTimes(const SmpEdgeInfo &info, std::int64_t rate)
{
    const double samplePs = TimeAxis::psPerSecond / double(rate);
    const std::int64_t prev = prevOrStart(info);
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

ArrowSpans arrowSpans(const SmpEdgeInfo &info, const WaveWindow &window)
{
    const auto pixel = [&window](std::int64_t edge) { return (double(edge) - window.start) / window.ratio; };
    const double right = window.width + overhang;
    const double next = pixel(info.nextEdge);

    ArrowSpans spans;
    spans.span1Start = std::max(pixel(prevOrStart(info)) + gapAtEdge, -overhang);
    spans.span1End = std::min(next - gapAtEdge, right);
    const bool secondSeen = next - gapAtEdge <= right && next + gapAfterEdge < window.width;
    if (secondSeen && info.afterNextEdge > info.nextEdge) {
        spans.span2Start = next + gapAfterEdge;
        spans.span2End = std::min(pixel(info.afterNextEdge) - gapAtEdge, right);
    }
    return spans;
}
