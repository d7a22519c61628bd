#include "SwdAnalyzer.h"

#include <bit>

using lux::Sample;

LUX_PLUGIN(SwdAnalyzer)

namespace {

// ARM IHI 0031 (ADIv5.2), B4.
constexpr unsigned bitsOfRequest = 8;
constexpr unsigned bitsOfAck = 3;
constexpr unsigned bitsOfData = 32;
constexpr std::int64_t onesOfReset = 50;
/// Clocks at rest before a request that ends a stretch that nobody understands; more before one that is refused.
constexpr std::int64_t idleBits = 2;
constexpr std::int64_t idleBitsOfRefused = 8;
/// A capture begins at rest where the first clock comes later than so many clocks.
constexpr std::int64_t clocksOfRest = 8;
constexpr std::uint64_t runDetect = 1; ///< ORUNDETECT of CTRL/STAT

SwdAck ackOf(std::uint64_t bits)
{
    switch (bits) {
    case 1:
        return SwdAck::Ok;
    case 2:
        return SwdAck::Wait;
    case 4:
        return SwdAck::Fault;
    case 7:
        return SwdAck::NoReply;
    default:
        return SwdAck::Error;
    }
}

} // namespace

void SwdAnalyzer::decode()
{
    m_select = {};
    m_turn = 1;
    m_alwaysHasData = false;
    m_isLost = true; // a capture may begin anywhere
    m_isAway = false;
    m_onesBefore = 0;
    SwdBits bits(reader(m_settings.swclk), reader(m_settings.swdio));
    m_zeros = beginsAtRest(bits) ? idleBitsOfRefused : 0;
    while (bits.left() > 0) {
        if (!bits.peek()) {
            bits.next();
            ++m_zeros;
            m_onesBefore = 0;
            continue;
        }
        const bool mayBegin = !m_isAway && m_onesBefore == 0;
        if (!mayBegin || !takeTransfer(bits)) {
            readOnes(bits);
        }
    }
}

/// @return false, with the bits where they were, when they begin no request that can be believed
bool SwdAnalyzer::takeTransfer(SwdBits &bits)
{
    Request request;
    if (!peekRequest(bits, request) || (m_isLost && (!request.hasParity || !isSound(bits, request)))) {
        return false;
    }
    m_zeros = 0;
    bits.skip(bitsOfRequest);
    readTransfer(bits, request);
    return true;
}

bool SwdAnalyzer::beginsAtRest(SwdBits bits)
{
    if (bits.left() < 2) {
        return false;
    }
    const Sample first = bits.next().at;
    return first > clocksOfRest * (bits.next().at - first);
}

/// B4.2.1: start, APnDP, RnW, A[2:3], parity, stop, park.
bool SwdAnalyzer::peekRequest(SwdBits &bits, Request &request)
{
    if (bits.left() < bitsOfRequest) {
        return false;
    }
    const auto word = unsigned(bits.peek(bitsOfRequest));
    constexpr unsigned frameBits = 0xc1; // start, stop and park
    constexpr unsigned frameLevels = 0x81;
    if ((word & frameBits) != frameLevels) {
        return false;
    }
    request.first = bits.peekAt(0);
    request.last = bits.peekAt(bitsOfRequest - 1);
    request.isAp = (word & 0x02U) != 0;
    request.isRead = (word & 0x04U) != 0;
    request.address = word >> 1 & 0x0cU;
    request.hasParity = std::popcount(word & 0x3eU) % 2 == 0;
    return true;
}

/// Whether what stands behind the request at the next bit is an answer, with data of right parity behind OK, and then
/// something that leads on: only then does it end a stretch that nobody understands. With few idle bits before the
/// request, another one that is answered must follow, behind WAIT the same one once more (B4.2.3).
bool SwdAnalyzer::isSound(SwdBits &bits, const Request &request) const
{
    if (!request.hasParity) {
        return false;
    }
    // As far ahead as can be looked, so that the copy does not read the same bits again.
    const std::uint64_t ahead = bits.peek(SwdBits::mostPeeked - 1);
    const SwdAck ack = ackOf(ahead >> (bitsOfRequest + m_turn) & ((1U << bitsOfAck) - 1));
    if (ack == SwdAck::NoReply || ack == SwdAck::Error) {
        return false;
    }
    SwdBits behind = bits;
    const Sequel answer = answerTo(behind, request, m_turn);
    if (answer == Sequel::Refused && m_zeros < idleBitsOfRefused) {
        behind.skip(m_turn);
        skipRest(behind);
        return behind.peek(bitsOfRequest) == bits.peek(bitsOfRequest) && sequelOf(behind, 0, m_turn) >= Sequel::Refused;
    }
    if (answer == Sequel::Refused) {
        return sequelOf(behind, m_turn, m_turn) != Sequel::None ||
               sequelOf(behind, m_turn + bitsOfData + 1, m_turn) != Sequel::None;
    }
    const Sequel enough = m_zeros < idleBits ? Sequel::Sound : Sequel::Possible;
    return answer == Sequel::Sound && sequelOf(behind, request.isRead ? m_turn : 0, m_turn) >= enough;
}

/// Ones that begin no request: a line reset, or a stretch that nobody understands. A sequence may follow.
void SwdAnalyzer::readOnes(SwdBits &bits)
{
    const std::int64_t before = m_onesBefore;
    std::int64_t count = 0;
    Sample first = 0;
    Sample last = 0;
    m_zeros = 0;
    m_onesBefore = 0;
    m_isLost = true;
    while (bits.left() > 0 && bits.peek() && (count == 0 || m_isAway || !isSoundRequest(bits, last))) {
        last = bits.next().at;
        first = count == 0 ? last : first;
        ++count;
    }
    if (before + count >= onesOfReset) {
        results().add({.firstSample = first, .lastSample = last, .kind = SwdResults::Reset});
        m_isLost = false;
        m_select.dpBank = 0;
        m_turn = 1;
    }
    const SwdSequence sequence = sequenceAt(bits, before + count);
    if (sequence.target == SwdTarget::None) {
        return;
    }
    first = bits.next().at;
    bits.skip(sequence.bits - 2);
    last = bits.next().at;
    m_isAway = sequence.target != SwdTarget::Swd;
    results().add({.firstSample = first,
                   .lastSample = last,
                   .kind = m_isAway ? SwdResults::Leave : SwdResults::Switch,
                   .extra = unsigned(sequence.target)});
    m_onesBefore = sequence.onesAtEnd;
}

/// Whether a sound request stands behind a one; then it is taken next. A rest without clocks is one as by idle bits.
/// @param last  the bit before
bool SwdAnalyzer::isSoundRequest(SwdBits &bits, Sample last)
{
    Request request;
    if (!peekRequest(bits, request)) {
        return false;
    }
    const bool isBehindPause = request.first - last > clocksOfRest * (bits.peekAt(1) - request.first);
    m_zeros = isBehindPause ? idleBitsOfRefused : 0;
    const bool isFound = isSound(bits, request);
    m_zeros = isFound ? m_zeros : 0;
    return isFound;
}

/// B4.2.2 to B4.2.6: after the turn-around the answer, after OK the data.
void SwdAnalyzer::readTransfer(SwdBits &bits, const Request &request)
{
    m_isLost = false;
    if (!request.hasParity) {
        results().mark(m_settings.swdio, request.last, MarkerType::ErrorX);
        results().add(frameOf(request, SwdResults::Request));
        passOver(bits);
        return;
    }
    if (bits.left() < m_turn + bitsOfAck) {
        bits.skip(bits.left());
        return;
    }
    bits.skip(m_turn);
    FrameData frame = frameOf(request, SwdResults::Transfer);
    const SwdAck ack = ackOf(bits.number(bitsOfAck, frame.lastSample));
    frame.line = std::uint8_t(ack);
    // Behind a line reset TARGETSEL selects one of several targets; none of them answers (B4.3.4).
    const bool isSelection = !request.isAp && !request.isRead && request.address == 0xc && ack == SwdAck::NoReply;
    if (ack != SwdAck::Ok && !isSelection) {
        results().mark(m_settings.swdio, frame.lastSample, ack == SwdAck::Wait ? MarkerType::X : MarkerType::ErrorX);
        results().add(frame);
        passOver(bits);
        return;
    }
    if (!request.isRead) {
        bits.skip(m_turn);
    }
    if (!readData(bits, frame)) {
        return;
    }
    results().mark(m_settings.swdio, request.first, MarkerType::Start);
    results().add(frame);
    if (request.isRead) {
        bits.skip(m_turn);
    } else if ((frame.flags & SwdResults::WrongParity) == 0) { // else the target does without (B4.2.5)
        takeWrite(bits, request, std::uint32_t(frame.data));
    }
}

/// B4.2.6: 32 bits, the lowest first, and their even parity. @return false when the capture's end cuts them
bool SwdAnalyzer::readData(SwdBits &bits, FrameData &frame)
{
    if (bits.left() < bitsOfData + 1) {
        bits.skip(bits.left());
        return false;
    }
    frame.data = bits.number(bitsOfData, frame.lastSample);
    const SwdBits::Bit parity = bits.next();
    frame.lastSample = parity.at;
    frame.flags |= SwdResults::HasData;
    if ((std::popcount(frame.data) % 2 != 0) != parity.value) {
        frame.flags |= SwdResults::WrongParity;
        results().mark(m_settings.swdio, parity.at, MarkerType::ErrorX);
    }
    return true;
}

/// What a write changes in how the rest is read. @param bits  behind it
void SwdAnalyzer::takeWrite(const SwdBits &bits, const Request &request, std::uint32_t value)
{
    if (request.isAp) {
        return;
    }
    if (request.address == 0x8) {
        m_select = {.dpBank = std::uint8_t(value & 0xfU),
                    .apBank = std::uint8_t(value >> 4 & 0xfU),
                    .ap = std::uint8_t(value >> 24),
                    .isKnown = true};
    } else if (request.address == 0x4 && m_select.dpBank == 0) {
        m_alwaysHasData = (value & runDetect) != 0;
    } else if (request.address == 0x4 && m_select.dpBank == 1) {
        const unsigned turn = (value >> 8 & 3U) + 1; // DLCR, TURNROUND; not every port has that field
        m_turn = answeredBehind(bits, turn) > answeredBehind(bits, m_turn) ? turn : m_turn;
    }
}

/// Behind an answer other than OK comes a turn-around, or all of the data's clocks: always when overruns are detected
/// (B4.2.5), and at a host that sends whole transfers ahead. What follows tells which. Not each write of CTRL/STAT that
/// sets overrun detection does so in truth: a request behind the turn-around that is answered tells otherwise.
void SwdAnalyzer::passOver(SwdBits &bits)
{
    const std::int64_t brief = m_turn;
    const std::int64_t whole = m_turn + bitsOfData + 1;
    const Sequel behindBrief = sequelOf(bits, brief, m_turn);
    const bool isSure = behindBrief == Sequel::Sound || (behindBrief != Sequel::None && !m_alwaysHasData);
    const Sequel behindWhole = isSure ? Sequel::None : sequelOf(bits, whole, m_turn);
    const bool isAnswered = behindBrief >= Sequel::Refused && behindBrief >= behindWhole;
    const bool isBrief = behindBrief != Sequel::None && (!m_alwaysHasData || isAnswered);
    bits.skip(isBrief || behindWhole == Sequel::None ? brief : whole);
    m_isLost = behindBrief == Sequel::None && behindWhole == Sequel::None;
}

void SwdAnalyzer::skipRest(SwdBits &bits)
{
    while (bits.left() > 0 && !bits.peek()) {
        bits.next();
    }
}

/// What stands behind so many bits and the line at rest.
SwdAnalyzer::Sequel SwdAnalyzer::sequelOf(SwdBits bits, std::int64_t skipped, unsigned turn, bool mayLookOn)
{
    bits.skip(skipped);
    skipRest(bits);
    if (bits.left() < bitsOfRequest) {
        return Sequel::Possible;
    }
    Request request;
    if (peekRequest(bits, request) && request.hasParity) {
        const Sequel sequel = answerTo(bits, request, turn);
        const bool isRefusedTwice =
            sequel == Sequel::Refused && mayLookOn && sequelOf(bits, turn, turn, false) >= sequel;
        return isRefusedTwice ? Sequel::Sound : sequel;
    }
    std::int64_t ones = 0;
    while (bits.left() > 0 && ones < onesOfReset && bits.next().value) {
        ++ones;
    }
    return ones >= onesOfReset ? Sequel::Possible : Sequel::None;
}

/// How many requests in a row, up to a few, are answered when a turn-around has so many clocks.
unsigned SwdAnalyzer::answeredBehind(SwdBits bits, unsigned turn)
{
    constexpr unsigned enough = 4;
    for (unsigned count = 0; count < enough; ++count) {
        skipRest(bits);
        Request request;
        if (bits.left() < bitsOfRequest) {
            return enough; // the capture's end
        }
        if (!peekRequest(bits, request) || !request.hasParity) {
            return count;
        }
        const Sequel sequel = answerTo(bits, request, turn);
        if (sequel < Sequel::Refused) {
            return count;
        }
        bits.skip(request.isRead || sequel == Sequel::Refused ? turn : 0);
    }
    return enough;
}

/// @param bits  from the request on; goes behind the answer, and behind the data that follows it
SwdAnalyzer::Sequel SwdAnalyzer::answerTo(SwdBits &bits, const Request &request, unsigned turn)
{
    if (bits.left() < bitsOfRequest + turn + bitsOfAck) {
        return Sequel::Possible;
    }
    bits.skip(bitsOfRequest + turn);
    Sample last = 0;
    const SwdAck ack = ackOf(bits.number(bitsOfAck, last));
    if (ack == SwdAck::Wait || ack == SwdAck::Fault) {
        return Sequel::Refused;
    }
    if (ack != SwdAck::Ok || bits.left() < turn + bitsOfData + 1) {
        return Sequel::Possible;
    }
    bits.skip(request.isRead ? 0 : turn);
    const std::uint64_t data = bits.number(bitsOfData, last);
    const bool parity = bits.next().value;
    return (std::popcount(data) % 2 != 0) == parity ? Sequel::Sound : Sequel::Possible;
}

FrameData SwdAnalyzer::frameOf(const Request &request, SwdResults::Kind kind) const
{
    const unsigned flags = unsigned(request.isAp) * SwdResults::Ap | unsigned(request.isRead) * SwdResults::Read |
                           unsigned(m_select.isKnown) * SwdResults::SelectKnown;
    return {.firstSample = request.first,
            .lastSample = request.last,
            .kind = kind,
            .flags = std::uint16_t(flags),
            .extra = SwdResults::packed(request.address, m_select)};
}
