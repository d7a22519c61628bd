#include "analysis/AnalogParameters.h"

#include "analysis/AnalogFormat.h"
#include "analysis/MarkerTimes.h"
#include "store/SmpData.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <vector>

namespace {

using Index = std::ptrdiff_t;

constexpr Index filterReach = 2;                    // samples on either side of the one that is filtered
constexpr Index leastSamples = 2 * filterReach + 1; // the filter needs one whole window
constexpr Index slowSamples = 20;                   // a rise of so many needs no plateau; a plateau needs as many
constexpr double leastRise = 2000.0;                // millivolts at a probe of factor 1
constexpr std::size_t leastRises = 4;               // fewer are no wave
constexpr double fullScale = 10000.0;               // millivolts
constexpr double lowestInput = -5000.0;             // millivolts
constexpr double byteSpan = 255.0;                  // from the lowest byte of the converter to the highest
constexpr double bytesBelowZero = 128.0;

/// The filtered signal.
struct Trace {
    std::vector<double> volts;  ///< millivolts
    std::vector<double> slopes; ///< from each sample to the next; that of the last pair is 0
    double mean = 0;
    double rms = 0;

    [[nodiscard]] double at(Index i) const { return volts[std::size_t(i)]; }
    [[nodiscard]] double slope(Index i) const { return slopes[std::size_t(i)]; }
    [[nodiscard]] Index size() const { return Index(volts.size()); }
};

/// First and last sample of a rise.
struct Rise {
    Index start;
    Index end;
};

struct Levels {
    double max;
    double min;
    double top;
    double base;

    [[nodiscard]] double amplitude() const { return top - base; }
};

/// Of one period, in samples.
struct Times {
    Index period;
    Index high;
    Index low;
    Index rise;
    Index fall;
};

std::int8_t medianOfFive(const std::int8_t *s)
{
    const std::int8_t a = s[0], b = s[1], c = s[2], d = s[3], e = s[4];
    // Of two pairs, the smaller of the lows and the larger of the highs cannot be the middle of all five.
    const std::int8_t low = std::max(std::min(a, b), std::min(d, e));
    const std::int8_t high = std::min(std::max(a, b), std::max(d, e));
    return std::max(std::min(low, high), std::min(std::max(low, high), c));
}

/// @param samples  at least `leastSamples`
Trace traceOf(std::span<const std::int8_t> samples, int probe)
{
    const std::size_t n = samples.size();
    constexpr std::size_t reach = std::size_t(filterReach);
    Trace trace;
    trace.volts.resize(n);
    std::vector<double> &volts = trace.volts;
    for (std::size_t i = reach; i + reach < n; ++i) {
        const double median = medianOfFive(samples.data() + i - reach);
        volts[i] = ((median + bytesBelowZero) / byteSpan * fullScale + lowestInput) * probe;
    }
    volts[0] = volts[1] = volts[2];
    volts[n - 2] = volts[n - 1] = volts[n - 3];

    trace.slopes.assign(n - 1, 0.0);
    double sum = 0;
    for (std::size_t i = 0; i + 2 < n; ++i) {
        trace.slopes[i] = volts[i + 1] - volts[i];
        sum += volts[i];
    }
    // The last sample but one is left out of the sum, though not of the count.
    trace.mean = (sum + volts[n - 1]) / double(n);
    trace.rms = std::sqrt(std::inner_product(volts.begin(), volts.end(), volts.begin(), 0.0) / double(n));
    return trace;
}

double middleOf(double a, double b)
{
    return std::trunc((a + b) * 0.5);
}

/// The rise that ends where sample `i` stands, `count` samples behind its start, without the flat pieces at its ends.
Rise trimmed(const Trace &trace, Index i, Index count)
{
    Rise rise{std::max<Index>(i - count - 1, 0), i};
    while (rise.start < i && trace.slope(rise.start) == 0.0) {
        ++rise.start;
    }
    // Usually the slope at `i` is the fall that ended the rise. Only at the end of the data it may be flat.
    for (Index j = i; j > rise.start && trace.slope(j) == 0.0; --j) {
        --rise.end;
    }
    return rise;
}

std::vector<Rise> risesOf(const Trace &trace, int probe)
{
    std::vector<Rise> rises;
    const Index last = trace.size() - 2;
    for (Index i = 0; i < last;) {
        Index count = 0;
        for (; i < last && trace.slope(i) >= 0.0; ++i) {
            ++count;
        }
        if (count == 0 || trace.at(i) - trace.at(i - count) < probe * leastRise) {
            ++i;
            continue;
        }
        const Rise rise = trimmed(trace, i, count);
        if (count < slowSamples) {
            const double middle = middleOf(trace.at(rise.end), trace.at(rise.start));
            while (i < last && trace.at(i) > middle) {
                ++i;
            }
            if (i - rise.end < slowSamples) {
                ++i;
                continue;
            }
        }
        rises.push_back(rise);
    }
    return rises;
}

double meanOf(double sum, std::size_t count)
{
    return sum / double(count); // not a number for none
}

Levels levelsOf(const Trace &trace, const std::vector<Rise> &rises)
{
    std::vector<double> tops, bases;
    for (const Rise &rise : rises) {
        tops.push_back(trace.at(rise.end));
        bases.push_back(trace.at(rise.start));
    }
    std::sort(tops.begin(), tops.end());
    std::sort(bases.begin(), bases.end());
    double lowSum = 0, highSum = 0;
    std::size_t lows = 0, highs = 0;
    for (const std::vector<double> *values : {&tops, &bases}) {
        for (const double value : *values) {
            const bool isLow = value <= trace.mean;
            (isLow ? lowSum : highSum) += value;
            ++(isLow ? lows : highs);
        }
    }
    return {tops.back(), bases.front(), meanOf(highSum, highs), meanOf(lowSum, lows)};
}

/// The first sample from `from` to `to`, both included and in either direction, that `holds`; `none` for none.
template<class Holds>
Index firstWith(Index from, Index to, Index none, Holds holds)
{
    const Index step = from <= to ? 1 : -1;
    for (Index i = from; i != to + step; i += step) {
        if (holds(i)) {
            return i;
        }
    }
    return none;
}

/// Of the period between the rises `first` and `second`.
Times timesOf(const Trace &trace, const Rise &first, const Rise &second, const Levels &levels)
{
    const double middle = middleOf(trace.at(first.start), trace.at(first.end));
    const auto above = [&trace](double level) { return [&trace, level](Index i) { return trace.at(i) >= level; }; };
    const auto below = [&trace](double level) { return [&trace, level](Index i) { return trace.at(i) <= level; }; };
    const Index t1 = firstWith(first.start, first.end, 0, above(middle));
    const Index t2 = firstWith(first.end, second.start, 0, below(middle));
    const Index t3 = firstWith(second.start, second.end, 0, above(middle));

    const double high = levels.amplitude() * 0.9 + levels.base;
    const double low = levels.amplitude() * 0.1 + levels.base;
    const Index risen = firstWith(first.start, first.end, first.end, above(high));
    const Index rising = firstWith(first.end, first.start, first.start, below(low));
    const Index fallen = firstWith(first.end, second.start, second.start, below(low));
    const Index falling = firstWith(second.start, first.end, first.end, above(high));
    return {t3 - t1, t2 - t1, t3 - t2, risen - rising, fallen - falling};
}

QString textOf(const Times &times, const Levels &levels, const Trace &trace, std::int64_t rate)
{
    const QString unknown = QStringLiteral("--");
    const auto time = [rate, &unknown](Index samples) {
        return rate < 1 ? unknown : formatTimePs(std::int64_t(double(samples) * psPerSecond / double(rate)));
    };
    const double amplitude = levels.amplitude();
    const std::array<QString, 17> values{
        time(times.period),
        times.period == 0 || rate < 1 ? unknown : formatFrequency(rate / times.period),
        time(times.rise),
        time(times.fall),
        time(times.high),
        time(times.low),
        times.period == 0 ? unknown : formatPercent(double(times.high) / double(times.period) * 100.0),
        formatVoltage(levels.max),
        formatVoltage(levels.min),
        formatVoltage(levels.max - levels.min),
        formatVoltage(amplitude),
        formatVoltage(levels.top),
        formatVoltage(levels.base),
        formatPercent((levels.max - levels.top) / amplitude * 100.0),
        formatPercent((levels.min - levels.base) / amplitude * 100.0),
        formatVoltage(trace.mean),
        formatVoltage(trace.rms),
    };
    static constexpr std::array<const char *, 17> names{
        "Period", "Frequency", "RiseTime", "FallTime", "+PulseWidth", "-PulseWidth", "DutyCycle", "Vmax", "Vmin",
        "Vpp",    "Vamp",      "Vtop",     "Vbase",    "Overshoot",   "Preshoot",    "Vavg",      "Vrms"};
    QString text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += QLatin1String(i == 0 ? "" : ",") + QLatin1String(names[i]) + QLatin1Char(':') + values[i];
    }
    return text;
}

} // namespace

QString analogParameters(std::span<const std::int8_t> samples, std::int64_t rate, int probe)
{
    if (std::ssize(samples) < leastSamples) {
        return {};
    }
    const Trace trace = traceOf(samples, probe);
    const std::vector<Rise> rises = risesOf(trace, probe);
    if (rises.size() < leastRises) {
        return {};
    }
    const Levels levels = levelsOf(trace, rises);
    const std::size_t middle = rises.size() / 2; // another rise follows it, or the guard above had held
    return textOf(timesOf(trace, rises[middle], rises[middle + 1], levels), levels, trace, rate);
}

std::span<const std::int8_t> analogSamples(const SmpData &data, int chn)
{
    if (chn < 0 || chn >= data.aChnCount || data.aChnBufs()[std::size_t(chn)] == nullptr) {
        return {};
    }
    const SmpAChnBuffer &buffer = *data.aChnBufs()[std::size_t(chn)];
    return std::span(buffer.samples).first(std::size_t(std::clamp(buffer.count, 0, SmpAChnBuffer::capacity)));
}

QString analogParameters(const SmpData &data, int chn, int probe)
{
    return analogParameters(analogSamples(data, chn), data.smpFrequ(), probe);
}
