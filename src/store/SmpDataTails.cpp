#include "store/SmpDataTails.h"

#include <cstring>

SmpData::Tails::Tails(SmpData &data, std::int64_t pos)
    : m_data(data), m_chns(std::min(data.m_chnRoots.size(), capacity))
{
    for (std::size_t chn = 0; chn < m_chns; ++chn) {
        SmpEdgeRoot *root = data.m_chnRoots[chn];
        m_present |= std::uint64_t(root != nullptr) << chn;
        set(m_tails[chn], root == nullptr ? nullptr : smpBlocks::lastLeaf(*root));
    }
    enter(pos);
}

bool SmpData::Tails::addWithCare(std::size_t chn, std::int64_t pos)
{
    if (pos > smpBlocks::maxPosition) {
        return true;
    }
    reach(pos);
    Tail &tail = m_tails[chn];
    if (tail.next == tail.end) {
        store(tail);
        SmpEdgeLeaf *leaf = m_data.writableLeaf(*m_data.m_chnRoots[chn]);
        set(tail, leaf);
        if (leaf == nullptr) {
            return false;
        }
    }
    return put(chn, pos);
}

/// Makes the high byte of `pos` that of the next entries.
void SmpData::Tails::enter(std::int64_t pos)
{
    store(); // what has the former one
    m_high = pos > smpBlocks::maxPosition ? -1 : pos >> lowBits;
}

void SmpData::Tails::store()
{
    for (std::size_t chn = 0; chn < m_chns; ++chn) {
        store(m_tails[chn]);
    }
}

void SmpData::Tails::store(Tail &tail) const
{
    if (tail.leaf == nullptr) {
        return;
    }
    const std::int64_t count = tail.next - tail.leaf->posLow;
    std::memset(tail.leaf->posHigh + tail.stored, int(m_high & 0xFF), std::size_t(count - tail.stored));
    tail.stored = count;
    tail.leaf->count = std::int32_t(count);
}

void SmpData::Tails::set(Tail &tail, SmpEdgeLeaf *leaf)
{
    if (leaf == nullptr) {
        tail = {nullptr, nullptr, nullptr, 0};
    } else {
        tail = {leaf->posLow + leaf->count, leaf->posLow + SmpEdgeLeaf::capacity, leaf, leaf->count};
    }
}
