#include "BiphaseLine.h"

#include <algorithm>
#include <cstdlib>

using lux::ChannelReader;
using lux::Sample;

namespace {

// How far ahead a run is looked at, in edges: from its begin, and again behind a violation, where there may be noise.
constexpr unsigned farAhead = 4096;
constexpr unsigned nearAhead = 16;
constexpr unsigned sureVote = 2;
constexpr unsigned enoughVotes = 24 * sureVote;
constexpr unsigned clearlyMore =
    3 * sureVote; ///< votes that a violation needs to change the phase: longer bits have two
constexpr unsigned edgesToLearn = 20000;
constexpr Sample spikesInHalf = 4; ///< a pulse of up to a quarter of half a bit is not seen
constexpr Sample leastRest = 4;    ///< halves of a bit: what is shorter may be a part of a leader
// RC-6 of infrared remote controls: a leader of six halves, two of rest, and bits of which the fifth, the trailer, is
// twice as long as the others (Philips, "RC-6 Mode 0").
constexpr Sample halvesOfLeader = 6;
constexpr std::size_t bitsBeforeTrailer = 4;

} // namespace

BiphaseLine::BiphaseLine(const ChannelReader &line, const HalfClock &clock, BiphaseCode code, ManchesterSense sense,
                         bool restsHigh)
    : m_line(line, clock.half() / spikesInHalf + 1), // an edge is known to a sample
      m_clock(clock),
      m_code(code),
      m_sense(sense),
      m_restsHigh(restsHigh),
      m_oneIsHigh(sense == ManchesterSense::Rising)
{
    learn();
}

/// For each whole bit between two edges, whether an even or an odd number of halves lies before it.
BiphaseLine::Votes BiphaseLine::votesFrom(const lux::FilteredLine &line, unsigned mostEdges) const
{
    lux::FilteredLine ahead(line);
    Votes votes{};
    unsigned halves = 0;
    for (unsigned i = 0; i < mostEdges && ahead.hasEdge() && votes[0] + votes[1] < enoughVotes; ++i) {
        const Sample from = ahead.position();
        const HalfClock::Width width = m_clock.widthOf(ahead.nextEdge() - from);
        if (width == HalfClock::Silence || width == HalfClock::Glitch) {
            break;
        }
        if (width == HalfClock::Full) {
            votes[halves & 1U] += i == 0 ? 1 : sureVote; // the first one may be a leader's
        }
        halves += width;
    }
    return votes;
}

/// What the first edge of a run is, as most runs at the capture's begin have it.
void BiphaseLine::learn()
{
    lux::FilteredLine line(m_line);
    Votes votes{};
    for (unsigned edges = 0; edges < edgesToLearn && line.hasEdge(); ++edges) {
        const Sample before = line.position();
        const bool isRun = m_clock.widthOf(line.nextEdge() - before) == HalfClock::Silence;
        if (isRun) {
            const Votes own = votesFrom(line, nearAhead * nearAhead);
            votes[0] += unsigned(own[0] > own[1]);
            votes[1] += unsigned(own[1] > own[0]);
        }
    }
    if (votes[0] != votes[1]) {
        m_firstEdge = votes[0] > votes[1] ? 0 : 1;
    }
}

/// How many halves, modulo 2, lie between the edge here and those that each bit has.
unsigned BiphaseLine::parityHere()
{
    const Votes votes = votesFrom(m_line, m_isRestart ? nearAhead : farAhead);
    if (m_isRestart && m_kept >= 0 && votes[1 - std::size_t(m_kept)] < votes[std::size_t(m_kept)] + clearlyMore) {
        return unsigned(m_kept);
    }
    m_isTold = votes[0] != votes[1];
    if (m_isTold) {
        return votes[0] > votes[1] ? 0 : 1;
    }
    if (m_firstEdge >= 0 && !m_isRestart) {
        return unsigned(m_firstEdge);
    }
    const bool isTold = m_sense != ManchesterSense::Auto || !m_restsHigh;
    // Preambles and start bits are ones.
    return m_code == BiphaseCode::Manchester && isTold && !isOne(m_line.level()) ? 1 : 0;
}

/// Goes to the first edge of a run. @return false when there is none
bool BiphaseLine::goToRun()
{
    m_leadIn = 0;
    if (m_isRestart) {
        m_hasBegin = m_isLonger;
        return true;
    }
    const bool isBegin = m_isBegin;
    m_isBegin = false;
    m_hasBegin = !isBegin || m_clock.widthOf(m_line.peekEdge()) == HalfClock::Silence;
    if (!m_line.hasEdge()) {
        return false;
    }
    // A capture may begin within a bit of which more than half is there: then an edge stands before its begin.
    if (!isBegin || m_clock.widthOf(m_line.peekEdge()) != HalfClock::Full) {
        const Sample rest = m_line.level() == m_restsHigh ? m_line.peekEdge() - m_line.position() : 0;
        m_isFresh = m_isFresh || rest > leastRest * m_clock.half();
        m_leadIn = m_line.peekEdge() - m_line.position();
        m_line.nextEdge();
    }
    return true;
}

bool BiphaseLine::next(BiphaseRun &run)
{
    while (goToRun()) {
        run.bits.clear();
        run.hasViolation = false;
        run.leader = -1;
        const Sample begin = m_line.position();
        m_parity = m_isLonger ? 0 : parityHere();
        if (!m_isLonger) {
            m_before = HalfClock::Silence;
            m_lastOwn = -1;
            m_leader = passLeader() ? begin - m_leadIn : -1;
        }
        const End end = read(run);
        m_isLonger = end == End::Length;
        run.hasViolation = end == End::Violation;
        m_isRestart = end == End::Violation || end == End::Length;
        if (m_isRestart && m_line.position() == begin) { // not to stand still
            if (!m_line.hasEdge()) {
                return false;
            }
            m_kept = widthHere() == HalfClock::Full ? m_kept : -1;
            m_line.nextEdge();
        }
        // A run whose begin was not seen is known only by its own edges.
        if (run.bits.size() >= leastBits && (m_hasBegin || m_isTold)) {
            m_isFresh = false;
            run.end = std::min(run.end, m_line.sampleCount());
            m_lastEnd = run.end;
            return true;
        }
    }
    return false;
}

/// From the edge here to the next one. At the capture's end what is no silence yet is none of the others either.
HalfClock::Width BiphaseLine::widthHere() const
{
    const HalfClock::Width width = m_clock.widthOf(m_line.peekEdge() - m_line.position());
    return m_line.hasEdge() || width == HalfClock::Silence ? width : HalfClock::Glitch;
}

/// Reads the bits of a run. The line then stands at the run's last edge, which begins the next one behind a violation.
BiphaseLine::End BiphaseLine::read(BiphaseRun &run)
{
    const bool isAtMiddle = m_code == BiphaseCode::Manchester || m_code == BiphaseCode::Differential;
    unsigned halves = 0;
    for (;;) {
        const Sample here = m_line.position();
        const bool isOwn = (halves & 1U) == m_parity;
        if (isOwn && run.bits.size() >= BiphaseRun::mostBits) {
            return End::Length;
        }
        const HalfClock::Width width = widthHere();
        const bool isViolation = width == HalfClock::Glitch || (width == HalfClock::Full && !isOwn);
        if (isOwn && isAtMiddle && !isViolation) {
            addAtMiddle(run);
        } else if (isOwn && !isAtMiddle) {
            addAtEnd(run);
        }
        if (isViolation) {
            m_kept = width == HalfClock::Full ? int((m_parity + halves) & 1U) : -1;
            return m_line.hasEdge() ? End::Violation : End::CaptureEnd;
        }
        if (isOwn && m_leader >= 0 && run.bits.size() == bitsBeforeTrailer && readTrailer(run)) {
            halves = m_parity + unsigned(m_before == HalfClock::Full); // a whole bit may end at a bit's begin here
            continue;
        }
        if (width == HalfClock::Silence) {
            return End::Silence;
        }
        m_lastOwn = isOwn ? here : m_lastOwn;
        m_previous = here;
        m_before = width;
        halves += width;
        m_line.nextEdge();
    }
}

/// Goes from the end of an RC-6 leader, where a run seems to begin, to its start bit.
bool BiphaseLine::passLeader()
{
    if (m_code != BiphaseCode::Manchester || !isHalves(m_leadIn, halvesOfLeader) || m_line.level() != m_restsHigh ||
        !m_line.hasEdge() || widthHere() != HalfClock::Full) {
        return false;
    }
    lux::FilteredLine ahead(m_line);
    const Sample begin = ahead.nextEdge();
    if (!ahead.hasEdge() || m_clock.widthOf(ahead.peekEdge() - begin) != HalfClock::Half) {
        return false; // the start bit is a 1, with an edge at its begin
    }
    m_line = ahead;
    m_parity = 1;
    return true;
}

/// Reads the bit that is twice as long, from the middle of the one before it. The line then stands at the next edge
/// behind the trailer's middle: two halves on where the next bit begins, three halves on in its middle.
/// @return false when there is none; nothing has changed then
bool BiphaseLine::readTrailer(BiphaseRun &run)
{
    lux::FilteredLine ahead(m_line);
    const Sample before = ahead.position();
    const bool hasBegin = isHalves(ahead.peekEdge() - before, 1);
    if (hasBegin && ahead.hasEdge()) {
        ahead.nextEdge();
    }
    const Sample begin = hasBegin ? ahead.position() : before + m_clock.half();
    const Sample middle = ahead.peekEdge();
    if (!ahead.hasEdge() || !isHalves(middle - ahead.position(), hasBegin ? 2 : 3)) {
        return false;
    }
    ahead.nextEdge();
    const Sample behind = ahead.peekEdge() - middle;
    if (!ahead.hasEdge() || (!isHalves(behind, 2) && !isHalves(behind, 3))) {
        return false;
    }
    run.bits.push_back({.begin = begin, .at = middle, .value = isOne(ahead.level())});
    run.end = middle + 2 * m_clock.half();
    run.leader = m_leader;
    m_lastOwn = middle;
    m_previous = middle;
    m_before = isHalves(behind, 2) ? HalfClock::Full : HalfClock::Silence;
    ahead.nextEdge();
    m_line = ahead;
    return true;
}

bool BiphaseLine::isHalves(Sample samples, Sample count) const
{
    return 2 * std::abs(samples - count * m_clock.half()) < m_clock.half();
}

/// The bit in whose middle the line stands. Its begin has an edge of its own or lies half a bit before.
void BiphaseLine::addAtMiddle(BiphaseRun &run)
{
    const Sample here = m_line.position();
    if (m_code == BiphaseCode::Manchester && m_sense == ManchesterSense::Auto && m_restsHigh && m_isFresh &&
        run.bits.empty()) {
        m_oneIsHigh = m_line.level(); // the start bit is a 1
    }
    if (m_code == BiphaseCode::Differential && m_before == HalfClock::Silence) {
        return; // nobody knows how it begins
    }
    const bool hasBegin = m_before == HalfClock::Half;
    run.bits.push_back({.begin = hasBegin ? m_previous : std::max(here - m_clock.half(), m_lastEnd),
                        .at = here,
                        .value = m_code == BiphaseCode::Manchester ? isOne(m_line.level()) : !hasBegin});
    const bool hasEnd = widthHere() == HalfClock::Half;
    run.end = hasEnd ? m_line.peekEdge() : here + m_clock.half();
}

/// The bit that ends where the line stands.
void BiphaseLine::addAtEnd(BiphaseRun &run) const
{
    if (m_lastOwn < 0) {
        return;
    }
    const bool hasMiddle = m_before == HalfClock::Half;
    run.bits.push_back({.begin = m_lastOwn,
                        .at = hasMiddle ? m_previous : m_lastOwn,
                        .value = hasMiddle == (m_code == BiphaseCode::Mark)});
    run.end = m_line.position();
}
