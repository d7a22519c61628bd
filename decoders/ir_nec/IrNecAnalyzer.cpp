#include "IrNecAnalyzer.h"

#include "common/Duration.h"
#include "common/RestLevel.h"

#include <algorithm>
#include <string>

using lux::Sample;

LUX_PLUGIN(IrNecAnalyzer)

namespace {

// Times in ns (data sheet of the uPD6121, transmission format).
constexpr std::int64_t leaderMark = 9000000;
constexpr std::int64_t frameSpace = 4500000;
constexpr std::int64_t repeatSpace = 2250000;
constexpr std::int64_t bitMark = 562500;
constexpr std::int64_t zeroSpace = 562500;
constexpr std::int64_t oneSpace = 1687500;
constexpr std::int64_t repeatPeriod = 108000000;

/// Receivers make marks longer and spaces shorter, or the reverse: by up to six periods of the carrier, as their data
/// sheets have it.
constexpr std::int64_t receiverOff = 160000;
/// More than three periods of a carrier of 30 kHz, less than any space.
constexpr std::int64_t carrierGap = 120000;
/// An eighth of a bit's mark: what is shorter is no mark, and no space either.
constexpr std::int64_t spike = bitMark / 8;
/// Pulses of a mark without a carrier that has spikes in it; a carrier has twenty in a bit's mark.
constexpr std::int64_t mostSpikes = 8;

constexpr unsigned frameBits = 32;

} // namespace

void IrNecAnalyzer::decode()
{
    const Windows windows{.leader = windowOf(leaderMark),
                          .frameSpace = windowOf(frameSpace),
                          .repeatSpace = windowOf(repeatSpace),
                          .mark = windowOf(bitMark, receiverOff),
                          .zero = windowOf(zeroSpace, receiverOff),
                          .one = windowOf(oneSpace, receiverOff)};
    m_carrierTold = m_settings.carrier == IrCarrier::Off;
    const Sample shortest = lux::samplesIn(spike, sampleRate());
    const bool hasCarrier = m_settings.carrier != IrCarrier::Off;
    const Sample gap = hasCarrier ? lux::samplesIn(carrierGap, sampleRate()) : shortest;
    IrMarks marks(reader(m_settings.ir), isActiveHigh(), gap, shortest, hasCarrier ? INT64_MAX : mostSpikes);
    Last last;
    IrMark mark;
    bool hasMark = marks.next(mark);
    while (hasMark) {
        const IrMark leader = mark;
        hasMark = marks.next(mark);
        if (!windows.leader.has(leader.end - leader.begin) || !hasMark) {
            continue;
        }
        const Sample space = mark.begin - leader.end;
        if (windows.frameSpace.has(space)) {
            tellCarrier(leader);
            hasMark = readFrame(marks, windows, leader.begin, mark, last);
        } else if (windows.repeatSpace.has(space) && windows.mark.has(mark.end - mark.begin)) {
            addRepeat(leader.begin, mark.end, last);
            hasMark = marks.next(mark);
        }
    }
}

/// The line rests for longer than anything in a frame lasts.
bool IrNecAnalyzer::isActiveHigh()
{
    if (m_settings.polarity != IrPolarity::Auto) {
        return m_settings.polarity == IrPolarity::High;
    }
    return !lux::restLevel(reader(m_settings.ir), true);
}

/// An edge is known to a sample.
IrNecAnalyzer::Window IrNecAnalyzer::windowOf(std::int64_t nanoseconds, std::int64_t more) const
{
    const std::int64_t off = nanoseconds / 100 * m_settings.tolerance.value() + more;
    return {.least = std::max<Sample>(lux::samplesIn(nanoseconds - off, sampleRate()), 1),
            .most = lux::samplesIn(nanoseconds + off, sampleRate()) + 1};
}

void IrNecAnalyzer::tellCarrier(const IrMark &mark)
{
    constexpr std::int64_t leastPulses = 100;
    if (m_carrierTold || mark.pulses < leastPulses) {
        return;
    }
    m_carrierTold = true;
    const std::int64_t hertz = (mark.pulses - 1) * sampleRate() / (mark.lastPulse - mark.begin);
    const std::int64_t tenths = (hertz + 50) / 100;
    tell("Carrier found: " + std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " kHz");
}

/// 32 bits, each a mark and the space behind it, and a last mark.
/// @param mark  in: the first bit's mark, out: the first one that does not belong to the frame
/// @return false at the capture's end
bool IrNecAnalyzer::readFrame(IrMarks &marks, const Windows &windows, Sample begin, IrMark &mark, Last &last)
{
    std::uint32_t bits = 0;
    unsigned count = 0;
    bool isOver = false;
    Sample end = mark.begin;
    while (windows.mark.has(mark.end - mark.begin)) {
        end = mark.end;
        if (count == frameBits) {
            if (!IrNecResults::Code(bits).isCommandRight()) {
                results().mark(m_settings.ir, end - 1, MarkerType::ErrorX);
            }
            results().add({.firstSample = begin, .lastSample = end - 1, .data = bits, .kind = IrNecResults::Whole});
            last = {.isKnown = true, .bits = bits, .begin = begin};
            return marks.next(mark);
        }
        const Sample markBegin = mark.begin;
        const Sample space = marks.peek() - end;
        const bool hasMark = marks.next(mark);
        if (!hasMark && space <= windows.one.most) {
            return false; // the capture cuts it
        }
        const bool isOne = windows.one.has(space);
        if (!hasMark || (!isOne && !windows.zero.has(space))) {
            isOver = !hasMark;
            break;
        }
        results().mark(m_settings.ir, markBegin, isOne ? MarkerType::One : MarkerType::Zero);
        bits |= std::uint32_t(isOne) << count++;
    }
    results().mark(m_settings.ir, end - 1, MarkerType::ErrorX);
    results().add({.firstSample = begin, .lastSample = end - 1, .kind = IrNecResults::Cut, .extra = count});
    last.isKnown = false;
    return !isOver;
}

void IrNecAnalyzer::addRepeat(Sample begin, Sample end, Last &last)
{
    // Each comes 108 ms behind the one before; as many again are left to slow senders.
    last.isKnown = last.isKnown && begin - last.begin < 2 * lux::samplesIn(repeatPeriod, sampleRate());
    last.begin = begin;
    results().add({.firstSample = begin,
                   .lastSample = end - 1,
                   .data = last.isKnown ? last.bits : 0,
                   .kind = IrNecResults::Repeat,
                   .flags = last.isKnown ? std::uint16_t(IrNecResults::Known) : std::uint16_t(0)});
}
