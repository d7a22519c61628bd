#pragma once

#include "ChannelReader.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace lux {

/// Several channels in step: goes from edge to edge of any of them. Bit i of a mask is the i-th reader of the group.
///
/// For one clock that samples other lines it is faster to walk the clock alone and to ask the others by levelAt().
/// The readers stay the caller's, and are moved by the group alone while it is used. Cost: a compare a channel and
/// edge.
class EdgeGroup {
public:
    static constexpr std::size_t most = 64;

    /// Channels that are not there take part as low ones. More than `most` are passed over.
    explicit EdgeGroup(std::span<ChannelReader *const> readers)
    {
        for (ChannelReader *reader : readers) {
            if (m_count < most)
                m_readers[m_count++] = reader;
        }
    }
    EdgeGroup(std::initializer_list<ChannelReader *> readers)
        : EdgeGroup(std::span<ChannelReader *const>(readers.begin(), readers.size()))
    {}

    /// The sample of the next edge of any channel; past the capture when there is none.
    [[nodiscard]] Sample peekEdge() const
    {
        Sample nearest = INT64_MAX;
        for (std::size_t i = 0; i < m_count; ++i)
            nearest = std::min(nearest, m_readers[i]->hasEdge() ? m_readers[i]->m_next : INT64_MAX);
        return nearest;
    }
    [[nodiscard]] bool hasEdge() const { return peekEdge() != INT64_MAX; }
    [[nodiscard]] bool hasEdgeBefore(Sample sample) const { return peekEdge() < sample; }
    /// Takes all channels to the next edge of any. Leaves the decode when no channel has one. @return its sample
    Sample nextEdge()
    {
        const Sample nearest = peekEdge();
        if (m_count == 0) [[unlikely]]
            leaveWithoutReaders();
        m_changed = 0;
        for (std::size_t i = 0; i < m_count; ++i) {
            ChannelReader &reader = *m_readers[i];
            if (reader.m_next == nearest || nearest == INT64_MAX) {
                reader.nextEdge();
                m_changed |= std::uint64_t(1) << i;
            } else {
                reader.m_pos = nearest;
            }
        }
        return nearest;
    }
    /// Takes all channels forward to `sample`.
    void advanceTo(Sample sample)
    {
        m_changed = 0;
        for (std::size_t i = 0; i < m_count; ++i) {
            if (m_readers[i]->advanceTo(sample) % 2 != 0)
                m_changed |= std::uint64_t(1) << i;
        }
    }
    /// The channels whose level the last move changed.
    [[nodiscard]] std::uint64_t changed() const { return m_changed; }
    [[nodiscard]] std::uint64_t levels() const
    {
        std::uint64_t mask = 0;
        for (std::size_t i = 0; i < m_count; ++i)
            mask |= std::uint64_t(m_readers[i]->level()) << i;
        return mask;
    }

private:
    LUX_COLD [[noreturn]] static void leaveWithoutReaders()
    {
        detail::RunControl nobodys;
        detail::leaveDecode(nobodys);
    }

    ChannelReader *m_readers[most] = {};
    std::size_t m_count = 0;
    std::uint64_t m_changed = 0;
};

} // namespace lux
