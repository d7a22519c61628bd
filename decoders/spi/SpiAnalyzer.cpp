#include "SpiAnalyzer.h"

#include "common/Duration.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

using lux::ChannelReader;
using lux::Sample;
using lux::SelectSpan;

LUX_PLUGIN(SpiAnalyzer)

/// SPI Block Guide V03.06, 4.3: words at the edges of a clock while the device is selected.
void SpiAnalyzer::decode()
{
    ChannelReader clk = reader(m_settings.clk);
    ChannelReader mosi = reader(m_settings.mosi);
    ChannelReader miso = reader(m_settings.miso);
    lux::SelectSpans spans(reader(m_settings.select()), m_settings.csPolarity == SpiSelect::High);
    SelectSpan span;
    while (spans.next(span)) {
        readSpan(span, clk, mosi, miso);
    }
}

/// 4.3.2 and 4.3.3: with CPHA 0 data is taken at the leading edge of each clock, with 1 at the trailing one.
void SpiAnalyzer::readSpan(const SelectSpan &span, ChannelReader &clk, ChannelReader &mosi, ChannelReader &miso)
{
    const bool trailing = m_settings.cpha.value() != 0;
    const bool takenAtRise = (m_settings.cpol.value() != 0) == trailing;
    const auto bits = unsigned(m_settings.word.value());
    const MarkerType arrow = takenAtRise ? MarkerType::UpArrow : MarkerType::DownArrow;
    const Sample idle = m_settings.idleTime.value() > 0
                            ? std::max<Sample>(1, lux::samplesIn(m_settings.idleTime.value(), sampleRate()))
                            : INT64_MAX;
    bool isFirst = true;
    Word word;
    std::array<Sample, SpiSettings::mostBits> looks; // of the word's bits, so that they are marked at once
    const auto endWord = [&](SpiResults::Kind kind) {
        results().mark(m_settings.clk, std::span(looks).first(word.count), arrow);
        addWord(word, kind, isFirst);
        word = {};
        isFirst = kind == SpiResults::Cut;
    };
    Sample before = INT64_MAX; ///< the last edge at which nothing is taken
    // The leading edge of the first clock may lie in the sample of the select; a trailing one there has none before it.
    clk.advanceTo(span.hasBegin && !trailing ? span.begin - 1 : span.begin);
    skipCutWord(span, clk);
    while (clk.hasEdgeBefore(span.end + 1)) {
        if (word.count > 0 && clk.peekEdge() - clk.position() >= idle) {
            endWord(SpiResults::Cut);
        }
        // The device may let go in the same sample as the last edge; further ones are none of its own.
        if (clk.peekEdge() == span.end && word.count + 1 != bits) {
            break;
        }
        const Sample edge = clk.nextEdge();
        if (clk.level() != takenAtRise) {
            before = edge;
            continue;
        }
        if (word.count == 0) {
            word.first = trailing ? std::min(edge, before) : edge;
        }
        word.mosi = word.mosi << 1 | std::uint64_t(mosi.levelAt(edge));
        word.miso = word.miso << 1 | std::uint64_t(miso.levelAt(edge));
        word.last = edge;
        looks[word.count] = edge;
        if (++word.count == bits) {
            if (!trailing) {
                word.last = std::max(edge, std::min(clk.peekEdge(), span.end) - 1);
            }
            endWord(SpiResults::Word);
        }
    }
    if (word.count > 0 && span.hasEnd) {
        endWord(SpiResults::Cut);
    } else if (word.count > 0) {
        results().mark(m_settings.clk, std::span(looks).first(word.count), arrow);
    }
}

/// A capture that begins within a transfer may begin within a word: words are counted back from the transfer's end
/// then, unless the clock stands still for longer than a period in the beginning, as it does between words.
void SpiAnalyzer::skipCutWord(const SelectSpan &span, ChannelReader &clk) const
{
    if (span.hasBegin || !span.hasEnd) {
        return;
    }
    const bool takenAtRise = (m_settings.cpol.value() != 0) == (m_settings.cpha.value() != 0);
    const std::int64_t untilTaken = clk.level() == takenAtRise ? 2 : 1; // edges to the first that takes a bit
    ChannelReader ahead(clk);
    if (clk.edgesLeft() >= 3 && clk.peekEdge() > ahead.skipEdges(3) - clk.peekEdge() + 1) {
        return;
    }
    ahead = clk;
    const std::int64_t edges = ahead.advanceTo(span.end);
    const std::int64_t taken = edges < untilTaken ? 0 : (edges - untilTaken) / 2 + 1;
    const std::int64_t cut = taken % m_settings.word.value();
    if (cut > 0) {
        clk.skipEdges(untilTaken + 2 * (cut - 1));
    }
}

void SpiAnalyzer::addWord(const Word &word, SpiResults::Kind kind, bool isFirst)
{
    if (kind == SpiResults::Cut) {
        results().mark(m_settings.clk, word.last, MarkerType::ErrorX);
    }
    results().add({.firstSample = word.first,
                   .lastSample = word.last,
                   .data = inOrder(word.mosi, word.count),
                   .data2 = inOrder(word.miso, word.count),
                   .kind = kind,
                   .flags = std::uint16_t(isFirst ? SpiResults::FirstOfTransfer : 0),
                   .extra = word.count});
}

std::uint64_t SpiAnalyzer::inOrder(std::uint64_t bits, unsigned count) const
{
    return m_settings.bitOrder == lux::BitOrder::MsbFirst ? bits : lux::reversed(bits, count);
}
