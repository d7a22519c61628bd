#include "FrameStore.h"

#include <algorithm>
#include <bit>
#include <new>

namespace lux::detail {
namespace {

/// Fetches `count` neighbours at once: a search in them would wait for one line after the other.
template<class T>
void fetch(const T *first, std::uint64_t count)
{
#if defined(__GNUC__)
    constexpr std::size_t line = 64;
    const char *end = reinterpret_cast<const char *>(first + count);
    for (const char *at = reinterpret_cast<const char *>(first); at < end; at += line)
        __builtin_prefetch(at);
#endif
}

/// The number of `count` neighbours, the first of which is known to be, that are at or below `limit`. Without a branch
/// that depends on them: nothing could foresee it.
template<class T, class Sample>
std::uint64_t countUpTo(const T *first, std::uint64_t count, std::int64_t limit, const Sample &sample)
{
    std::uint64_t base = 0;
    while (count > 1) {
        const std::uint64_t half = count / 2;
        base = sample(first[base + half]) <= limit ? base + half : base;
        count -= half;
    }
    return base + 1;
}

} // namespace

FrameStore::FrameStore(const MemoryBudget &budget) : m_frames(budget)
{
    for (auto &level : m_levels)
        level = std::make_unique<Level>(budget);
}

std::uint64_t FrameStore::open(std::int64_t firstSample)
{
    FrameData frame;
    frame.firstSample = firstSample;
    if (!m_frames.append(frame))
        return 0;
    m_newestFirst = firstSample;
    m_open.push_back({++m_lastPlace, m_frames.size() - 1});
    return m_lastPlace;
}

std::vector<FrameStore::Place>::iterator FrameStore::placeOf(std::uint64_t number)
{
    return std::find_if(m_open.begin(), m_open.end(), [number](const Place &place) { return place.number == number; });
}

void FrameStore::fill(std::uint64_t place, const FrameData &frame)
{
    const auto it = placeOf(place);
    if (it == m_open.end())
        return;
    FrameData &kept = m_frames[it->index];
    const std::int64_t firstSample = kept.firstSample;
    kept = frame;
    kept.firstSample = firstSample;
    kept.lastSample = std::max(firstSample, frame.lastSample);
    m_open.erase(it);
    publish();
}

void FrameStore::drop(std::uint64_t place)
{
    const auto it = placeOf(place);
    if (it == m_open.end())
        return;
    for (std::uint64_t i = it->index + 1; i < m_frames.size(); ++i)
        m_frames[i - 1] = m_frames[i];
    m_frames.removeLast();
    for (Place &later : m_open)
        later.index -= later.index > it->index ? 1 : 0;
    m_open.erase(it);
    publish();
}

void FrameStore::dropAll()
{
    while (!m_open.empty())
        drop(m_open.back().number);
}

void FrameStore::publish()
{
    const std::uint64_t upTo = m_open.empty() ? m_frames.size() : m_open.front().index;
    while (m_published < upTo)
        publishNext(m_frames[m_published].lastSample);
    m_count.store(upTo, std::memory_order_release);
}

/// Writes the groups whose first frame is `index`. The first group of a level comes with the second one: a short list
/// needs no levels.
void FrameStore::beginGroups(std::uint64_t index)
{
    for (unsigned level = 0; level < levels; ++level) {
        const std::uint64_t group = index >> shiftOf(level);
        if (group == 0 || (group << shiftOf(level)) != index)
            return;
        auto &groups = m_levels[level]->groups;
        const bool isThere = group > 1 || groups.append({m_frames[0].firstSample, least}, true);
        if (!isThere || !groups.append({m_frames[index].firstSample, m_greatest}, true))
            throw std::bad_alloc();
    }
}

/// Writes the groups whose last frame is `index`.
void FrameStore::endGroups(std::uint64_t index)
{
    for (unsigned level = 0; level < levels; ++level) {
        Level &own = *m_levels[level];
        const std::int64_t greatest = own.openGreatest;
        if (!own.ownGreatest.append(greatest, true))
            throw std::bad_alloc();
        own.openGreatest = least;
        if (level + 1 < levels)
            m_levels[level + 1]->openGreatest = std::max(m_levels[level + 1]->openGreatest, greatest);
        if ((index >> shiftOf(level) & (fan - 1)) != fan - 1)
            return;
    }
}

bool FrameStore::range(std::int64_t past, std::int64_t upTo, std::uint64_t &first, std::uint64_t &last) const
{
    const std::uint64_t all = count();
    if (all == 0 || m_frames[0].firstSample > upTo)
        return false;
    const std::uint64_t lastGroup = groupOf(&Group::first, upTo, all);
    const std::uint64_t to = lastStartingBy(upTo, lastGroup, all);
    // Mostly a range is short: no frame before the group reaches into it then.
    const bool isShort = lastGroup > 0 && m_levels[0]->groups[lastGroup].greatestBefore <= past;
    const std::uint64_t from =
        firstEndingPast(past, isShort ? lastGroup : groupOf(&Group::greatestBefore, past, all), all);
    if (from > to) // also when there is none
        return false;
    first = from;
    last = lastEndingPast(past, to);
    return true;
}

/// The last group of the first `count` frames, at least one, whose `sample` is at or before `upTo`; the
/// first one when none is.
std::uint64_t FrameStore::groupOf(std::int64_t Group::*sample, std::int64_t upTo, std::uint64_t count) const
{
    unsigned level = 0;
    while (level < levels && (count - 1) >> shiftOf(level) != 0)
        ++level;
    std::uint64_t group = 0;
    while (level-- > 0) {
        const std::uint64_t first = group << fanBits;
        const std::uint64_t groups = ((count - 1) >> shiftOf(level)) + 1;
        const std::uint64_t most = std::min(fan, groups - first);
        const Group *neighbours = &m_levels[level]->groups[first]; // a block has all of them
        fetch(neighbours, most);
        group = first + countUpTo(neighbours, most, upTo, [sample](const Group &of) { return of.*sample; }) - 1;
    }
    return group;
}

/// The last of the first `count` frames that starts at or before `upTo`; it is in this group.
std::uint64_t FrameStore::lastStartingBy(std::int64_t upTo, std::uint64_t group, std::uint64_t count) const
{
    const std::uint64_t first = group << fanBits;
    const std::uint64_t most = std::min(fan, count - first);
    const FrameData *frame = &m_frames[first];
    fetch(frame, most);
    return first + countUpTo(frame, most, upTo, [](const FrameData &data) { return data.firstSample; }) - 1;
}

/// The first frame of this group, of the first `count` ones, that ends past `past`.
std::uint64_t FrameStore::firstEndingPast(std::int64_t past, std::uint64_t group, std::uint64_t count) const
{
    const std::uint64_t first = group << fanBits;
    const std::uint64_t most = std::min(fan, count - first);
    const FrameData *frame = &m_frames[first];
    fetch(frame, most);
    std::uint32_t isPast = 0;
    for (std::uint64_t i = 0; i < most; ++i)
        isPast |= std::uint32_t(frame[i].lastSample > past) << i;
    return isPast == 0 ? none : first + std::uint64_t(std::countr_zero(isPast));
}

/// The last frame up to `from`, itself included, that ends past `past`.
std::uint64_t FrameStore::lastEndingPast(std::int64_t past, std::uint64_t from) const
{
    std::uint64_t end = from + 1;
    for (; end > 0 && (end & (fan - 1)) != 0; --end) {
        if (m_frames[end - 1].lastSample > past)
            return end - 1;
    }
    for (unsigned level = 0; level < levels && end > 0; ++level) {
        end >>= fanBits; // now a number of groups of this level
        for (; end > 0 && (end & (fan - 1)) != 0; --end) {
            if (m_levels[level]->ownGreatest[end - 1] > past)
                return lastEndingPastIn(past, level, end - 1);
        }
    }
    return none;
}

/// The same within a group that has such a frame.
std::uint64_t FrameStore::lastEndingPastIn(std::int64_t past, unsigned level, std::uint64_t group) const
{
    std::uint64_t index = group;
    for (; level > 0; --level) {
        index = (index << fanBits) + fan - 1;
        while (m_levels[level - 1]->ownGreatest[index] <= past)
            --index;
    }
    index = (index << fanBits) + fan - 1;
    while (m_frames[index].lastSample <= past)
        --index;
    return index;
}

} // namespace lux::detail
