#include "ManchesterAnalyzer.h"

#include "HalfBitFinder.h"
#include "common/BitGrid.h"
#include "common/RestLevel.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(ManchesterAnalyzer)

std::uint32_t ManchesterAnalyzer::NeededSampleRate()
{
    return std::uint32_t(leastSamplesPerBit * m_settings.bitrate.value());
}

void ManchesterAnalyzer::decode()
{
    const HalfClock clock(findHalf());
    BiphaseLine line(reader(m_settings.data), clock, m_settings.decodeAs, m_settings.convention, restsHigh());
    if (m_settings.convention == ManchesterSense::Auto && m_settings.polarity == ManchesterPolarity::Low) {
        line.invert(); // until a start bit tells
    }
    BiphaseRun run;
    while (line.next(run)) {
        addRun(run);
    }
}

/// Samples of half a bit. A rate that fits no edges (such as carrier periods a bit, as data sheets of tags have it)
/// is found as if there were none.
double ManchesterAnalyzer::findHalf()
{
    const HalfBitFinder finder(reader(m_settings.data));
    const std::int64_t set = m_settings.bitrate.value();
    const double half = set == 0 ? 0.0 : double(sampleRate()) / double(2 * set);
    if (set != 0 && sampleRate() < leastSamplesPerBit * set) {
        fail(lux::tooFewSamples(set, leastSamplesPerBit));
    }
    if (set != 0 && finder.fits(half)) {
        return sampleRate() == leastSamplesPerBit * set ? finder.withTies(half) : half;
    }
    const double found = finder.find();
    if (found <= 0) {
        if (set != 0) {
            return half;
        }
        fail("No bit rate can be found: the line has too few edges that are half a bit or a whole one apart");
    }
    tell("Bit rate found: " + std::to_string(std::llround(double(sampleRate()) / (2 * found))) + " bits/s");
    return found;
}

/// The level of the longest pause, where it is not set.
bool ManchesterAnalyzer::restsHigh()
{
    if (m_settings.polarity != ManchesterPolarity::Auto) {
        return m_settings.polarity == ManchesterPolarity::Low;
    }
    return lux::restLevel(reader(m_settings.data), false);
}

/// The first bit of the preamble; none where the run has no preamble.
std::size_t ManchesterAnalyzer::beginOf(const BiphaseRun &run) const
{
    const std::string preamble = m_settings.preambleBits();
    const auto found = std::search(run.bits.begin(), run.bits.end(), preamble.begin(), preamble.end(),
                                   [](const BiphaseBit &bit, char wanted) { return bit.value == (wanted == '1'); });
    return std::size_t(found - run.bits.begin());
}

void ManchesterAnalyzer::addRun(const BiphaseRun &run)
{
    const auto bits = std::span<const BiphaseBit>(run.bits).subspan(beginOf(run));
    for (const BiphaseBit &bit : bits) {
        results().mark(m_settings.data, bit.at, bit.value ? MarkerType::One : MarkerType::Zero);
    }
    if (bits.empty()) {
        return;
    }
    if (run.leader >= 0 && m_settings.bits.value() == 0 && bits.size() == run.bits.size()) {
        addRemote(run);
    } else if (m_settings.bits.value() == 0) {
        addBits(bits, run.end);
    } else {
        addWords(bits, run.end);
    }
    if (run.hasViolation) {
        results().mark(m_settings.data, run.end - 1, MarkerType::ErrorX);
        results().add({.firstSample = run.end - 1, .lastSample = run.end - 1, .kind = ManchesterResults::Violation});
    }
}

void ManchesterAnalyzer::addBits(std::span<const BiphaseBit> bits, Sample end)
{
    std::vector<std::uint8_t> packed((bits.size() + 7) / 8);
    for (std::size_t i = 0; i < bits.size(); ++i) {
        packed[i / 8] = std::uint8_t(packed[i / 8] | unsigned(bits[i].value) << (7 - i % 8));
    }
    results().add({.firstSample = bits.front().begin,
                   .lastSample = end - 1,
                   .data = results().keep(packed),
                   .kind = ManchesterResults::Bits,
                   .extra = std::uint32_t(bits.size())});
}

/// A frame of an RC-6 remote control (Philips, "RC-6 Mode 0"): its leader, all bits, and these element by element. What
/// the others than mode 0 have behind the trailer is told as bytes, behind the customer code of mode 6.
void ManchesterAnalyzer::addRemote(const BiphaseRun &run)
{
    using Field = ManchesterResults::Field;
    const std::vector<BiphaseBit> &bits = run.bits;
    std::size_t at = 0;
    results().add({.firstSample = run.leader, .lastSample = bits.front().begin - 1, .kind = ManchesterResults::Leader});
    addBits(bits, run.end);
    const auto add = [&](Field field, std::size_t most) {
        const std::size_t first = at;
        lux::BitCollector value(lux::BitOrder::MsbFirst);
        for (; at < std::min(first + most, bits.size()); ++at) {
            value.add(bits[at].value);
        }
        if (at > first) {
            results().add({.firstSample = bits[first].begin,
                           .lastSample = (at < bits.size() ? bits[at].begin : run.end) - 1,
                           .data = value.value(),
                           .kind = ManchesterResults::Element,
                           .line = std::uint8_t(field),
                           .extra = std::uint32_t(at - first)});
        }
        return value.value();
    };
    add(Field::Start, 1);
    const std::uint64_t mode = add(Field::Mode, 3);
    add(Field::Toggle, 1);
    if (mode == 0) {
        add(Field::Address, 8);
        add(Field::Command, 8);
    } else if (mode == 6 && at < bits.size()) {
        add(Field::Customer, bits[at].value ? 16 : 8);
    }
    while (at < bits.size()) {
        add(Field::Data, 8);
    }
}

void ManchesterAnalyzer::addWords(std::span<const BiphaseBit> bits, Sample end)
{
    const auto length = std::size_t(m_settings.bits.value());
    for (std::size_t at = 0; at < bits.size(); at += length) {
        const std::size_t count = std::min(length, bits.size() - at);
        lux::BitCollector word(m_settings.bitOrder);
        for (const BiphaseBit &bit : bits.subspan(at, count)) {
            word.add(bit.value);
        }
        const Sample last = at + count < bits.size() ? bits[at + count].begin : end;
        results().add({.firstSample = bits[at].begin,
                       .lastSample = last - 1,
                       .data = word.value(),
                       .kind = std::uint8_t(count == length ? ManchesterResults::Word : ManchesterResults::Part),
                       .extra = std::uint32_t(count)});
    }
}
