#pragma once

#include "BlockList.h"
#include "corvanlux/analyzer/AnalyzerTypes.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace lux::detail {

/// The frames of a run in the order of their first samples, and above them what a query needs: of every 32nd, 1024th,
/// ... frame its first sample and the greatest last sample before it. Both only grow, so that a query is a few searches
/// in 32 neighbours each, however frames nest and overlap.
///
/// One thread adds. Queries are for any thread, without a lock; they see the published frames.
class FrameStore {
public:
    explicit FrameStore(const MemoryBudget &budget);

    // ---- the worker ------------------------------------------------------------------------------------------------

    /// The frame's first sample must be at or behind that of the frame before. @return false when memory is spent
    [[nodiscard]] bool add(const FrameData &frame)
    {
        if (!m_frames.append(frame))
            return false;
        m_newestFirst = frame.firstSample;
        if (m_open.empty()) { // all before are published
            publishNext(frame.lastSample);
            m_count.store(m_published, std::memory_order_release);
        }
        return true;
    }
    /// Adds a place that holds the publishing of itself and all behind it. @return its number, 0 when memory is spent
    [[nodiscard]] std::uint64_t open(std::int64_t firstSample);
    /// A number that is not open is passed over.
    void fill(std::uint64_t place, const FrameData &frame);
    void drop(std::uint64_t place);
    void dropAll();
    [[nodiscard]] std::int64_t newestFirst() const { return m_newestFirst; }

    // ---- any thread ------------------------------------------------------------------------------------------------

    [[nodiscard]] std::uint64_t count() const { return m_count.load(std::memory_order_acquire); }
    /// @param index  below count()
    [[nodiscard]] const FrameData &operator[](std::uint64_t index) const { return m_frames[index]; }
    /// See AnalyzerResults::GetFramesInRange.
    bool range(std::int64_t past, std::int64_t upTo, std::uint64_t &first, std::uint64_t &last) const;

private:
    static constexpr unsigned fanBits = 5;
    static constexpr std::uint64_t fan = 1U << fanBits;
    static constexpr unsigned levels = 7; ///< 32^7 frames
    static constexpr std::uint64_t none = std::numeric_limits<std::uint64_t>::max();
    static constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();

    /// A group of 32 frames, of 1024, ...; known from its first frame on.
    struct Group {
        std::int64_t first;          ///< sample of its first frame
        std::int64_t greatestBefore; ///< last sample of all frames before it
    };
    // Queries jump about in the lists of groups: they lie in large pages as soon as that is a small part of the frames.
    struct Level {
        explicit Level(const MemoryBudget &budget) : groups(budget), ownGreatest(budget) {}
        BlockList<Group, 10, largePage, 32> groups;
        BlockList<std::int64_t, 10> ownGreatest; ///< last sample of the frames of each whole group
        std::int64_t openGreatest = least;       ///< the same of the group that has not its last frame yet
    };
    struct Place {
        std::uint64_t number;
        std::uint64_t index;
    };

    void publish();
    /// @param lastSample  of the first frame that is not published
    void publishNext(std::int64_t lastSample)
    {
        const std::uint64_t index = m_published;
        if ((index & (fan - 1)) == 0)
            beginGroups(index);
        m_greatest = std::max(m_greatest, lastSample);
        m_levels[0]->openGreatest = std::max(m_levels[0]->openGreatest, lastSample);
        if ((index & (fan - 1)) == fan - 1)
            endGroups(index);
        m_published = index + 1;
    }
    void beginGroups(std::uint64_t index);
    void endGroups(std::uint64_t index);
    [[nodiscard]] std::vector<Place>::iterator placeOf(std::uint64_t number);
    [[nodiscard]] static unsigned shiftOf(unsigned level) { return fanBits * (level + 1); }
    [[nodiscard]] std::uint64_t groupOf(std::int64_t Group::*sample, std::int64_t upTo, std::uint64_t count) const;
    [[nodiscard]] std::uint64_t lastStartingBy(std::int64_t upTo, std::uint64_t group, std::uint64_t count) const;
    [[nodiscard]] std::uint64_t firstEndingPast(std::int64_t past, std::uint64_t group, std::uint64_t count) const;
    [[nodiscard]] std::uint64_t lastEndingPast(std::int64_t past, std::uint64_t from) const;
    [[nodiscard]] std::uint64_t lastEndingPastIn(std::int64_t past, unsigned level, std::uint64_t group) const;

    BlockList<FrameData, 11> m_frames;
    std::array<std::unique_ptr<Level>, levels> m_levels;
    std::vector<Place> m_open; ///< in the order of their places
    std::uint64_t m_lastPlace = 0;
    std::uint64_t m_published = 0;   ///< the writer's own m_count
    std::int64_t m_greatest = least; ///< last sample of the published frames
    std::int64_t m_newestFirst = 0;
    std::atomic<std::uint64_t> m_count{0};
};

} // namespace lux::detail
