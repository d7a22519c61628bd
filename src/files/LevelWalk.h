#pragma once

#include "store/SmpEdgeReader.h"

#include <algorithm>
#include <cstdint>
#include <vector>

/// Walks some channels of a closed capture forward together, from one sample at which any of them changes to the next.
///
/// Private to this folder. The caller holds a SmpReadLock as long as this lives. Channels are numbered in the order in
/// which they were added.
class LevelWalk {
public:
    static constexpr std::int64_t never = SmpEdgeReader::never;

    explicit LevelWalk(const SmpData &data) : m_data(data) {}

    /// Adds a channel, which stands at `pos`. One without data is low and never changes.
    /// @return its level there
    int add(int chn, std::int64_t pos)
    {
        const SmpEdgeReader reader(m_data, chn, pos);
        m_next.push_back(reader.next());
        m_nearest = std::min(m_nearest, reader.next());
        m_readers.push_back(reader);
        return reader.level();
    }

    /// The next position at which a channel has an entry, be it the end mark; `never` without channels.
    [[nodiscard]] std::int64_t nearest() const { return m_nearest; }

    /// Takes every channel with an entry at nearest() one entry on; calls `changed` with its number.
    template<class Changed>
    void pass(const Changed &changed)
    {
        const std::int64_t pos = m_nearest;
        std::int64_t least = never;
        const std::size_t count = m_next.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (m_next[i] == pos) {
                m_readers[i].advance();
                m_next[i] = m_readers[i].next();
                changed(int(i));
            }
            least = std::min(least, m_next[i]);
        }
        m_nearest = least;
    }

private:
    const SmpData &m_data;
    std::vector<std::int64_t> m_next; ///< the position of each channel's next entry; close together, to find the least
    std::int64_t m_nearest = never;   ///< the least of them
    std::vector<SmpEdgeReader> m_readers;
};
