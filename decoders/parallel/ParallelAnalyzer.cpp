#include "ParallelAnalyzer.h"

#include "common/Duration.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

using lux::BusLines;
using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(ParallelAnalyzer)

namespace {

/// The changes of several lines in the order of time. Lines change one at a time on noise, and all at once on a bus: so
/// their next changes lie side by side, apart from the readers.
class Changes {
public:
    void add(const ChannelReader &line)
    {
        m_levels |= std::uint64_t(line.level()) << m_lines.size();
        m_lines.push_back(line);
        m_next.push_back(line.hasEdge() ? line.peekEdge() : INT64_MAX);
    }
    [[nodiscard]] std::uint64_t levels() const { return m_levels; }
    /// The sample of the next change of any line, INT64_MAX when there is none.
    [[nodiscard]] Sample peek() const
    {
        Sample nearest = INT64_MAX;
        for (const Sample next : m_next) {
            nearest = std::min(nearest, next);
        }
        return nearest;
    }
    /// @param change  that of peek(), within the capture
    void take(Sample change)
    {
        for (std::size_t i = 0; i < m_next.size(); ++i) {
            if (m_next[i] == change) {
                m_lines[i].nextEdge();
                m_levels ^= std::uint64_t(1) << i;
                m_next[i] = m_lines[i].hasEdge() ? m_lines[i].peekEdge() : INT64_MAX;
            }
        }
    }

private:
    std::vector<ChannelReader> m_lines;
    std::vector<Sample> m_next;
    std::uint64_t m_levels = 0;
};

} // namespace

void ParallelAnalyzer::decode()
{
    m_address = BusLines();
    for (const Channel &line : m_settings.address()) {
        m_address.add(reader(line));
    }
    if (m_settings.clk.isDefined()) {
        readClocked();
    } else {
        readChanges();
    }
}

/// A word at each edge that counts, as its lines are at the sample of the edge. It lasts to the clock's next edge.
void ParallelAnalyzer::readClocked()
{
    ChannelReader clk = reader(m_settings.clk);
    ChannelReader enable = reader(m_settings.enable);
    BusLines data;
    for (unsigned i = 0; i < m_settings.data.width(); ++i) {
        data.add(reader(m_settings.data[i]));
    }
    const bool isGated = m_settings.enable.isDefined();
    const bool atRise = m_settings.clockEdge != ClockEdge::Falling;
    const bool atFall = m_settings.clockEdge != ClockEdge::Rising;
    while (clk.hasEdge()) {
        const Sample edge = clk.nextEdge();
        if (!(clk.level() ? atRise : atFall) || (isGated && !isEnabledLevel(enable.levelAt(edge)))) {
            continue;
        }
        results().mark(m_settings.clk, edge, clk.level() ? MarkerType::UpArrow : MarkerType::DownArrow);
        addWord(edge, clk.peekEdge() - 1, data.at(edge));
    }
}

/// Without a clock a word is what the lines show for at least the settling time. Changes in between belong to none;
/// when they lead back to the same word it goes on.
void ParallelAnalyzer::readChanges()
{
    Changes lines;
    for (unsigned i = 0; i < m_settings.data.width(); ++i) {
        lines.add(reader(m_settings.data[i]));
    }
    ChannelReader enable = reader(m_settings.enable);
    const bool isGated = m_settings.enable.isDefined();
    const Sample settle = std::max<Sample>(1, lux::samplesIn(m_settings.settleTime.value(), sampleRate()));
    Sample first = -1; ///< of the word that goes on, or -1
    std::uint64_t word = 0;
    Sample left = 0; ///< the sample at which the word was left
    const auto finish = [&] {
        if (first >= 0 && (!isGated || isEnabledLevel(enable.levelAt(first)))) {
            addWord(first, left - 1, word);
        }
    };
    for (Sample change = 0;;) {
        const Sample next = std::min(lines.peek(), sampleCount());
        const std::uint64_t levels = lines.levels();
        // What the capture's end cuts short has not settled.
        if (next - change >= settle) {
            if (first < 0 || levels != word) {
                finish();
                first = change;
                word = levels;
            }
            left = next;
        }
        if (next >= sampleCount()) {
            break;
        }
        change = next;
        lines.take(change);
    }
    finish();
}

void ParallelAnalyzer::addWord(Sample first, Sample last, std::uint64_t word)
{
    results().add({.firstSample = first, .lastSample = last, .data = word, .data2 = m_address.at(first)});
}
