#include "Sampler.h"

#include <algorithm>
#include <numeric>

namespace emulator {

namespace {

__extension__ typedef __int128 Wide;

/// a * b / c, rounded down; `never` if it is beyond the range. All arguments at least 0, c above 0.
std::int64_t scaled(std::int64_t a, std::int64_t b, std::int64_t c)
{
    return std::int64_t(std::min<Wide>(Wide(a) * b / c, never));
}

} // namespace

Sampler::Sampler(std::shared_ptr<LogicSignal> signal, std::int64_t clock, std::uint32_t divider, bool direct)
    : m_signal(std::move(signal))
{
    const std::int64_t div = std::max<std::int64_t>(divider, 1);
    m_samplesPerNanosecond = double(clock) / double(div) / 1e9;
    m_secondsPerSample = clock > 0 ? double(div) / double(clock) : 0;
    if (direct || m_signal == nullptr || m_signal->rate() < 1) {
        return;
    }
    const std::int64_t num = m_signal->rate() * div;
    const std::int64_t common = std::gcd(num, clock);
    m_num = num / common;
    m_den = clock / common;
}

std::int64_t Sampler::positionOf(std::int64_t i) const
{
    return m_num == m_den ? i : scaled(i, m_num, m_den);
}

/// The first sample that is taken at `position` or behind it.
std::int64_t Sampler::firstSampleAt(std::int64_t position) const
{
    if (position == never || m_num == m_den) {
        return position;
    }
    const std::int64_t i = scaled(position, m_den, m_num);
    return positionOf(i) < position ? i + 1 : i;
}

SignalRun Sampler::at(std::int64_t i, std::uint32_t mask) const
{
    if (m_signal == nullptr) {
        return {};
    }
    SignalRun run = m_signal->at(positionOf(i), mask);
    run.end = std::max(firstSampleAt(run.end), i + 1);
    return run;
}

std::int8_t Sampler::analogAt(int channel, std::int64_t i) const
{
    return m_signal == nullptr ? std::int8_t(0)
                               : m_signal->analogAt(channel, {i, positionOf(i), double(i) * m_secondsPerSample});
}

std::int64_t Sampler::samplesIn(double nanoseconds) const
{
    return std::int64_t(nanoseconds * m_samplesPerNanosecond);
}

} // namespace emulator
