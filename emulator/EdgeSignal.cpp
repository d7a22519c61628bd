#include "EdgeSignal.h"

#include <algorithm>

namespace emulator {

namespace {

constexpr std::size_t nearBy = 8; // steps before the search bisects

} // namespace

EdgeSignal::EdgeSignal(std::int64_t rate, std::vector<Channel> channels) : m_rate(rate), m_channels(std::move(channels))
{
    m_channels.resize(std::min(m_channels.size(), maxChannels));
    m_cursors.resize(m_channels.size());
    for (std::size_t i = 0; i < m_channels.size(); ++i) {
        if (!m_channels[i].edges.empty()) {
            m_moving.push_back(i);
        }
        m_levels |= std::uint32_t(m_channels[i].startLevel) << i;
    }
    seekAll(0);
}

/// Sets the cursor to the channel's first edge above `position`, and the level before it.
void EdgeSignal::seek(std::size_t channel, std::int64_t position)
{
    const std::vector<std::int64_t> &edges = m_channels[channel].edges;
    Cursor &cursor = m_cursors[channel];
    const auto first = edges.begin() + std::ptrdiff_t(position < m_position ? 0 : cursor.index);
    auto found = std::find_if(first, first + std::min<std::ptrdiff_t>(nearBy, edges.end() - first),
                              [position](std::int64_t edge) { return edge > position; });
    if (found == first + nearBy) {
        found = std::upper_bound(found, edges.end(), position);
    }
    cursor.index = std::size_t(found - edges.begin());
    cursor.next = found == edges.end() ? never : *found;
    const std::uint32_t bit = 1U << channel;
    const bool level = m_channels[channel].startLevel != ((cursor.index & 1) != 0);
    m_levels = level ? m_levels | bit : m_levels & ~bit;
}

void EdgeSignal::seekAll(std::int64_t position)
{
    for (const std::size_t channel : m_moving) {
        seek(channel, position);
    }
    m_position = position;
}

SignalRun EdgeSignal::at(std::int64_t position, std::uint32_t mask)
{
    if (position < m_position) {
        seekAll(position);
    }
    SignalRun run;
    for (const std::size_t channel : m_moving) {
        if (m_cursors[channel].next <= position) {
            seek(channel, position);
        }
        if ((mask >> channel & 1) != 0) {
            run.end = std::min(run.end, m_cursors[channel].next);
        }
    }
    m_position = position;
    run.levels = m_levels & mask;
    return run;
}

} // namespace emulator
