#include "HalfBitFinder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace {

constexpr std::size_t mostWidths = 8192;
constexpr std::size_t leastWidths = 6;
constexpr double mostOff = 0.35;       ///< of half a bit: what a pulse may be off
constexpr double leastShare = 1.0 / 3; ///< of pulses that a rate must fit
constexpr double clearlyMore = 0.05;   ///< a shorter bit must fit more pulses by this share

/// 1 or 2 for a pulse of half a bit or of a whole one, 0 for another.
int halvesOf(double width, double half)
{
    for (const int halves : {1, 2}) {
        if (std::abs(width - halves * half) <= mostOff * half) {
            return halves;
        }
    }
    return 0;
}

} // namespace

HalfBitFinder::HalfBitFinder(const lux::ChannelReader &line)
{
    m_widths.reserve(mostWidths);
    lux::ChannelReader ahead(line);
    if (ahead.hasEdge()) {
        ahead.nextEdge();
    }
    std::array<std::vector<lux::Sample>, 2> ofLevel;
    while (m_widths.size() < mostWidths && ahead.hasEdge()) {
        const lux::Sample from = ahead.position();
        std::vector<lux::Sample> &own = ofLevel[std::size_t(ahead.level())];
        own.push_back(ahead.nextEdge() - from);
        m_widths.push_back(own.back());
    }
    std::sort(m_widths.begin(), m_widths.end());
    for (std::vector<lux::Sample> &own : ofLevel) {
        const auto tenth = own.begin() + std::ptrdiff_t(own.size() / 10);
        std::nth_element(own.begin(), tenth, own.end());
        m_shortest += own.empty() ? 0.0 : double(*tenth) / 2;
    }
}

double HalfBitFinder::find() const
{
    if (m_widths.size() < leastWidths) {
        return 0;
    }
    Found found{.share = leastShare};
    for (const std::size_t tenths : {9U, 8U, 7U, 6U, 5U, 4U, 3U, 2U, 1U}) {
        tryHalf(double(m_widths[m_widths.size() * tenths / 10]), found);
    }
    tryHalf(m_shortest, found); // receivers of light or radio make one level longer, and the other one shorter
    return found.half;
}

void HalfBitFinder::tryHalf(double near, Found &found) const
{
    const double half = refined(near);
    const double share = shareOf(half);
    if (half >= 1.0 && share > found.share + (found.half == 0 ? 0.0 : clearlyMore)) {
        found = {.half = half, .share = share};
    }
}

bool HalfBitFinder::fits(double half) const
{
    const auto first = std::upper_bound(m_widths.begin(), m_widths.end(), lux::Sample(0.4 * half));
    const auto last = std::upper_bound(m_widths.begin(), m_widths.end(), lux::Sample(2.5 * half));
    return m_widths.size() < leastWidths || double(last - first) >= leastShare * double(m_widths.size());
}

double HalfBitFinder::withTies(double half) const
{
    double samples = 0;
    double halves = 0;
    double ties = 0;
    for (const lux::Sample width : m_widths) {
        if (double(width) <= 2.5 * half) {
            samples += double(width);
            halves += double(width) > 1.5 * half ? 2 : 1;
            ties += double(width) == 1.5 * half ? 1 : 0;
        }
    }
    if (halves <= 0 || ties <= 0) {
        return half;
    }
    // Taken for what they are not, they bring the mean back to the set one.
    const double ofHalves = samples / halves;
    const double ofWholes = samples / (halves + ties);
    return half - ofWholes > ofHalves - half ? ofWholes : half;
}

double HalfBitFinder::shareOf(double half) const
{
    const auto fitting = std::count_if(m_widths.begin(), m_widths.end(),
                                       [half](lux::Sample width) { return halvesOf(double(width), half) != 0; });
    return double(fitting) / double(m_widths.size());
}

/// The half bit that fits the pulses best, near this one.
double HalfBitFinder::refined(double half) const
{
    for (int round = 0; round < 4; ++round) {
        double samples = 0;
        double halves = 0;
        for (const lux::Sample width : m_widths) {
            const int count = halvesOf(double(width), half);
            samples += count != 0 ? double(width) : 0.0;
            halves += count;
        }
        half = halves > 0 ? samples / halves : half;
    }
    return half;
}
