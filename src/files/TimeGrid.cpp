#include "files/TimeGrid.h"

#include <numeric>

namespace {

__extension__ typedef __int128 Wide;

constexpr std::int64_t rateMax = CaptureFiller::positionMax; // as a data file holds it

} // namespace

TimeGrid::TimeGrid(CaptureFiller &filler, std::int64_t ticksPerSecond, std::int64_t rate, bool least)
    : m_filler(filler),
      m_ticksPerSecond(ticksPerSecond),
      m_told(rate),
      m_perTick(double(rate) / double(ticksPerSecond)),
      m_unit(least || ticksPerSecond > rateMax ? ticksPerSecond : 1),
      m_isLeast(m_unit > 1)
{}

std::int64_t TimeGrid::placeAtRate(std::int64_t ticks) const
{
    const double nearest = double(ticks) * m_perTick + 0.5;
    if (!(nearest < double(CaptureFiller::positionMax + 1))) {
        return tooLong;
    }
    // The quotient is right but for a tiny part of a sample, so that this finds every time of the rate.
    const auto pos = std::int64_t(nearest);
    const Wide away = Wide(pos) * m_ticksPerSecond - Wide(ticks) * m_told;
    return (away < 0 ? -away : away) * 2 <= m_told ? pos : notOfRate;
}

bool TimeGrid::takeUnit(std::int64_t unit)
{
    if (m_ticksPerSecond / unit > rateMax) {
        return false;
    }
    if (unit < m_unit) {
        m_filler.scale(m_unit / unit, 1);
    } else {
        m_filler.scale(1, unit / m_unit);
    }
    m_unit = unit;
    return true;
}

std::int64_t TimeGrid::placeOnUnit(std::int64_t ticks)
{
    if (!m_isLeast) {
        m_isLeast = true;
        if (!takeUnit(m_filler.commonDivisor(std::gcd(m_ticksPerSecond, ticks)))) {
            return tooFine;
        }
    }
    if (ticks % m_unit != 0 && !takeUnit(std::gcd(m_unit, ticks))) {
        return tooFine;
    }
    const std::int64_t pos = ticks / m_unit;
    return pos <= CaptureFiller::positionMax ? pos : tooLong;
}
