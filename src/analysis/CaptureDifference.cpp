#include "analysis/CaptureDifference.h"

#include "store/SmpEdgeReader.h"

#include <algorithm>

namespace {

/// The edges of one side, in samples from the range's start.
class Side {
public:
    Side(const SmpData &data, int chn, std::int64_t start, std::int64_t samples)
        : m_reader(data, chn, start), m_start(start), m_samples(samples)
    {}

    [[nodiscard]] bool hasEdge() const { return !m_reader.atEnd() && position() < m_samples; }
    /// Only while hasEdge().
    [[nodiscard]] std::int64_t position() const { return m_reader.next() - m_start; }
    [[nodiscard]] int level() const { return m_reader.level(); }
    void pass()
    {
        m_reader.advance();
        ++passed;
    }

    std::int64_t passed = 0;

private:
    SmpEdgeReader m_reader;
    std::int64_t m_start;
    std::int64_t m_samples;
};

class Comparison {
public:
    Comparison(const SmpData &a, const SmpData &b, int chn, const DifferenceRange &range)
        : m_range(range), m_a(a, chn, range.startA, range.samples), m_b(b, chn, range.startB, range.samples)
    {}

    ChannelDifference run()
    {
        compareStart();
        while (m_a.hasEdge() || m_b.hasEdge()) {
            step();
        }
        m_found.edgesA = m_a.passed;
        m_found.edgesB = m_b.passed;
        return m_found;
    }

private:
    void compareStart()
    {
        if (m_a.level() == m_b.level()) {
            return;
        }
        // One side may have turned just before the range, and the other turns just behind its start.
        Side *const late = startsLate(m_a) ? &m_a : startsLate(m_b) ? &m_b : nullptr;
        if (late != nullptr) {
            late->pass();
        } else {
            m_found.first = m_range.startA;
            m_found.startLevel = true;
        }
    }

    [[nodiscard]] bool startsLate(const Side &side) const
    {
        return side.hasEdge() && side.position() <= m_range.tolerance;
    }

    void step()
    {
        const bool both = m_a.hasEdge() && m_b.hasEdge();
        if (both && m_a.level() == m_b.level() && std::abs(m_a.position() - m_b.position()) <= m_range.tolerance) {
            m_a.pass();
            m_b.pass();
            return;
        }
        const bool isA = both ? m_a.position() <= m_b.position() : m_a.hasEdge();
        Side &side = isA ? m_a : m_b;
        const std::int64_t position = side.position();
        side.pass();
        if (position <= m_range.tolerance || position >= m_range.samples - m_range.tolerance) {
            return;
        }
        ++m_found.differing;
        if (m_found.first < 0) {
            m_found.first = m_range.startA + position;
            m_found.inA = isA;
        }
    }

    const DifferenceRange m_range;
    Side m_a;
    Side m_b;
    ChannelDifference m_found;
};

} // namespace

ChannelDifference compareChannel(const SmpData &a, const SmpData &b, int chn, const DifferenceRange &range)
{
    return Comparison(a, b, chn, range).run();
}
