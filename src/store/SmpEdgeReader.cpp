#include "store/SmpEdgeReader.h"

#include "store/SmpDataBlocks.h"
#include "store/SmpDataSeek.h"

SmpEdgeReader::SmpEdgeReader(const SmpData &data, int chn, std::int64_t pos)
{
    const SmpEdgeRoot *root = chn < 0 || chn >= data.chnCount ? nullptr : data.chnRoots()[std::size_t(chn)];
    if (root == nullptr || smpBlocks::lastLeaf(*root) == nullptr) {
        return;
    }
    const std::int64_t last = root->midLast[root->midCount - 1];
    if (pos < 0 || pos > last) {
        return;
    }
    m_root = root;
    m_startLevel = root->startLevel;
    m_last = last;
    take(smpSeek::leafAt(*root, 0, 0)); // from the first entry on
    skipTo(pos);
}

/// From the present place on, for a `pos` from the next entry to the end mark.
void SmpEdgeReader::skipForward(std::int64_t pos)
{
    if (pos < m_leafLast && m_high >= 0) { // mostly: the leaf is known, only the entry is to be found
        m_index = smpSeek::entryAbove({*m_leaf, m_high}, pos, m_index, m_count - 1, m_leafLast);
        m_next = position(m_index);
        return;
    }
    SmpEdgeCursor cursor = this->cursor();
    smpSeek::Found found;
    (void)smpSeek::forward(*m_root, pos, cursor, found);
    m_mid = cursor.root;
    m_leafIndex = cursor.mid;
    m_index = cursor.leaf;
    take(found);
}

void SmpEdgeReader::take(const smpSeek::Found &found)
{
    m_leaf = found.leaf;
    m_count = found.count;
    m_high = found.high;
    m_leafLast = found.last;
    m_next = position(m_index);
}

/// Behind the last entry of a leaf. Behind that of the channel the place stays, but nothing is next.
bool SmpEdgeReader::enterNextLeaf()
{
    m_index = m_count - 1;
    if (m_root == nullptr) {
        m_index = 0;
        return false;
    }
    if (m_leafIndex + 1 < m_root->mids[m_mid]->leafCount) {
        ++m_leafIndex;
    } else if (m_mid + 1 < m_root->midCount) {
        ++m_mid;
        m_leafIndex = 0;
    } else {
        m_next = never;
        return false;
    }
    m_index = 0;
    take(smpSeek::leafAt(*m_root, m_mid, m_leafIndex));
    return true;
}

SmpEdgeReader::Block SmpEdgeReader::block() const
{
    if (m_next == never) {
        return {};
    }
    const auto count = std::size_t(m_count - m_index);
    return {{m_leaf->posLow + m_index, count}, {m_leaf->posHigh + m_index, count}, m_high, m_leafLast};
}
