#include "CanReceiver.h"

#include <algorithm>
#include <cmath>

using namespace can;

void CanReceiver::receive()
{
    const bool isWhole =
        startOfFrame() && arbitration() && control() && data() && check() && crcDelimiter() && acknowledgement();
    if (m_frame.isWhole && !m_frame.acknowledged) {
        m_looks[m_slot].isWrong = true;
    }
    if (isWhole) {
        endOfFrame();
    } else {
        m_end = m_line.endOfBit();
    }
}

// ---- bits -----------------------------------------------------------------------------------------------------------

bool CanReceiver::look(bool &recessive, bool isStuff)
{
    if (!m_line.next(recessive)) {
        return fail(CanFault::CaptureEnd);
    }
    m_looks[m_lookCount++] = {m_line.lastLook(), isStuff, false};
    return true;
}

/// The bit behind five equal ones, which must be another (10.5).
bool CanReceiver::stuffBit()
{
    bool value = false;
    if (!look(value, true)) {
        return false;
    }
    if (value == m_level) {
        return fail(CanFault::Stuff);
    }
    m_stuffed.add(value);
    m_level = value;
    m_run = 1;
    ++m_stuffBits;
    return true;
}

bool CanReceiver::bit(bool &value)
{
    if (m_run == stuffAfter && !stuffBit()) {
        return false;
    }
    if (!look(value, false)) {
        return false;
    }
    if (!m_frame.fd) {
        m_plain.add(value);
    }
    if (!m_isClassic) {
        m_stuffed.add(value);
    }
    m_run = value == m_level ? m_run + 1 : 1;
    m_level = value;
    return true;
}

bool CanReceiver::bits(unsigned count, std::uint32_t &value)
{
    for (; count > 0; --count) {
        bool one = false;
        if (!bit(one)) {
            return false;
        }
        value = value << 1 | std::uint32_t(one);
    }
    return true;
}

// ---- fields, in the order of 10.4.2

bool CanReceiver::startOfFrame()
{
    bool recessive = false;
    return bit(recessive) && (!recessive || fail(CanFault::Glitch));
}

/// Eleven bits of identifier, RTR or SRR, IDE; in the extended format eighteen more and RTR (10.4.2.2).
bool CanReceiver::arbitration()
{
    if (!bits(11, m_frame.id) || !bit(m_frame.remote) || !bit(m_frame.extended)) {
        return false;
    }
    if (m_frame.extended && !(bits(18, m_frame.id) && bit(m_frame.remote))) {
        return false;
    }
    m_frame.hasId = true;
    return true;
}

/// FDF, then in the classic extended format r0 (10.4.2.3).
bool CanReceiver::control()
{
    if (!bit(m_frame.fd)) {
        return false;
    }
    if (m_frame.fd) {
        return controlOfFd();
    }
    m_isClassic = true;
    bool reserved = false;
    return (!m_frame.extended || bit(reserved)) && dataLength();
}

bool CanReceiver::controlOfFd()
{
    m_frame.remote = false; // the bit in its place is RRS, which says nothing
    bool reserved = false;
    if (!bit(reserved)) {
        return false;
    }
    if (reserved) {
        return fail(CanFault::ProtocolException);
    }
    if (!bit(m_frame.rateSwitch)) {
        return false;
    }
    if (m_frame.rateSwitch) {
        m_line.switchToData();
    }
    return bit(m_frame.errorPassive) && dataLength();
}

bool CanReceiver::dataLength()
{
    std::uint32_t code = 0;
    if (!bits(4, code)) {
        return false;
    }
    m_frame.dlc = std::uint8_t(code);
    m_frame.length = m_frame.remote ? std::uint8_t(0) : CanFrame::lengthOf(m_frame.dlc, m_frame.fd);
    return true;
}

bool CanReceiver::data()
{
    for (unsigned i = 0; i < m_frame.length; ++i) {
        std::uint32_t byte = 0;
        if (!bits(8, byte)) {
            return false;
        }
        m_frame.data[i] = std::uint8_t(byte);
    }
    return true;
}

bool CanReceiver::check()
{
    if (m_frame.fd) {
        return checkOfFd();
    }
    const std::uint32_t expected = m_plain.check<crc15>();
    if (!bits(crc15.width, m_frame.crc)) {
        return false;
    }
    m_frame.crcRight = m_frame.crc == expected;
    if (!m_frame.crcRight) {
        markLastWrong();
    }
    return m_run != stuffAfter || stuffBit(); // also behind the last bit of the check
}

/// The stuff count and the check, with a fixed stuff bit before each four bits (10.4.2.6, 10.5).
bool CanReceiver::checkOfFd()
{
    const std::uint32_t expectedCount = stuffCountField(m_stuffBits);
    std::uint32_t count = 0;
    unsigned sinceStuff = fixedStuffAfter;
    if (!fixedBits(stuffCountBits, sinceStuff, count)) {
        return false;
    }
    m_frame.stuffCountRight = count == expectedCount;
    if (!m_frame.stuffCountRight) {
        markLastWrong();
    }
    m_stuffed.add(count, stuffCountBits);
    const bool isShort = m_frame.length <= mostBytesOfCrc17;
    const std::uint32_t expected = isShort ? m_stuffed.check<crc17>() : m_stuffed.check<crc21>();
    if (!fixedBits(isShort ? crc17.width : crc21.width, sinceStuff, m_frame.crc)) {
        return false;
    }
    m_frame.crcRight = m_frame.crc == expected;
    if (!m_frame.crcRight) {
        markLastWrong();
    }
    return true;
}

bool CanReceiver::fixedStuffBit()
{
    bool value = false;
    if (!look(value, true)) {
        return false;
    }
    if (value == m_level) {
        return fail(CanFault::FixedStuff);
    }
    return true;
}

bool CanReceiver::fixedBits(unsigned count, unsigned &sinceStuff, std::uint32_t &value)
{
    for (; count > 0; --count) {
        if (sinceStuff == fixedStuffAfter) {
            if (!fixedStuffBit()) {
                return false;
            }
            sinceStuff = 0;
        }
        if (!look(m_level, false)) {
            return false;
        }
        value = value << 1 | std::uint32_t(m_level);
        ++sinceStuff;
    }
    return true;
}

bool CanReceiver::crcDelimiter()
{
    bool recessive = false;
    if (!look(recessive, false)) {
        return false;
    }
    if (!recessive) {
        return fail(CanFault::CrcDelimiter);
    }
    if (m_frame.rateSwitch) {
        m_line.switchToNominal();
    }
    m_isFitted = m_line.wantsFit() && m_frame.crcRight && !m_frame.rateSwitch;
    if (m_isFitted) {
        m_line.fit(fittedEnd());
    }
    return true;
}

/// All edges between SOF and the bit that was looked at last. They are the sender's, and as the check is right the
/// numbers of the bits are too.
template<typename Use>
void CanReceiver::eachEdge(Use &&use) const
{
    lux::ChannelReader edges(m_line.reader());
    edges.seek(m_begin);
    const std::span<const Look> all = looks();
    std::int64_t bit = 0;
    while (edges.peekEdge() <= all.back().at) {
        const lux::Sample edge = edges.nextEdge();
        while (all[std::size_t(bit)].at < edge) {
            ++bit;
        }
        use(Edge{edge, bit});
    }
}

/// Where the last bit ends by a least-squares line through the edges so far, over their bit numbers.
CanTime CanReceiver::fittedEnd() const
{
    std::int64_t count = 1; // SOF, at 0
    std::int64_t sumBit = 0;
    std::int64_t sumTime = 0;
    std::int64_t sumBitBit = 0;
    std::int64_t sumBitTime = 0;
    eachEdge([&](const Edge &edge) {
        const std::int64_t time = edge.at - m_begin;
        ++count;
        sumBit += edge.bit;
        sumTime += time;
        sumBitBit += edge.bit * edge.bit;
        sumBitTime += edge.bit * time;
    });
    const double slope = double(count * sumBitTime - sumBit * sumTime) / double(count * sumBitBit - sumBit * sumBit);
    const auto bits = std::int64_t(looks().size());
    const double behind = (double(sumTime) + slope * double(count * bits - sumBit)) / double(count);
    return (m_begin << CanTiming::fractionBits) + std::llround(std::ldexp(behind, CanTiming::fractionBits));
}

/// Where the last bit ends for a node that follows the sender's edges, by a quarter of a bit at most each time: those
/// to dominant, and as few samples make a bit those to recessive too, but that of a stuff bit behind the check.
CanTime CanReceiver::followedEnd() const
{
    const CanTime bitTime = m_line.bitTime();
    const CanTime most = bitTime / 4;
    CanTime begin = m_begin << CanTiming::fractionBits;
    std::int64_t bit = 0;
    const auto delimiter = std::int64_t(looks().size() - 1);
    bool toRecessive = false;
    eachEdge([&](const Edge &edge) {
        toRecessive = !toRecessive;
        if (toRecessive && edge.bit + 1 == delimiter && looks()[std::size_t(edge.bit)].isStuff) {
            return;
        }
        const CanTime expected = begin + (edge.bit - bit) * bitTime;
        const CanTime found = edge.at << CanTiming::fractionBits;
        begin = expected + std::clamp(found - expected, -most, most);
        bit = edge.bit;
    });
    return begin + (std::int64_t(looks().size()) - bit) * bitTime;
}

/// With few samples a bit the slot is looked at where it begins: what is dominant there was sent for this slot. The
/// bits behind are those of the node that sent it, also when it came later.
bool CanReceiver::acknowledgeSlot(bool &recessive)
{
    if (!m_isFitted) {
        return look(recessive, false);
    }
    // With two samples a bit an edge that is a sample late would be taken for one that is in time.
    constexpr CanTime coarse = CanTime(9) << (CanTiming::fractionBits - 2);
    const CanTime early = m_line.bitTime() <= coarse ? CanTime(3) << (CanTiming::fractionBits - 2) : 0;
    if (!m_line.nextOfOther(followedEnd() + m_line.bitTime() / 2 - early, recessive)) {
        return fail(CanFault::CaptureEnd);
    }
    m_looks[m_lookCount++] = {m_line.lastLook(), false, false};
    return true;
}

/// The slot and its delimiter. In CAN FD the slot may come a bit later, and be two bits long (10.4.2.7).
bool CanReceiver::acknowledgement()
{
    bool recessive = false;
    m_slot = m_lookCount;
    if (!acknowledgeSlot(recessive)) {
        return false;
    }
    m_frame.acknowledged = !recessive;
    m_frame.isWhole = true;
    m_end = m_line.endOfBit();
    if (!look(recessive, false)) {
        return false;
    }
    if (recessive) {
        return true;
    }
    if (!m_frame.fd) {
        return fail(CanFault::AckDelimiter);
    }
    const bool isLate = !m_frame.acknowledged;
    if (!look(recessive, false)) {
        return false;
    }
    if (!recessive && isLate && !look(recessive, false)) {
        return false;
    }
    m_frame.acknowledged = recessive || !isLate;
    return recessive || fail(CanFault::AckDelimiter);
}

/// Seven recessive bits (10.4.2.8). A receiver takes a dominant last one for an overload condition (10.4.6).
void CanReceiver::endOfFrame()
{
    m_end = m_line.endOfBit(endOfFrameBits);
    if (m_line.isRecessiveFor(endOfFrameBits - 1)) {
        return;
    }
    for (unsigned i = 1; i < endOfFrameBits; ++i) {
        bool recessive = false;
        if (!m_line.next(recessive)) {
            return; // nothing more is to be learned from these bits
        }
        if (!recessive) {
            m_end = m_line.endOfBit();
            fail(CanFault::EndOfFrame);
            return;
        }
    }
}
