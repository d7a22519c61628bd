#include "acquisition/SmpStreamWindow.h"

#include <algorithm>

void SmpStreamWindow::start(int chnCount, std::int64_t preTrig)
{
    constexpr std::int64_t wordBytes = 2;
    *this = {};
    m_groupBytes = wordBytes * std::max(chnCount, 1);
    m_preTrig = std::max<std::int64_t>(preTrig, 0);
}

/// The first group that begins at or behind a place in the stream.
std::int64_t SmpStreamWindow::groupBehind(std::int64_t bytes) const
{
    return (bytes + m_groupBytes - 1) / m_groupBytes;
}

void SmpStreamWindow::drop(std::int64_t bytes)
{
    m_dropBytes += bytes;
    m_firstGroup = std::max(m_firstGroup, groupBehind(m_dropBytes));
}

bool SmpStreamWindow::mayDrop(std::int64_t bytes) const
{
    // The trigger comes in the group in progress at the earliest, which a later buffer ends.
    const std::int64_t groups = recvGroups() - groupBehind(m_dropBytes + bytes);
    return groups > 0 && groups * groupSamples >= m_preTrig;
}

std::int64_t SmpStreamWindow::trigger(std::int64_t sample)
{
    if (sample > m_preTrig) {
        m_firstGroup = std::max(m_firstGroup, (sample - m_preTrig) / groupSamples);
    }
    return std::max<std::int64_t>(0, sample - m_firstGroup * groupSamples);
}

std::int64_t SmpStreamWindow::samplesHeld() const
{
    return std::max<std::int64_t>(0, recvGroups() - m_firstGroup) * groupSamples;
}
