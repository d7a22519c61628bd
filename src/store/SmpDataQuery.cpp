#include "store/SmpDataBlocks.h"
#include "store/SmpDataSeek.h"

#include <cstdlib>

using namespace smpBlocks;

const SmpEdgeRoot *SmpData::tree(int chn) const
{
    if (chn < 0 || chn >= chnCount) {
        return nullptr;
    }
    const SmpEdgeRoot *root = m_chnRoots[std::size_t(chn)];
    return root == nullptr || lastLeaf(*root) == nullptr ? nullptr : root;
}

namespace {

/// The position of entry number `index`; -1 outside the channel.
std::int64_t positionOf(const SmpEdgeRoot &root, std::int64_t index)
{
    if (index < 0 || index >= entries(root)) {
        return -1;
    }
    const SmpEdgeMid &mid = *root.mids[index / SmpData::entriesPerMid];
    const std::int64_t within = index % SmpData::entriesPerMid;
    return mid.leaves[within / SmpEdgeLeaf::capacity]->position(int(within % SmpEdgeLeaf::capacity));
}

/// True when the cursor names an entry that exists.
bool names(const SmpEdgeRoot &root, const SmpEdgeCursor &cursor)
{
    if (cursor.root < 0 || cursor.root >= root.midCount) {
        return false;
    }
    const SmpEdgeMid &mid = *root.mids[cursor.root];
    if (cursor.mid < 0 || cursor.mid >= mid.leafCount) {
        return false;
    }
    return cursor.leaf >= 0 && cursor.leaf < mid.leaves[cursor.mid]->count;
}

} // namespace

int SmpData::locate(int chn, std::int64_t pos, SmpEdgeCursor &cursor) const
{
    const SmpEdgeRoot *root = tree(chn);
    if (root == nullptr) {
        return -1;
    }
    // A hint that is no entry, or one behind the answer, would mislead the search: then it starts from the first one.
    SmpEdgeCursor found;
    if (names(*root, cursor) && positionOf(*root, globalIndex(cursor) - 1) <= pos) {
        found = cursor;
    }
    smpSeek::Found unused;
    const int level = smpSeek::forward(*root, pos, found, unused);
    if (level >= 0) {
        cursor = found;
    }
    return level;
}

bool SmpData::isEdge(int chn, std::int64_t pos) const
{
    return pos >= 0 && prevEdge(chn, pos) == pos;
}

std::int64_t SmpData::prevEdge(int chn, std::int64_t pos) const
{
    SmpEdgeCursor cursor;
    return locate(chn, pos, cursor) < 0 ? -1 : entryAt(chn, cursor, -1);
}

std::int64_t SmpData::nextEdge(int chn, std::int64_t pos) const
{
    SmpEdgeCursor cursor;
    return locate(chn, pos, cursor) < 0 ? -1 : entryAt(chn, cursor);
}

std::int64_t SmpData::edgeCount(int chn, std::int64_t a, std::int64_t b) const
{
    SmpEdgeCursor atA;
    SmpEdgeCursor atB;
    if (locate(chn, a, atA) < 0 || locate(chn, b, atB) < 0) {
        return -1;
    }
    return std::abs(globalIndex(atB) - globalIndex(atA));
}

int SmpData::edgeNeighbours(int chn, std::int64_t pos, SmpEdgeInfo &info) const
{
    SmpEdgeCursor cursor;
    const int level = locate(chn, pos, cursor);
    if (level < 0) {
        return -1;
    }
    info.prevEdge = entryAt(chn, cursor, -1);
    info.nextEdge = entryAt(chn, cursor);
    info.afterNextEdge = entryAt(chn, cursor, 1);
    info.level = level;
    return 0;
}

std::int64_t SmpData::entryAt(int chn, const SmpEdgeCursor &cursor, std::int64_t offset) const
{
    const SmpEdgeRoot *root = tree(chn);
    if (root == nullptr || offset < -maxPosition || offset > maxPosition) {
        return -1;
    }
    return positionOf(*root, globalIndex(cursor) + offset);
}

std::int64_t SmpData::lastPosition(int chn) const
{
    const SmpEdgeRoot *root = tree(chn);
    return root == nullptr ? -1 : root->midLast[root->midCount - 1];
}

std::int64_t SmpData::entryCount(int chn) const
{
    const SmpEdgeRoot *root = tree(chn);
    return root == nullptr ? 0 : entries(*root);
}
