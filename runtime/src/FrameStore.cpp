#include "FrameStore.h"

#include <algorithm>
#include <limits>
#include <new>

namespace lux::detail {
namespace {

constexpr std::uint64_t none = std::numeric_limits<std::uint64_t>::max();

/// Fetches the entries [from, to) of one group at once: a search in them would wait for one line after the other.
template<class List>
void fetch(const List &list, std::uint64_t from, std::uint64_t to)
{
#if defined(__GNUC__)
    if (from >= to)
        return;
    constexpr std::size_t line = 64;
    const char *end = reinterpret_cast<const char *>(&list[to - 1] + 1);
    for (const char *at = reinterpret_cast<const char *>(&list[from]); at < end; at += line)
        __builtin_prefetch(at);
#endif
}

} // namespace

FrameStore::FrameStore(const MemoryBudget &budget) : m_frames(budget)
{
    for (auto &groups : m_groups)
        groups = std::make_unique<Groups>(budget);
    m_greatest.fill(std::numeric_limits<std::int64_t>::min());
}

bool FrameStore::add(const FrameData &frame)
{
    if (!m_frames.append(frame))
        return false;
    m_newestFirst = frame.firstSample;
    if (m_open.empty())
        publish();
    return true;
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
    for (std::uint64_t i = m_published; i < upTo; ++i) {
        m_greatest[0] = std::max(m_greatest[0], m_frames[i].lastSample);
        if ((i & (fan - 1)) == fan - 1)
            closeGroups(i);
    }
    m_published = upTo;
    m_count.store(upTo, std::memory_order_release);
}

/// Writes the groups whose last frame is `index`.
void FrameStore::closeGroups(std::uint64_t index)
{
    for (unsigned level = 0; level < levels; ++level) {
        const std::uint64_t group = index >> shiftOf(level);
        const Group closed{m_frames[group << shiftOf(level)].firstSample, m_greatest[level]};
        if (!m_groups[level]->append(closed, true))
            throw std::bad_alloc();
        m_greatest[level] = std::numeric_limits<std::int64_t>::min();
        if (level + 1 < levels)
            m_greatest[level + 1] = std::max(m_greatest[level + 1], closed.greatestLast);
        if ((group & (fan - 1)) != fan - 1)
            return;
    }
}

/// How many levels have a whole group.
unsigned FrameStore::levelsFor(std::uint64_t count)
{
    unsigned level = 0;
    while (level < levels && count >> shiftOf(level) != 0)
        ++level;
    return level;
}

bool FrameStore::range(std::int64_t past, std::int64_t upTo, std::uint64_t &first, std::uint64_t &last) const
{
    const std::uint64_t all = count();
    const std::uint64_t to = lastStartingBy(upTo, all);
    if (to == none)
        return false;
    const std::uint64_t from = firstEndingPast(past, all);
    if (from > to) // also when there is none
        return false;
    first = from;
    last = lastEndingPast(past, to);
    return true;
}

/// The last of the first `count` frames that starts at or before `upTo`.
std::uint64_t FrameStore::lastStartingBy(std::int64_t upTo, std::uint64_t count) const
{
    if (count == 0 || m_frames[0].firstSample > upTo)
        return none;
    std::uint64_t low = 0; // starts by `upTo`
    std::uint64_t high = count;
    for (unsigned level = levelsFor(count); level-- > 0;) {
        const unsigned shift = shiftOf(level);
        std::uint64_t from = low >> shift;
        std::uint64_t to = high >> shift;
        const std::uint64_t rest = to << shift;
        if (rest < high && m_frames[rest].firstSample <= upTo) {
            low = rest;
            continue;
        }
        const Groups &groups = *m_groups[level];
        fetch(groups, from, to);
        const Group *group = &groups[from]; // side by side up to `to`
        const std::uint64_t begin = from;
        while (to - from > 1) {
            const std::uint64_t middle = from + (to - from) / 2;
            (group[middle - begin].first <= upTo ? from : to) = middle;
        }
        low = from << shift;
        high = std::min(high, (from + 1) << shift);
    }
    fetch(m_frames, low, high);
    const FrameData *frame = &m_frames[low]; // side by side up to `high`
    const std::uint64_t begin = low;
    while (high - low > 1) {
        const std::uint64_t middle = low + (high - low) / 2;
        (frame[middle - begin].firstSample <= upTo ? low : high) = middle;
    }
    return low;
}

/// The first of the first `count` frames that ends past `past`.
std::uint64_t FrameStore::firstEndingPast(std::int64_t past, std::uint64_t count) const
{
    std::uint64_t low = 0;
    std::uint64_t high = count;
    for (unsigned level = levelsFor(count); level-- > 0;) {
        const unsigned shift = shiftOf(level);
        const Groups &groups = *m_groups[level];
        std::uint64_t group = low >> shift;
        const std::uint64_t to = high >> shift;
        fetch(groups, group, to);
        if (group < to) {
            const Group *at = &groups[group]; // side by side up to `to`
            for (; group < to && at->greatestLast <= past; ++at)
                ++group;
        }
        low = group << shift;
        if (group < to)
            high = (group + 1) << shift;
    }
    fetch(m_frames, low, high);
    if (low >= high)
        return none;
    const FrameData *frame = &m_frames[low]; // side by side up to `high`
    for (; low < high && frame->lastSample <= past; ++frame)
        ++low;
    return low < high ? low : none;
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
            if ((*m_groups[level])[end - 1].greatestLast > past)
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
        while ((*m_groups[level - 1])[index].greatestLast <= past)
            --index;
    }
    index = (index << fanBits) + fan - 1;
    while (m_frames[index].lastSample <= past)
        --index;
    return index;
}

} // namespace lux::detail
