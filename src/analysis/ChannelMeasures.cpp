#include "analysis/ChannelMeasures.h"

#include "store/SmpEdgeReader.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr unsigned lowBits = 20;
constexpr std::uint64_t lowMask = (std::uint64_t(1) << lowBits) - 1;
constexpr double highFactor = double(std::uint64_t(1) << lowBits);

} // namespace

void SampleStatistics::add(std::int64_t samples)
{
    if (count == 0) {
        m_first = least = most = samples;
    }
    ++count;
    least = std::min(least, samples);
    most = std::max(most, samples);
    sum += samples;
    m_shifted += samples - m_first;
    const auto distance = std::uint64_t(std::abs(samples - m_first));
    const std::uint64_t top = distance >> lowBits;
    const std::uint64_t rest = distance & lowMask;
    m_highHigh += top * top;
    m_highLow += top * rest;
    m_lowLow += rest * rest;
}

double SampleStatistics::mean() const
{
    return count > 0 ? double(sum) / double(count) : 0;
}

double SampleStatistics::deviation() const
{
    if (count == 0) {
        return 0;
    }
    const auto n = double(count);
    const double squares = (double(m_highHigh) * highFactor + 2 * double(m_highLow)) * highFactor + double(m_lowLow);
    const double shift = double(m_shifted) / n;
    return std::sqrt(std::max(squares / n - shift * shift, 0.0));
}

void RatioStatistics::add(double value)
{
    if (count == 0) {
        least = most = value;
    }
    ++count;
    least = std::min(least, value);
    most = std::max(most, value);
    // B. P. Welford, "Note on a Method for Calculating Corrected Sums of Squares and Products", 1962.
    const double before = value - m_mean;
    m_mean += before / double(count);
    m_squares += before * (value - m_mean);
}

double RatioStatistics::deviation() const
{
    return count > 0 ? std::sqrt(m_squares / double(count)) : 0;
}

bool measureChannel(const SmpData &capture, int chn, std::int64_t from, std::int64_t to, ChannelMeasures &measures)
{
    constexpr std::int64_t none = -1;
    SmpEdgeReader reader(capture, chn, std::max<std::int64_t>(from - 1, 0));
    if (!reader.hasData()) {
        return capture.lastPosition(chn) >= 0; // the range begins behind the data
    }
    std::int64_t lastRise = none;
    std::int64_t lastFall = none;
    for (; !reader.atEnd() && reader.next() < to; reader.advance()) {
        const std::int64_t edge = reader.next();
        if (reader.level() != 0) {
            ++measures.falling;
            if (lastRise != none) {
                measures.high.add(edge - lastRise);
            }
            lastFall = edge;
            continue;
        }
        ++measures.rising;
        if (lastFall != none) {
            measures.low.add(edge - lastFall);
        }
        if (lastRise != none) {
            const std::int64_t period = edge - lastRise;
            const std::int64_t highPart = lastFall - lastRise;
            measures.period.add(period);
            measures.highPart.add(highPart);
            measures.inverse.add(1 / double(period));
            measures.duty.add(double(highPart) / double(period));
        }
        lastRise = edge;
    }
    return true;
}
