#pragma once

#include "store/SmpData.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

/// Walks some channels of a closed capture forward together, from one sample at which any of them changes to the next.
///
/// Private to this folder. The caller holds a SmpReadLock as long as this lives. Channels are numbered in the order in
/// which they were added.
class LevelWalk {
public:
    static constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

    explicit LevelWalk(const SmpData &data) : m_data(data) {}

    /// Adds a channel, which stands at `pos`. One without data is low and never changes.
    /// @return its level there
    int add(int chn, std::int64_t pos)
    {
        SmpEdgeCursor cursor;
        const int level = m_data.locate(chn, pos, cursor);
        Place place;
        if (level >= 0) {
            place.root = m_data.chnRoots[std::size_t(chn)];
            place.mid = cursor.root;
            place.leafIndex = cursor.mid;
            place.leaf = place.root->mids[cursor.root]->leaves[cursor.mid];
            place.entry = cursor.leaf;
        }
        m_next.push_back(level >= 0 ? place.leaf->position(place.entry) : never);
        m_nearest = std::min(m_nearest, m_next.back());
        m_places.push_back(place);
        return std::max(level, 0);
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
                m_next[i] = m_places[i].stepped();
                changed(int(i));
            }
            least = std::min(least, m_next[i]);
        }
        m_nearest = least;
    }

private:
    /// An entry of a channel.
    struct Place {
        const SmpEdgeRoot *root = nullptr;
        const SmpEdgeLeaf *leaf = nullptr;
        int entry = 0;
        int leafIndex = 0;
        int mid = 0;

        /// One entry on. @return its position, or `never` behind the last one
        [[nodiscard]] std::int64_t stepped()
        {
            if (++entry < leaf->count) {
                return leaf->position(entry);
            }
            entry = 0;
            if (++leafIndex >= root->mids[mid]->leafCount) {
                leafIndex = 0;
                if (++mid >= root->midCount) {
                    return never;
                }
            }
            leaf = root->mids[mid]->leaves[leafIndex];
            return leaf->count > 0 ? leaf->position(0) : never;
        }
    };

    const SmpData &m_data;
    std::vector<std::int64_t> m_next; ///< the position of each channel's next entry; close together, to find the least
    std::int64_t m_nearest = never;   ///< the least of them
    std::vector<Place> m_places;
};
