#pragma once

#include "store/SmpData.h"

#include <cstddef>
#include <cstdint>

/// The right to change what a capture is, apart from appending to it: held by who writes a SmpData, namely the threads
/// of a capture and who reads one from a file, between begin() or open() and finish() or readmit().
///
/// Made on the spot, refers to a store that outlives it, and checks nothing: that nobody reads is the writer's word.
class SmpWriter {
public:
    explicit SmpWriter(SmpData &data) : m_data(data) {}

    void setSmpCount(std::int64_t samples) { m_data.m_smpCount = samples; }
    void setSmpFrequ(std::int64_t hertz) { m_data.m_smpFrequ = hertz; }
    void setTrgPos(std::int64_t pos) { m_data.m_trgPos = pos; }
    /// @param levels  bit i is the level of channel i at position 0
    void setStartLevels(std::uint64_t levels) { m_data.m_startLevels = levels; }
    /// One channel's level at position 0. A channel that the 64 bits do not hold, or a negative one, is passed over.
    void setStartLevel(int chn, bool high)
    {
        const std::uint64_t bit = chn >= 0 && chn < 64 ? std::uint64_t(1) << chn : 0;
        m_data.m_startLevels = high ? m_data.m_startLevels | bit : m_data.m_startLevels & ~bit;
    }
    /// @param chn  0 to `chnCount` - 1. @return null for a channel that the capture does not have
    [[nodiscard]] SmpEdgeRoot *chnRoot(int chn) const { return m_data.m_chnRoots[std::size_t(chn)]; }
    /// @param aChn  0 to `aChnCount` - 1. @return null where the heap refused the buffer
    [[nodiscard]] SmpAChnBuffer *aChnBuf(int aChn) const { return m_data.m_aChnBufs[std::size_t(aChn)]; }

private:
    SmpData &m_data;
};
