#include "TriggerUnit.h"

#include <algorithm>

namespace emulator {

bool TriggerUnit::levelsMatch(std::uint32_t levels) const
{
    return ((levels ^ m_config.polarity) & m_config.levelChannels()) == 0;
}

bool TriggerUnit::edgesMatch(std::uint32_t before, std::uint32_t levels) const
{
    const std::uint32_t edges = m_config.edgeChannels();
    // With the falling ones inverted, a wanted edge is one from 0 to 1.
    const std::uint32_t from = before ^ m_config.polarity;
    const std::uint32_t to = levels ^ m_config.polarity;
    return (~from & to & edges) == edges;
}

std::int64_t TriggerUnit::search(const Sampler &sampler, std::int64_t to, std::int64_t runs)
{
    if (m_config.none()) {
        return m_at < to ? m_at : -1;
    }
    const bool byLevelAlone = m_config.edgeChannels() == 0;
    // The signal is read forward only: the sample before the first comes before it.
    bool hasBefore = m_at > 0;
    std::uint32_t before = hasBefore ? sampler.at(m_at - 1, m_config.takesPart).levels : 0;
    for (; m_at < to && runs > 0; --runs) {
        const SignalRun run = sampler.at(m_at, m_config.takesPart);
        if (levelsMatch(run.levels) && (byLevelAlone || (hasBefore && edgesMatch(before, run.levels)))) {
            return m_at;
        }
        before = run.levels;
        hasBefore = true;
        m_at = std::min(run.end, to);
    }
    return -1;
}

} // namespace emulator
