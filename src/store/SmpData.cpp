#include "store/SmpData.h"

#include "store/SmpDataBlocks.h"
#include "store/SmpLeaseList.h"
#include "store/SmpReturns.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

using namespace smpBlocks;

SmpData::SmpData(int chns, int aChns)
    : chnCount(std::max(chns, 0)),
      aChnCount(std::max(aChns, 0)),
      m_leases(std::make_shared<SmpLeaseList>()),
      m_slabs(std::make_unique<SmpSlabs>()),
      m_chnRoots(std::size_t(chnCount), nullptr),
      m_aChnBufs(std::size_t(aChnCount), nullptr),
      m_slicedChn(std::size_t(chnCount), 0),
      m_slicedLevel(std::size_t(chnCount), 0),
      m_enabled(std::size_t(chnCount), 0)
{}

SmpData::~SmpData()
{
    clear();
}

std::int64_t SmpData::sampleCount() const
{
    const SmpReadLock lock(this);
    return lock ? m_smpCount : 0;
}

// ---- admission of readers ----------------------------------------------------------------------------------------

SmpReadLock::SmpReadLock(const SmpData *data) : m_data(data)
{
    if (m_data == nullptr) {
        return;
    }
    // Announce first, look second: open() does the opposite, so one of the two always sees the other. That needs one
    // total order over both atomics, hence sequential consistency on all four steps.
    m_data->m_readers.fetch_add(1, std::memory_order_seq_cst);
    if (m_data->m_complete.load(std::memory_order_seq_cst)) {
        return;
    }
    m_data->m_readers.fetch_sub(1, std::memory_order_seq_cst);
    m_data = nullptr;
}

SmpReadLock::~SmpReadLock()
{
    if (m_data != nullptr) {
        m_data->m_readers.fetch_sub(1, std::memory_order_seq_cst);
    }
}

namespace {

/// Waits until no reader of a frame is left in a store that admits none. @return false at the deadline
bool waitForFrames(const std::atomic<int> &readers, std::chrono::steady_clock::time_point deadline)
{
    // Asked again and again, since readers stay for one frame at most: where there is no futex, as on Windows, g++ 12's
    // wait of an atomic can miss its wake-up, and the writer would then wait for ever.
    constexpr std::chrono::microseconds again(200);
    while (readers.load(std::memory_order_seq_cst) != 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(again);
    }
    return true;
}

} // namespace

void SmpData::closeToReaders()
{
    m_complete.store(false, std::memory_order_seq_cst);
    m_leases->tell();
}

void SmpData::open()
{
    constexpr std::chrono::hours longEnough(1);
    while (!open(std::chrono::duration_cast<std::chrono::milliseconds>(longEnough))) {
    }
}

bool SmpData::open(std::chrono::milliseconds most)
{
    const auto deadline = std::chrono::steady_clock::now() + most;
    closeToReaders();
    if (!m_leases->waitUntil(deadline) || !waitForFrames(m_readers, deadline)) {
        return false;
    }
    if (m_leases->count() > 0) {
        leaveTrees();
    }
    return true;
}

void SmpData::readmit()
{
    trim();
    m_leases->forget();
    m_complete.store(true, std::memory_order_seq_cst);
}

void SmpData::retire(std::unique_ptr<SmpData> data)
{
    constexpr std::chrono::milliseconds mostOfTheMainThread(50);
    if (data && !data->open(mostOfTheMainThread)) {
        SmpReturns::instance().keep(std::move(data));
    }
}

int SmpData::leaseCount() const
{
    return int(m_leases->count());
}

// ---- begin and clear -----------------------------------------------------------------------------------------------

void SmpData::freeChannel(int chn)
{
    SmpEdgeRoot *&root = m_chnRoots[std::size_t(chn)];
    if (root == nullptr) {
        return;
    }
    for (int m = 0; m < root->midCount; ++m) {
        SmpEdgeMid *mid = root->mids[m];
        for (int l = 0; l < mid->leafCount; ++l) {
            give(*m_slabs, mid->leaves[l]);
        }
        give(*m_slabs, mid);
    }
    give(*m_slabs, root);
    root = nullptr;
}

void SmpData::clear()
{
    open();
    m_smpCount = 0;
    m_trgPos = 0;
    std::fill(m_chnRoots.begin(), m_chnRoots.end(), nullptr);
    std::fill(m_aChnBufs.begin(), m_aChnBufs.end(), nullptr);
    m_slabs->clear();
}

void SmpData::trim()
{
    m_slabs->trim();
}

/// To those who have resigned: nobody else is here any more.
void SmpData::leaveTrees()
{
    std::fill(m_chnRoots.begin(), m_chnRoots.end(), nullptr);
    std::fill(m_aChnBufs.begin(), m_aChnBufs.end(), nullptr);
    m_smpCount = 0;
    m_trgPos = 0;
    m_leases->leaveTo(std::exchange(m_slabs, std::make_unique<SmpSlabs>()));
}

bool SmpData::adopt(SmpData &other)
{
    if (other.chnCount != chnCount) {
        return false;
    }
    clear();
    other.open();
    m_slabs.swap(other.m_slabs); // the memory behind the roots
    m_chnRoots.swap(other.m_chnRoots);
    m_smpCount = std::exchange(other.m_smpCount, 0);
    m_trgPos = std::exchange(other.m_trgPos, 0);
    m_smpFrequ = other.m_smpFrequ;
    m_startLevels = other.m_startLevels;
    m_zeroSmpCnt = other.m_zeroSmpCnt;
    readmit();
    return true;
}

void SmpData::begin(std::uint32_t triggerRecord, std::int64_t frequency, std::span<const std::uint8_t> enable)
{
    constexpr int firstVoltDiv = 1000; // millivolts; the caller sets the real one before drawing
    clear();
    m_smpFrequ = frequency;
    m_zeroSmpCnt = -1;
    m_trgRecord = triggerRecord;
    for (std::size_t chn = 0; chn < m_chnRoots.size(); ++chn) {
        m_enabled[chn] = chn < enable.size() && enable[chn] != 0;
        if (m_enabled[chn] == 0) {
            continue;
        }
        m_chnRoots[chn] = take<SmpEdgeRoot>(*m_slabs);
        if (m_chnRoots[chn] != nullptr) {
            m_chnRoots[chn]->midCount = 0;
            m_chnRoots[chn]->startLevel = 0;
        }
    }
    for (SmpAChnBuffer *&buffer : m_aChnBufs) {
        buffer = take<SmpAChnBuffer>(*m_slabs);
        if (buffer != nullptr) {
            buffer->count = 0;
            buffer->voltDiv = firstVoltDiv;
        }
    }
}

// ---- growth --------------------------------------------------------------------------------------------------------

bool SmpData::growChn(SmpEdgeRoot &root, bool forced)
{
    // A new mid comes before the look at the budget. A refused leaf leaves it empty; the next call goes on with it.
    const bool full = root.midCount < 1 || root.mids[root.midCount - 1]->leafCount >= SmpEdgeMid::capacity;
    if (full && !addMid(*m_slabs, root)) {
        return false;
    }
    if (!forced && memBudget.load(std::memory_order_relaxed) < 1) {
        return false;
    }
    auto *leaf = take<SmpEdgeLeaf>(*m_slabs);
    if (leaf == nullptr) {
        return false;
    }
    leaf->count = 0;
    SmpEdgeMid &mid = *root.mids[root.midCount - 1];
    mid.leaves[mid.leafCount] = leaf;
    ++mid.leafCount;
    return true;
}

SmpEdgeRoot *SmpData::createChn(int chn)
{
    if (chn < 0 || chn >= chnCount) {
        return nullptr;
    }
    freeChannel(chn);
    auto *root = take<SmpEdgeRoot>(*m_slabs);
    if (root == nullptr) {
        return nullptr;
    }
    root->midCount = 0;
    root->startLevel = 0;
    m_chnRoots[std::size_t(chn)] = root;
    if (!growChn(*root, true)) {
        freeChannel(chn);
        return nullptr;
    }
    return root;
}

SmpEdgeLeaf *SmpData::writableLeaf(SmpEdgeRoot &root)
{
    SmpEdgeLeaf *leaf = lastLeaf(root);
    if (leaf != nullptr && leaf->count < SmpEdgeLeaf::capacity) {
        return leaf;
    }
    const bool forced = root.midCount < 1; // a channel's first leaf never looks at the budget
    return growChn(root, forced) ? lastLeaf(root) : nullptr;
}

// ---- finish --------------------------------------------------------------------------------------------------------

namespace {

/// Appends the end mark. Without memory for a further leaf it takes the place of the last entry; a channel that has
/// not even one leaf then loses its mids and holds no data.
void appendEndMark(SmpData &data, SmpSlabs &slabs, SmpEdgeRoot &root, std::int64_t end)
{
    SmpEdgeLeaf *leaf = lastLeaf(root);
    if (leaf == nullptr || leaf->count >= SmpEdgeLeaf::capacity) {
        static_cast<void>(data.growChn(root, true)); // refused: seen below, from the last leaf
    }
    while (root.midCount > 0 && root.mids[root.midCount - 1]->leafCount < 1) {
        give(slabs, root.mids[root.midCount - 1]);
        --root.midCount;
    }
    leaf = lastLeaf(root);
    if (leaf == nullptr) {
        return;
    }
    if (leaf->count >= SmpEdgeLeaf::capacity) {
        leaf->count = SmpEdgeLeaf::capacity - 1;
    }
    put(*leaf, end);
}

/// Writes the two index arrays that the queries bisect.
void indexChannel(SmpEdgeRoot &root)
{
    std::int64_t last = 0;
    for (int m = 0; m < root.midCount; ++m) {
        SmpEdgeMid &mid = *root.mids[m];
        for (int l = 0; l < mid.leafCount; ++l) {
            const SmpEdgeLeaf &leaf = *mid.leaves[l];
            last = leaf.count < 1 ? last : leaf.position(leaf.count - 1);
            mid.leafLast[l] = last;
        }
        root.midLast[m] = last;
    }
}

/// Makes the first entry at or beyond `end` of the last leaf its last one, and the end mark. Returns that index.
int cutLeaf(SmpEdgeRoot &root, SmpEdgeLeaf &leaf, std::int64_t end)
{
    int index = leaf.count - 1;
    while (index > 0 && leaf.position(index - 1) >= end) {
        --index;
    }
    leaf.setPosition(index, end);
    leaf.count = index + 1;
    SmpEdgeMid &mid = *root.mids[root.midCount - 1];
    mid.leafLast[mid.leafCount - 1] = end;
    root.midLast[root.midCount - 1] = end;
    return index;
}

/// The leaf before the last one, over a seam of mids too; null for none.
SmpEdgeLeaf *leafBeforeLast(const SmpEdgeRoot &root)
{
    const SmpEdgeMid &mid = *root.mids[root.midCount - 1];
    if (mid.leafCount > 1) {
        return mid.leaves[mid.leafCount - 2];
    }
    if (root.midCount < 2) {
        return nullptr;
    }
    const SmpEdgeMid &before = *root.mids[root.midCount - 2];
    return before.leafCount < 1 ? nullptr : before.leaves[before.leafCount - 1];
}

/// Frees the last leaf, and its mid when that was all it held.
void dropLastLeaf(SmpSlabs &slabs, SmpEdgeRoot &root)
{
    SmpEdgeMid &mid = *root.mids[root.midCount - 1];
    give(slabs, mid.leaves[mid.leafCount - 1]);
    --mid.leafCount;
    if (mid.leafCount == 0) {
        give(slabs, &mid);
        --root.midCount;
    }
}

} // namespace

void SmpData::closeChannel(SmpEdgeRoot &root, int level)
{
    root.startLevel = level;
    appendEndMark(*this, *m_slabs, root, m_smpCount);
    indexChannel(root);
    if (root.midCount < 1) {
        return;
    }
    while (cutLeaf(root, *lastLeaf(root), m_smpCount) == 0) {
        const SmpEdgeLeaf *before = leafBeforeLast(root);
        if (before == nullptr || before->count < 1 || before->position(before->count - 1) < m_smpCount) {
            break;
        }
        dropLastLeaf(*m_slabs, root);
    }
}

void SmpData::finish(std::int64_t endPos)
{
    m_smpCount = std::clamp(std::min(m_smpCount, endPos), std::int64_t(0), maxPosition);
    for (std::size_t chn = 0; chn < m_chnRoots.size(); ++chn) {
        if (m_chnRoots[chn] != nullptr) {
            closeChannel(*m_chnRoots[chn], chn < 64 ? int(m_startLevels >> chn & 1) : 0);
        }
    }
    trim();
    m_complete.store(true, std::memory_order_seq_cst);
}
