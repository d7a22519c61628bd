#include "CanAnalyzer.h"

#include "CanRateFinder.h"
#include "common/BitGrid.h"

#include <algorithm>
#include <string>

using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(CanAnalyzer)

namespace {

// Lengths in thousandths of a bit: half a bit less than the standard's where a length is measured between two edges,
// which different nodes may have sent.
constexpr std::int64_t bit = 1000;
constexpr std::int64_t flag = 6 * bit; ///< error and overload flags (10.4.4.2, 10.4.5.2)
constexpr std::int64_t leastFlag = flag - bit / 2;
constexpr std::int64_t delimiter = 8 * bit; ///< of error and overload frames
constexpr std::int64_t leastDelimiter = delimiter - bit / 2;
constexpr std::int64_t idle = 11 * bit - bit / 2; ///< a node takes part behind so many recessive bits (10.9.4)
/// Also where the capture begins: no frame has so many recessive bits in it, and a SOF may follow.
constexpr std::int64_t idleAtBegin = 10 * bit - bit / 2;
/// A dominant third bit of the intermission is a SOF (10.4.6.2).
constexpr std::int64_t idleBehindFlag = delimiter + 2 * bit - bit / 2;
constexpr std::int64_t intermissionForOverload = 2 * bit - bit / 4;

} // namespace

std::uint32_t CanAnalyzer::NeededSampleRate()
{
    const std::int64_t rate = std::max(m_settings.baudrate.value(), m_settings.dataBaudrate.value());
    return std::uint32_t(leastSamplesPerBit * rate);
}

void CanAnalyzer::decode()
{
    chooseTimes();
    ChannelReader line = reader(m_settings.rx);
    if (!beginsBetweenFrames(line)) {
        waitForIdle(line);
    }
    decodeFrames(line);
}

/// The bit rates of the settings, or those that the capture tells.
void CanAnalyzer::chooseTimes()
{
    std::int64_t rate = m_settings.baudrate.value();
    std::int64_t dataRate = m_settings.dataBaudrate.value();
    const CanRateFinder finder(reader(m_settings.rx), sampleRate(), m_settings);
    if (rate == 0) {
        rate = finder.findRate();
        if (rate == 0) {
            fail("No bit rate can be found: the line has no whole frame");
        }
        tell("Bit rate found: " + std::to_string(rate) + " bits/s");
    }
    if (dataRate == 0) {
        dataRate = finder.findDataRate(rate);
        if (dataRate == 0) {
            dataRate = rate; // no frame switches
        } else {
            tell("Data bit rate found: " + std::to_string(dataRate) + " bits/s");
        }
    }
    if (sampleRate() < leastSamplesPerBit * rate) {
        fail(lux::tooFewSamples(rate, leastSamplesPerBit));
    }
    const CanRates rates = {.sample = sampleRate(), .nominal = rate, .data = dataRate};
    m_looks = m_settings.lookTimes(rates);
    m_times = m_looks.front();
}

/// Frame by frame (ISO 11898-1:2015, 10.4); `line` stands in the idle bus.
void CanAnalyzer::decodeFrames(ChannelReader &line)
{
    for (;;) {
        line.nextEdge(); // to dominant: SOF
        CanReceiver receiver(line, m_times);
        receiver.receive();
        if (!receiver.isRight()) {
            lookAgain(receiver, line);
        }
        if (receiver.fault() == CanFault::Glitch) {
            line.nextEdge();
            continue;
        }
        line = receiver.line().reader();
        if (receiver.fault() == CanFault::None) {
            add(receiver, receiver.end());
            if (isOverload(line, receiver.end())) {
                recover(line, line.nextEdge(), CanResults::Overload);
            }
        } else if (receiver.fault() == CanFault::CaptureEnd) {
            if (receiver.frame().hasId) {
                add(receiver, sampleCount());
            }
            return;
        } else {
            const Sample flagFrom = flagBegin(line, receiver.end());
            add(receiver, flagFrom);
            recover(line, flagFrom, CanResults::Error);
        }
    }
}

/// Bits of few samples may be seen a sample early or late: where the check tells so, they are looked at anew.
void CanAnalyzer::lookAgain(CanReceiver &receiver, const ChannelReader &atStart) const
{
    for (std::size_t i = 1; i < m_looks.size(); ++i) {
        CanReceiver again(atStart, m_looks[i]);
        again.receive();
        if (again.isRight()) {
            receiver = again;
            return;
        }
    }
}

void CanAnalyzer::add(const CanReceiver &receiver, Sample end)
{
    markBits(receiver);
    const Sample first = receiver.looks().empty() ? end - 1 : receiver.begin();
    results().addFrame(receiver.frame(), receiver.fault(), first, std::min(end, sampleCount()) - 1);
}

/// A dot where each bit is looked at, a cross at each stuff bit, an error cross at a wrong bit and at the one that
/// breaks the frame.
void CanAnalyzer::markBits(const CanReceiver &receiver)
{
    const bool isBroken = receiver.fault() != CanFault::None && receiver.fault() != CanFault::CaptureEnd;
    const std::size_t sound = receiver.looks().size() - std::size_t(isBroken && !receiver.looks().empty());
    CanResults &out = results();
    const Channel channel = m_settings.rx;
    for (std::size_t i = 0; i < receiver.looks().size(); ++i) {
        const CanReceiver::Look &look = receiver.looks()[i];
        const MarkerType type = look.isStuff ? MarkerType::X : MarkerType::Dot;
        out.mark(channel, look.at, i < sound && !look.isWrong ? type : MarkerType::ErrorX);
    }
}

/// A dominant flag within the first two bits of the intermission (10.4.5). A shorter pulse there is an early SOF.
bool CanAnalyzer::isOverload(const ChannelReader &line, Sample frameEnd) const
{
    if (!line.hasEdgeBefore(frameEnd + samplesIn(intermissionForOverload)) || line.edgesLeft() < 2) {
        return false;
    }
    ChannelReader ahead(line);
    const Sample from = ahead.nextEdge();
    return ahead.nextEdge() - from >= samplesIn(leastFlag);
}

/// Where the flag begins that breaks a frame: six bits before its end, if that is before the bit that told the error.
Sample CanAnalyzer::flagBegin(const ChannelReader &line, Sample detected) const
{
    if (!isDominant(line) || !line.hasEdge()) {
        return detected;
    }
    const Sample latest = std::min(detected, line.peekEdge() - samplesIn(flag));
    return std::max(line.lastEdge(), latest);
}

/// Whether the first edge to dominant begins a frame with a right check: the recessive bits before it may be too few.
bool CanAnalyzer::beginsBetweenFrames(ChannelReader line) const
{
    if (isDominant(line)) {
        return false;
    }
    line.nextEdge();
    CanReceiver receiver(line, m_times);
    receiver.receive();
    if (!receiver.isRight()) {
        lookAgain(receiver, line);
    }
    return receiver.isRight();
}

/// Recessive bits behind a frame; what comes before is not looked at.
void CanAnalyzer::waitForIdle(ChannelReader &line)
{
    for (;;) {
        if (isDominant(line)) {
            line.nextEdge();
        }
        if (line.peekEdge() - line.position() >= samplesIn(idleAtBegin)) {
            return;
        }
        line.nextEdge();
    }
}

/// From an error or overload condition to the idle bus. Each dominant pulse of six bits or more is a flag.
void CanAnalyzer::recover(ChannelReader &line, Sample from, CanResults::Kind kind)
{
    for (;;) {
        bool isFlag = false;
        if (isDominant(line)) {
            const Sample begin = line.lastEdge();
            const Sample end = line.nextEdge();
            isFlag = end - begin >= samplesIn(leastFlag);
            if (isFlag) {
                const Sample behind = std::min(end + samplesIn(delimiter), line.peekEdge());
                results().add({.firstSample = std::max(begin, std::min(from, end - 1)),
                               .lastSample = behind - 1,
                               .data = std::uint64_t(end - std::max(begin, from)),
                               .kind = std::uint8_t(kind)});
            }
        }
        const Sample recessive = line.peekEdge() - std::max<Sample>(line.lastEdge(), 0);
        if (recessive >= samplesIn(isFlag ? idleBehindFlag : idle)) {
            return;
        }
        from = line.nextEdge();
        const bool isSecond = isFlag && recessive >= samplesIn(leastDelimiter);
        kind = isSecond ? CanResults::Overload : CanResults::Error;
    }
}
