#include "ParallelAnalyzer.h"

#include "common/Duration.h"

#include <algorithm>
#include <vector>

using lux::BusLines;
using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(ParallelAnalyzer)

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
    std::vector<ChannelReader *> lines;
    for (unsigned i = 0; i < m_settings.data.width(); ++i) {
        lines.push_back(&reader(m_settings.data[i]));
    }
    lux::EdgeGroup group(lines);
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
        const Sample next = std::min(group.peekEdge(), sampleCount());
        const std::uint64_t levels = group.levels();
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
        change = group.nextEdge();
    }
    finish();
}

void ParallelAnalyzer::addWord(Sample first, Sample last, std::uint64_t word)
{
    results().add({.firstSample = first, .lastSample = last, .data = word, .data2 = m_address.at(first)});
}
