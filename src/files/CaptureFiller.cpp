#include "files/CaptureFiller.h"

#include "store/SmpWriter.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

/// The channels of the smallest kind of model that has so many.
int modelChannels(int channels)
{
    return channels <= 8 ? 8 : channels <= 16 ? 16 : 32;
}

SmpEdgeLeaf *lastLeaf(const SmpEdgeRoot &root)
{
    const SmpEdgeMid &mid = *root.mids[root.midCount - 1];
    return mid.leaves[mid.leafCount - 1];
}

} // namespace

CaptureFiller::CaptureFiller(int channels)
    : m_data(std::make_unique<SmpData>(modelChannels(channels), 0)), m_channels(std::clamp(channels, 0, channelMax))
{
    m_data->begin(0, 0, {});
    for (int chn = 0; chn < m_channels && m_isGood; ++chn) {
        Tail &tail = m_tails[std::size_t(chn)];
        tail.root = m_data->createChn(chn);
        m_isGood = tail.root != nullptr;
        tail.leaf = m_isGood ? lastLeaf(*tail.root) : nullptr;
    }
}

bool CaptureFiller::grow(Tail &tail)
{
    if (!m_data->growChn(*tail.root, false)) {
        return false;
    }
    tail.leaf = lastLeaf(*tail.root);
    return true;
}

template<class Visit>
void CaptureFiller::forEachLeaf(const Visit &visit) const
{
    for (int chn = 0; chn < m_channels && m_isGood; ++chn) {
        const SmpEdgeRoot &root = *m_tails[std::size_t(chn)].root;
        for (int m = 0; m < root.midCount; ++m) {
            for (int l = 0; l < root.mids[m]->leafCount; ++l) {
                visit(*root.mids[m]->leaves[l]);
            }
        }
    }
}

std::int64_t CaptureFiller::commonDivisor(std::int64_t first) const
{
    std::int64_t divisor = first;
    forEachLeaf([&divisor](const SmpEdgeLeaf &leaf) {
        for (int i = 0; i < leaf.count; ++i) {
            const std::int64_t pos = leaf.position(i);
            divisor = pos % divisor == 0 ? divisor : std::gcd(divisor, pos);
        }
    });
    return divisor;
}

void CaptureFiller::scale(std::int64_t factor, std::int64_t divisor)
{
    forEachLeaf([factor, divisor](SmpEdgeLeaf &leaf) {
        for (int i = 0; i < leaf.count; ++i) {
            leaf.setPosition(i, divisor > 1 ? leaf.position(i) / divisor : leaf.position(i) * factor);
        }
    });
}

std::unique_ptr<SmpData> CaptureFiller::finish(std::int64_t samples, std::int64_t rate, std::int64_t trigger)
{
    SmpWriter writer(*m_data);
    writer.setStartLevels(m_start);
    writer.setSmpCount(samples);
    writer.setSmpFrequ(rate);
    writer.setTrgPos(trigger);
    m_data->finish(samples);
    return std::move(m_data);
}
