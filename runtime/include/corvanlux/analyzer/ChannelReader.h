#pragma once

#include "EdgeTree.h"
#include "RunControl.h"

#include <algorithm>
#include <cstdint>

#if defined(__GNUC__)
#define LUX_COLD [[gnu::noinline, gnu::cold]]
#else
#define LUX_COLD
#endif

namespace lux {

/// A sample number: from 0 at the capture's first sample, 40 bits.
using Sample = std::int64_t;

/// Walks one channel of a capture from edge to edge. An edge at sample p: p is the first sample of the new level.
///
/// Made by Decoder::reader() for the length of a run; on the worker thread. A copy is a reader of its own at the same
/// place, and cheap: that is how to look ahead. A copy in a local variable also is the fastest to walk.
///
/// The reader stands at a sample within the capture, and goes forward only, but for seek(). Operations that would have
/// to go to or past the capture's end leave the decode by unwinding: destructors run, and decode() has no code for it.
/// Who needs to know before asks hasEdge(), hasEdgeBefore(), peekEdge() or sampleCount(). A stop of the decode leaves
/// it the same way. Who catches everything meets it again at the next read.
///
/// Cost: a few cycles an edge; a jump over any number of edges is a search. Nothing is copied or allocated.
class ChannelReader {
public:
    /// A channel that is low throughout.
    ChannelReader(detail::RunControl &control, Sample sampleCount)
        : m_end(sampleCount), m_next(sampleCount), m_control(&control)
    {}
    /// A closed channel. `root` may be null: as the constructor above.
    ChannelReader(const SmpEdgeRoot *root, detail::RunControl &control, Sample sampleCount)
        : ChannelReader(control, sampleCount)
    {
        if (root == nullptr || root->midCount < 1 || sampleCount < 1)
            return;
        m_root = root;
        m_end = root->midLast[root->midCount - 1];
        m_startLevel = std::uint32_t(root->startLevel) & 1U;
        locate(0);
    }

    // ---- where the reader stands; never leaves the decode ----------------------------------------------------------

    /// False for a channel that is not there: it has no edge.
    [[nodiscard]] bool exists() const { return m_root != nullptr; }
    [[nodiscard]] Sample position() const { return m_pos; }
    /// The level here, true for high.
    [[nodiscard]] bool level() const { return ((m_startLevel ^ std::uint32_t(m_index)) & 1U) != 0; }
    /// The capture's length: the first sample that is none.
    [[nodiscard]] Sample sampleCount() const { return m_end; }
    /// Whether another edge follows.
    [[nodiscard]] bool hasEdge() const { return m_next < m_end; }
    /// Whether an edge follows that stands before `sample`.
    [[nodiscard]] bool hasEdgeBefore(Sample sample) const { return m_next < std::min(sample, m_end); }
    /// The sample of the next edge, sampleCount() when there is none.
    [[nodiscard]] Sample peekEdge() const { return m_next; }
    /// The sample of the last edge here or before; -1 when there is none.
    [[nodiscard]] Sample lastEdge() const
    {
        if (m_index > 0)
            return at(m_index - 1);
        return edgesPassed() > 0 ? previousLeaf()->position(SmpEdgeLeaf::capacity - 1) : -1;
    }
    /// The number of edges behind, from the capture's first one.
    [[nodiscard]] std::int64_t edgesPassed() const
    {
        return (std::int64_t(m_mid) * SmpEdgeMid::capacity + m_leaf) * SmpEdgeLeaf::capacity + m_index;
    }
    /// The number of edges to come.
    [[nodiscard]] std::int64_t edgesLeft() const { return m_root == nullptr ? 0 : endIndex() - edgesPassed(); }

    // ---- going forward ---------------------------------------------------------------------------------------------

    /// Goes to the next edge. @return its sample
    Sample nextEdge()
    {
        if (m_next >= m_end) [[unlikely]]
            detail::leaveDecode(*m_control);
        m_pos = m_next;
        step();
        return m_pos;
    }
    /// Goes to the next edge that leads to high, or to low. @return its sample
    Sample nextRise()
    {
        nextEdge();
        return level() ? m_pos : nextEdge();
    }
    Sample nextFall()
    {
        nextEdge();
        return level() ? nextEdge() : m_pos;
    }
    /// Goes to the next edge if one stands before `sample`, else to `sample` itself. @return whether it is an edge
    bool nextEdgeBefore(Sample sample)
    {
        if (hasEdgeBefore(sample)) {
            nextEdge();
            return true;
        }
        advanceTo(sample);
        return false;
    }
    /// Stays where the level is this one, else goes to the next edge. @return the position
    Sample waitForLevel(bool high) { return level() == high ? m_pos : nextEdge(); }
    /// Goes forward to `sample`; stays when it is there or past it. @return the number of edges on the way, one at
    /// `sample` included
    std::int64_t advanceTo(Sample sample)
    {
        if (m_control->leave.load(std::memory_order_relaxed) != 0) [[unlikely]]
            detail::leaveDecode(*m_control);
        if (sample < m_next) {
            m_pos = std::max(m_pos, sample);
            return 0;
        }
        const std::int64_t before = edgesPassed();
        goForward(sample);
        return edgesPassed() - before;
    }
    /// The level at `sample`, to which the reader goes forward. A sample behind is looked up, and the reader stays.
    bool levelAt(Sample sample)
    {
        if (m_control->leave.load(std::memory_order_relaxed) != 0) [[unlikely]]
            detail::leaveDecode(*m_control);
        if (sample < m_pos) [[unlikely]]
            return levelBehind(sample);
        // Whether data has an edge between two clocks is as good as random: up to two take no branch.
        if (m_index + 2 < m_count) [[likely]] {
            const std::int32_t index =
                m_index + std::int32_t(m_next <= sample) + std::int32_t(at(m_index + 1) <= sample);
            const Sample next = at(index);
            if (sample < next) [[likely]] {
                m_index = index;
                m_next = next;
                m_pos = sample;
                return level();
            }
        }
        if (sample >= m_next)
            goForward(sample);
        m_pos = sample;
        return level();
    }
    /// The level at any sample of the capture; the reader stays. Fast near where it stands.
    [[nodiscard]] bool peekLevel(Sample sample) const
    {
        if (sample < m_pos)
            return levelBehind(sample);
        if (sample < m_next)
            return level();
        ChannelReader ahead(*this);
        return ahead.levelAt(sample);
    }
    /// Goes over `count` edges. @return the sample of the last; the position for a count below 1
    Sample skipEdges(std::int64_t count)
    {
        if (count < 1)
            return m_pos;
        if (count > edgesLeft())
            detail::leaveDecode(*m_control);
        enter(edgesPassed() + count - 1);
        return nextEdge();
    }
    /// Goes to any sample, backward too: to try a piece again.
    void seek(Sample sample)
    {
        if (sample >= m_end || m_control->leave.load(std::memory_order_relaxed) != 0)
            detail::leaveDecode(*m_control);
        locate(std::max<Sample>(sample, 0));
    }

private:
    friend class EdgeGroup;
    static constexpr int stepsBeforeSearch = 8;

    [[nodiscard]] Sample at(std::int32_t index) const { return Sample(m_high[index]) << 32 | Sample(m_low[index]); }
    /// To the entry behind the next one; the end mark is one, and stands at m_end.
    void step()
    {
        if (++m_index < m_count) [[likely]]
            m_next = at(m_index);
        else
            enterNextLeaf();
    }
    /// To `sample`, at or past the next edge.
    void goForward(Sample sample)
    {
        if (sample >= m_end) [[unlikely]]
            detail::leaveDecode(*m_control);
        // How many edges noise has between two clocks is as good as random, too: a few take no branch.
        if (m_index + stepsBeforeSearch < m_count) [[likely]] {
            std::int32_t passed = 1;
            for (int i = 1; i < stepsBeforeSearch; ++i)
                passed += std::int32_t(at(m_index + i) <= sample);
            m_index += passed;
            m_next = at(m_index);
            if (sample < m_next) {
                m_pos = sample;
                return;
            }
        } else {
            for (int i = 0; i < stepsBeforeSearch; ++i) {
                m_pos = m_next;
                step();
                if (sample < m_next) {
                    m_pos = sample;
                    return;
                }
            }
        }
        search(sample);
        m_pos = sample;
    }
    void load(std::int32_t mid, std::int32_t leaf, std::int32_t index)
    {
        const SmpEdgeLeaf &block = *m_root->mids[mid]->leaves[leaf];
        m_low = block.posLow;
        m_high = block.posHigh;
        m_count = block.count;
        m_mid = mid;
        m_leaf = leaf;
        m_index = index;
        m_next = index < m_count ? at(index) : m_end;
    }
    LUX_COLD void enterNextLeaf()
    {
        const bool lastOfMid = m_root == nullptr || m_leaf + 1 >= m_root->mids[m_mid]->leafCount;
        if (!lastOfMid) {
            load(m_mid, m_leaf + 1, 0);
        } else if (m_root != nullptr && m_mid + 1 < m_root->midCount) {
            load(m_mid + 1, 0, 0);
        } else {
            --m_index; // not in a closed channel: its end mark is never passed
            m_next = m_end;
        }
        detail::passedOn(*m_control, m_pos);
    }
    /// To the first entry above `sample`, which lies before m_end and at or behind the next entry.
    LUX_COLD void search(Sample sample)
    {
        const SmpEdgeMid *mid = m_root->mids[m_mid];
        if (sample < mid->leafLast[m_leaf]) {
            m_index = firstAbove(sample, m_index);
            m_next = at(m_index);
            return;
        }
        std::int32_t midNo = m_mid;
        std::int32_t from = m_leaf;
        if (sample >= m_root->midLast[midNo]) {
            const std::int64_t *last = m_root->midLast;
            midNo = std::int32_t(std::upper_bound(last + midNo, last + m_root->midCount, sample) - last);
            mid = m_root->mids[midNo];
            from = 0;
        }
        const std::int64_t *last = mid->leafLast;
        const std::int64_t *stop = last + mid->leafCount;
        std::int64_t stride = 1; // near ones first
        while (stop - (last + from) > stride && last[from + stride] <= sample) {
            from += std::int32_t(stride);
            stride *= 2;
        }
        stop = std::min(stop, last + from + stride + 1);
        load(midNo, std::int32_t(std::upper_bound(last + from, stop, sample) - last), 0);
        m_index = firstAbove(sample, 0);
        m_next = at(m_index);
        detail::passedOn(*m_control, sample);
    }
    /// The index of the leaf's first entry above `sample`, from `from` on; the leaf has one.
    [[nodiscard]] std::int32_t firstAbove(Sample sample, std::int32_t from) const
    {
        std::int32_t stride = 1; // near ones first
        while (m_count - from > stride && at(from + stride) <= sample) {
            from += stride;
            stride *= 2;
        }
        std::int32_t below = from - 1;
        std::int32_t above = std::min(m_count - 1, from + stride);
        while (above - below > 1) {
            const std::int32_t middle = below + (above - below) / 2;
            (at(middle) <= sample ? below : above) = middle;
        }
        return above;
    }
    /// To `sample` from anywhere; it lies within the capture.
    LUX_COLD void locate(Sample sample)
    {
        m_pos = sample;
        if (m_root == nullptr || sample >= m_end)
            return;
        const std::int64_t *last = m_root->midLast;
        const auto mid = std::int32_t(std::upper_bound(last, last + m_root->midCount, sample) - last);
        last = m_root->mids[mid]->leafLast;
        const std::int64_t *stop = last + m_root->mids[mid]->leafCount;
        load(mid, std::int32_t(std::upper_bound(last, stop, sample) - last), 0);
        m_index = firstAbove(sample, 0);
        m_next = at(m_index);
    }
    /// To the edge with this number, so that it is the next one.
    LUX_COLD void enter(std::int64_t edge)
    {
        const std::int64_t leaf = edge / SmpEdgeLeaf::capacity;
        const auto index = std::int32_t(edge % SmpEdgeLeaf::capacity);
        load(std::int32_t(leaf / SmpEdgeMid::capacity), std::int32_t(leaf % SmpEdgeMid::capacity), index);
        detail::passedOn(*m_control, m_pos);
    }
    /// The number of the end mark.
    [[nodiscard]] std::int64_t endIndex() const
    {
        const std::int32_t mid = m_root->midCount - 1;
        const std::int32_t leaf = m_root->mids[mid]->leafCount - 1;
        return (std::int64_t(mid) * SmpEdgeMid::capacity + leaf) * SmpEdgeLeaf::capacity +
               m_root->mids[mid]->leaves[leaf]->count - 1;
    }
    [[nodiscard]] const SmpEdgeLeaf *previousLeaf() const
    {
        if (m_leaf > 0)
            return m_root->mids[m_mid]->leaves[m_leaf - 1];
        return m_root->mids[m_mid - 1]->leaves[SmpEdgeMid::capacity - 1];
    }
    LUX_COLD bool levelBehind(Sample sample) const
    {
        for (int i = 1; i <= stepsBeforeSearch && i <= m_index; ++i) {
            if (at(m_index - i) <= sample)
                return ((m_startLevel ^ std::uint32_t(m_index - i + 1)) & 1U) != 0;
        }
        ChannelReader behind(*this);
        behind.seek(sample);
        return behind.level();
    }

    // The leaf at hand, and in it the first entry above the position.
    const std::uint32_t *m_low = nullptr;
    const std::uint8_t *m_high = nullptr;
    std::int32_t m_index = 0;
    std::int32_t m_count = 0;
    Sample m_pos = 0;
    Sample m_end;
    Sample m_next; ///< m_end when no edge follows
    detail::RunControl *m_control;
    const SmpEdgeRoot *m_root = nullptr;
    std::int32_t m_mid = 0;
    std::int32_t m_leaf = 0;
    std::uint32_t m_startLevel = 0;
};

} // namespace lux
