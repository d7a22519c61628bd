#include "JtagAnalyzer.h"

#include "common/Duration.h"

#include <algorithm>

using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(JtagAnalyzer)

/// IEEE 1149.1-2013, 4.3 to 4.6 and figure 6-1: TMS and TDI are taken at the rising edge of TCK, and so is TDO, which
/// changes at the falling one.
void JtagAnalyzer::decode()
{
    ChannelReader tck = reader(m_settings.tck);
    ChannelReader tms = reader(m_settings.tms);
    ChannelReader tdi = reader(m_settings.tdi);
    ChannelReader tdo = reader(m_settings.tdo);
    ChannelReader trst = reader(m_settings.trst);
    const bool hasReset = m_settings.trst.isDefined();
    m_delay = lux::samplesIn(m_settings.cableDelay.value(), sampleRate());
    // A capture begins at rest as a rule. One that begins between clocks may begin in any state: the levels of TMS lead
    // to the same one from all of them sooner or later, at the latest five high ones.
    m_state = JtagState::RunTestIdle;
    m_possible = beginsWithinClocks(tck) ? JtagStates() : JtagStates(m_state);
    if (hasReset && !trst.level()) {
        m_state = JtagState::TestLogicReset;
        m_possible = JtagStates(m_state);
    }
    m_isKnown = false;
    m_since = 0;
    m_clocks = 0;
    m_hasCaptured = false;
    m_shift = {};
    while (tck.hasEdge()) {
        const Sample edge = tck.nextEdge();
        if (!tck.level()) {
            continue;
        }
        if (hasReset) {
            while (trst.hasEdgeBefore(edge + 1)) {
                const Sample change = trst.nextEdge();
                if (!trst.level()) {
                    reset(change);
                }
            }
            if (!trst.level()) {
                continue;
            }
        }
        ++m_clocks;
        if (isShift(m_state) && m_shift.isOpen) {
            shiftBit(tdi, tdo, edge);
        }
        takeClock(tms.levelAt(edge), edge);
    }
    if (m_shift.isOpen) {
        results().drop(m_shift.place);
    }
}

/// Whether no more than a clock and a half is missing before the first rise. Where a clock is but two or three samples,
/// the sample that each edge comes late counts.
bool JtagAnalyzer::beginsWithinClocks(ChannelReader tck)
{
    const std::int64_t toRise = tck.level() ? 2 : 1;
    if (tck.edgesLeft() < toRise + 2) {
        return false;
    }
    tck.skipEdges(toRise);
    const Sample first = tck.position();
    return 2 * (first - 1) < 3 * (tck.skipEdges(2) - first + 1);
}

void JtagAnalyzer::takeClock(bool tms, Sample edge)
{
    if (!m_possible.isOne()) {
        m_possible.clock(tms);
        if (m_possible.isOne()) {
            enter(m_possible.first(), edge);
            m_isKnown = nextState(m_state, tms) != m_state; // else it may have begun before
        }
        return;
    }
    const JtagState next = nextState(m_state, tms);
    if (next != m_state) {
        enter(next, edge);
    }
}

void JtagAnalyzer::shiftBit(ChannelReader &tdi, ChannelReader &tdo, Sample edge)
{
    m_shift.add(tdi.levelAt(edge), tdo.levelAt(std::min(edge + m_delay, sampleCount() - 1)));
    m_shift.last = edge;
    results().mark(m_settings.tck, edge, MarkerType::UpArrow);
}

void JtagAnalyzer::enter(JtagState state, Sample edge)
{
    if (m_isKnown && m_settings.showStates) {
        results().add({.firstSample = m_since,
                       .lastSample = edge - 1,
                       .data = m_clocks,
                       .kind = JtagResults::State,
                       .extra = unsigned(m_state)});
    }
    m_isKnown = true;
    m_hasCaptured = isCapture(state) || (m_hasCaptured && !isUpdate(m_state));
    m_state = state;
    m_since = edge;
    m_clocks = 0;
    if (isShift(state) && !m_shift.isOpen && m_hasCaptured) {
        m_shift.begin(edge, results().open(edge));
    } else if (isUpdate(state) && m_shift.isOpen) {
        finishShift(state == JtagState::UpdateIr ? JtagResults::ShiftIr : JtagResults::ShiftDr);
    }
}

/// TRST leads to Test-Logic-Reset without a clock, and so cuts what is shifted.
void JtagAnalyzer::reset(Sample edge)
{
    if (m_shift.isOpen && m_shift.count > 0) {
        results().mark(m_settings.tck, m_shift.last, MarkerType::ErrorX);
        finishShift(JtagResults::Cut);
    } else if (m_shift.isOpen) {
        results().drop(m_shift.place);
        m_shift.isOpen = false;
    }
    m_possible = JtagStates(JtagState::TestLogicReset);
    if (m_state != JtagState::TestLogicReset || !m_isKnown) {
        enter(JtagState::TestLogicReset, edge);
    }
}

/// Up to 64 bits lie in the frame, more in a payload: the words of TDI, then those of TDO.
void JtagAnalyzer::finishShift(JtagResults::Kind kind)
{
    FrameData frame{.firstSample = m_shift.first,
                    .lastSample = m_shift.last,
                    .data = m_shift.tdi.front(),
                    .data2 = m_shift.tdo.front(),
                    .kind = kind,
                    .extra = std::uint32_t(m_shift.count)};
    if (m_shift.tdi.size() > 1) {
        frame.data = results().keep(JtagResults::packed(m_shift.tdi));
        frame.data2 = results().keep(JtagResults::packed(m_shift.tdo));
    }
    results().fill(m_shift.place, frame);
    m_shift.isOpen = false;
}
