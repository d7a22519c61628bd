#include "CecAnalyzer.h"

#include "common/Duration.h"

#include <algorithm>
#include <span>

using lux::Sample;

LUX_PLUGIN(CecAnalyzer)

namespace {

/// HDMI 1.4b, supplement 1, 5.2.1 and 5.2.2, in nanoseconds: what a sender may do.
struct Limits {
    std::int64_t least;
    std::int64_t most;
};
constexpr Limits startLow{3500000, 3900000};
constexpr Limits startLength{4300000, 4700000};
constexpr Limits oneLow{400000, 800000};
constexpr Limits zeroLow{1300000, 1700000};
constexpr Limits bitLength{2050000, 2750000};
constexpr std::int64_t look = 1050000; ///< where a receiver takes the bit
constexpr std::int64_t usualBit = 2400000;
/// The line may take 250 us to rise and 50 us to fall (5.1), so lengths are seen that much off.
constexpr std::int64_t slack = 200000;
/// A follower tells an error by a low pulse of 1.4 to 1.6 bits (7.4).
constexpr std::int64_t leastErrorLow = usualBit * 14 / 10 - slack;
constexpr std::int64_t glitch = 50000;
constexpr std::int64_t leastSampleRate = 10000; // Hz
constexpr unsigned bitsOfBlock = 10;            ///< eight of data, EOM, ACK
constexpr std::uint8_t everybody = 15;

} // namespace

std::uint32_t CecAnalyzer::NeededSampleRate()
{
    return std::uint32_t(leastSampleRate);
}

/// CEC 5.2: a start bit, then blocks of eight bits, EOM and ACK; each bit begins with a fall, and is 0 when the line is
/// still low after 1.05 ms.
void CecAnalyzer::decode()
{
    const std::int64_t rate = sampleRate();
    const auto rangeOf = [rate](const Limits &limits) {
        return Range{.least = lux::samplesIn(limits.least - slack, rate),
                     .most = lux::samplesUpTo(limits.most + slack, rate)};
    };
    m_startLow = rangeOf(startLow);
    m_startLength = rangeOf(startLength);
    m_oneLow = rangeOf(oneLow);
    m_zeroLow = rangeOf(zeroLow);
    m_bitLength = rangeOf(bitLength);
    m_look = lux::samplesIn(look, rate);
    m_usualBit = lux::samplesIn(usualBit, rate);
    m_leastErrorLow = lux::samplesIn(leastErrorLow, rate);
    const Sample shortest = lux::samplesUpTo(glitch, rate) + 1; // an edge is known to a sample
    decodeLine(lux::FilteredLine(reader(m_settings.line), shortest));
}

void CecAnalyzer::decodeLine(lux::FilteredLine line)
{
    if (!line.level() && line.hasEdge()) {
        line.nextEdge();
    }
    Bit bit = readBit(line);
    while (bit.hasNext) {
        if (!isStart(bit)) {
            bit = readBit(line);
        } else if (!readMessage(line, bit, bit)) {
            return;
        }
    }
}

/// The line is high; goes to the rise behind its next fall.
CecAnalyzer::Bit CecAnalyzer::readBit(lux::FilteredLine &line)
{
    Bit bit{.fall = line.peekEdge(), .rise = line.sampleCount(), .next = line.sampleCount(), .isEnd = true};
    if (!line.hasEdge()) {
        return bit;
    }
    line.nextEdge();
    if (!line.hasEdge()) {
        return bit;
    }
    bit.rise = line.nextEdge();
    bit.next = line.peekEdge();
    bit.hasNext = line.hasEdge();
    bit.isEnd = false;
    return bit;
}

bool CecAnalyzer::isStart(const Bit &bit) const
{
    return m_startLow.has(bit.rise - bit.fall) && m_startLength.has(bit.next - bit.fall);
}

/// @param after  becomes the first bit that is not of the message @return false where the capture cuts it
bool CecAnalyzer::readMessage(lux::FilteredLine &line, const Bit &start, Bit &after)
{
    Message message{.place = results().open(start.fall), .first = start.fall, .last = start.next - 1};
    results().mark(m_settings.line, start.fall, MarkerType::Start);
    results().add({.firstSample = start.fall, .lastSample = start.next - 1, .kind = CecResults::Start});
    Bit bit = readBit(line);
    for (;;) {
        const BlockEnd end = readBlock(line, message, bit);
        if (end == BlockEnd::CaptureEnd) {
            results().drop(message.place);
            return false;
        }
        const bool goesOn = bit.hasNext && bit.next - bit.fall <= m_bitLength.most;
        if (end == BlockEnd::Good && !message.isLast && goesOn && message.count < mostBlocks) {
            bit = readBit(line);
            continue;
        }
        if (end == BlockEnd::Good && !message.isLast && !bit.hasNext &&
            line.sampleCount() <= bit.fall + m_bitLength.most) {
            results().drop(message.place); // it may go on behind the capture
            return false;
        }
        addMessage(message, end);
        // What cuts a message may be the start of the next one.
        after = end == BlockEnd::Good ? readBit(line) : bit;
        if (end != BlockEnd::Good && !isStart(after)) {
            after = readBit(line);
        }
        return true;
    }
}

/// @param bit  in: the block's first one; out: its last one, or the one that is none
CecAnalyzer::BlockEnd CecAnalyzer::readBlock(lux::FilteredLine &line, Message &message, Bit &bit)
{
    const Sample first = bit.fall;
    std::uint32_t bits = 0;
    bool isTimingWrong = false;
    for (unsigned i = 0;; bit = readBit(line)) {
        if (bit.isEnd) {
            return BlockEnd::CaptureEnd;
        }
        const Sample low = bit.rise - bit.fall;
        if (low >= m_leastErrorLow || low > m_zeroLow.most) {
            results().mark(m_settings.line, bit.fall, MarkerType::ErrorX);
            return low >= m_leastErrorLow && !isStart(bit) ? BlockEnd::LineError : BlockEnd::Cut;
        }
        const bool value = low <= m_look;
        const bool isRight = (value ? m_oneLow : m_zeroLow).has(low);
        isTimingWrong = isTimingWrong || !isRight;
        bits = bits << 1 | std::uint32_t(value);
        const bool isRefused = ++i == bitsOfBlock && value != isForAll(message, bits);
        results().mark(m_settings.line, std::min(bit.fall + m_look, line.sampleCount() - 1),
                       !isRight    ? MarkerType::ErrorDot
                       : isRefused ? MarkerType::X
                                   : MarkerType::Dot);
        if (i == bitsOfBlock) {
            break;
        }
        if (!m_bitLength.has(bit.next - bit.fall)) {
            results().mark(m_settings.line, bit.rise, MarkerType::ErrorX);
            return !bit.hasNext ? BlockEnd::CaptureEnd : BlockEnd::Cut;
        }
    }
    addBlock(message, bits, first, std::max(bit.rise, std::min(bit.fall + m_usualBit, bit.next)) - 1, isTimingWrong);
    return BlockEnd::Good;
}

/// @param bits  a whole block
bool CecAnalyzer::isForAll(const Message &message, std::uint32_t bits)
{
    return message.count == 0 ? (bits >> 2 & everybody) == everybody : (message.flags & CecResults::Broadcast) != 0;
}

/// The last bit is the acknowledgement: a follower pulls it low; of a broadcast it pulls it low to refuse (6.1.2).
void CecAnalyzer::addBlock(Message &message, std::uint32_t bits, Sample first, Sample last, bool isTimingWrong)
{
    const auto data = std::uint8_t(bits >> 2);
    const bool isBroadcast = isForAll(message, bits);
    message.flags |= isBroadcast ? unsigned(CecResults::Broadcast) : 0U;
    const bool isAcknowledged = ((bits & 1U) != 0) == isBroadcast;
    unsigned flags = message.flags;
    message.isLast = (bits >> 1 & 1U) != 0;
    flags |= message.isLast ? unsigned(CecResults::Last) : 0U;
    flags |= isAcknowledged ? unsigned(CecResults::Acknowledged) : 0U;
    flags |= isTimingWrong ? unsigned(CecResults::Timing) : 0U;
    results().add({.firstSample = first,
                   .lastSample = last,
                   .data = data,
                   .kind = CecResults::Block,
                   .line = std::uint8_t(std::min<std::size_t>(message.count, CecResults::Operand)),
                   .flags = std::uint16_t(flags)});
    message.acknowledged |= std::uint64_t(isAcknowledged) << message.count;
    message.blocks[message.count++] = data;
    message.last = last;
}

/// A sender ends its message behind the block with EOM, or behind one that is not acknowledged (CEC 6.1.1).
void CecAnalyzer::addMessage(const Message &message, BlockEnd end)
{
    const bool isAcknowledged = message.count > 0 && (message.acknowledged >> (message.count - 1) & 1U) != 0;
    const bool isWhole = end == BlockEnd::Good && (message.isLast || !isAcknowledged);
    unsigned flags = message.flags;
    flags |= message.isLast ? unsigned(CecResults::Last) : 0U;
    flags |= isAcknowledged ? unsigned(CecResults::Acknowledged) : 0U;
    flags |= end == BlockEnd::LineError ? unsigned(CecResults::LineError) : 0U;
    results().fill(message.place, {.firstSample = message.first,
                                   .lastSample = message.last,
                                   .data = results().keep(std::span(message.blocks.data(), message.count)),
                                   .data2 = message.acknowledged,
                                   .kind = std::uint8_t(isWhole ? CecResults::Message : CecResults::Cut),
                                   .flags = std::uint16_t(flags)});
}
