#include "UsbReceiver.h"

#include <algorithm>

using lux::Sample;

namespace {

constexpr std::int64_t enoughSamples = 3; ///< a bit

} // namespace

/// Undoes NRZI and bit stuffing (7.1.8, 7.1.9), and gathers bytes, their lowest bit first.
class UsbReceiver::Bits {
public:
    explicit Bits(UsbPacket &packet) : m_packet(packet) {}

    /// @return false when the packet ends with this bit
    bool add(bool isSame)
    {
        if (m_ones == mostOnes) {
            m_ones = 0;
            if (isSame) {
                m_packet.end = UsbEnd::StuffError;
                return false;
            }
            return true;
        }
        m_ones = isSame ? m_ones + 1 : 0;
        m_byte = std::uint8_t(m_byte >> 1 | (isSame ? 0x80U : 0U));
        if (++m_packet.bits % 8 == 0 && !takeByte()) {
            return false;
        }
        return true;
    }

private:
    static constexpr unsigned mostOnes = 6;

    bool takeByte()
    {
        const std::size_t number = m_packet.bits / 8 - 1;
        if (number == 0) {
            m_packet.sync = m_byte;
            return true;
        }
        if (number > UsbPacket::mostBytes) {
            m_packet.bits -= 8;
            m_packet.end = UsbEnd::Babble;
            return false;
        }
        m_packet.bytes[number - 1] = m_byte;
        if (number == 1 && m_byte == usb::preamble && m_packet.sync == usb::sync && !m_packet.isLowSpeed) {
            m_packet.end = UsbEnd::Preamble;
            return false;
        }
        return true;
    }

    UsbPacket &m_packet;
    unsigned m_ones = 0;
    std::uint8_t m_byte = 0;
};

UsbReceiver::UsbReceiver(std::int64_t sampleRate, bool fullSpeed)
    : m_bit((sampleRate << fractionBits) / (fullSpeed ? fullRate : lowRate)),
      m_lowBit((sampleRate << fractionBits) / lowRate),
      m_fullSpeed(fullSpeed),
      m_hasFewSamples(m_bit < enoughSamples << fractionBits)
{}

/// Behind a PRE, and in the answer to it, a full-speed bus has packets of low speed (8.6.5): the first K and J of their
/// sync pattern are eight times as long. Both lines may change at different times, as far apart as half such a bit.
bool UsbReceiver::isLowSpeedPacket(const UsbLine &line) const
{
    constexpr std::int64_t halfLowBit = 4;
    const Sample least = samplesOf(halfLowBit);
    if (!m_fullSpeed) {
        return true;
    }
    if (line.peekChange() - line.begin() < least) {
        return false; // mostly that tells already, without a copy of the line
    }
    UsbLine ahead(line);
    const auto passSkew = [&ahead, least] {
        while ((ahead.state() == UsbState::Se0 || ahead.state() == UsbState::Se1) && ahead.hasChange() &&
               ahead.peekChange() - ahead.begin() < least) {
            ahead.next();
        }
    };
    for (const UsbState wanted : {UsbState::K, UsbState::J}) {
        if (ahead.state() != wanted || !ahead.hasChange() || ahead.peekChange() - ahead.begin() < least) {
            return false;
        }
        ahead.next();
        passSkew();
    }
    return ahead.state() == UsbState::K;
}

void UsbReceiver::receive(UsbLine &line, UsbPacket &packet) const
{
    if (!m_hasFewSamples) {
        read(line, packet, Plain());
        return;
    }
    const UsbLine start(line);
    const Time bias = m_bit / 8;
    constexpr Time slack = Time(3) << (fractionBits - 3);
    for (const Way &way : {Way{}, Way{-bias, slack}, Way{bias, slack}, Way{-bias, 0}, Way{bias, 0}, Way{0, slack}}) {
        line = start;
        read(line, packet, way);
        if (packet.isRight()) {
            return;
        }
    }
    line = start;
    read(line, packet, Way{});
}

template<class HowTaken>
void UsbReceiver::read(UsbLine &line, UsbPacket &packet, const HowTaken &way) const
{
    packet.first = line.begin();
    packet.end = UsbEnd::EndOfPacket;
    packet.hadSe1 = false;
    packet.bits = 0;
    packet.sync = 0;
    packet.isLowSpeed = isLowSpeedPacket(line);
    const Time bit = packet.isLowSpeed ? m_lowBit : m_bit;
    const Time mostJump = bit / 4;
    Bits bits(packet);
    UsbState before = UsbState::J;
    // A change seen at sample p was half a sample earlier on the average, each of them: that needs no correction.
    Time look = (line.begin() << fractionBits) + bit / 2;
    for (;;) {
        bool mayJump = packet.bits > 0;
        while ((line.peekChange() << fractionBits) + way.bias < look && line.hasChange()) {
            line.next();
            const bool isData = line.state() == UsbState::J || line.state() == UsbState::K;
            if (mayJump && isData && line.state() != before) {
                const Time at = line.begin() << fractionBits;
                const Time error = at - (look - bit / 2);
                const Time jump = error - std::clamp(error, -way.slack, way.slack);
                look += std::clamp(jump, -mostJump, mostJump);
                mayJump = false;
            }
        }
        if ((look >> fractionBits) >= line.sampleCount()) {
            packet.end = UsbEnd::CaptureEnd;
            packet.last = line.sampleCount() - 1;
            return;
        }
        UsbState state = line.state();
        if (state == UsbState::Se0 && endsHere(line, bit)) {
            endOfPacket(line, packet);
            return;
        }
        if (state == UsbState::Se0 || state == UsbState::Se1) {
            packet.hadSe1 = packet.hadSe1 || state == UsbState::Se1;
            state = before;
        }
        if (!bits.add(state == before)) {
            packet.last = std::min((look + bit / 2) >> fractionBits, line.sampleCount()) - 1;
            return;
        }
        before = state;
        look += bit;
    }
}

bool UsbReceiver::endsHere(const UsbLine &line, Time bit)
{
    return !line.hasChange() || isLongerThanSkew(line.peekChange() - line.begin(), bit);
}

/// Two bits of SE0, and a J (7.1.13.2). A longer SE0 is a reset behind a packet, which is not taken here.
void UsbReceiver::endOfPacket(UsbLine &line, UsbPacket &packet) const
{
    constexpr std::int64_t mostBits = 4;
    const Time bit = packet.isLowSpeed ? m_lowBit : m_bit;
    if (!line.hasChange() && line.sampleCount() - line.begin() < (bit >> fractionBits)) {
        packet.end = UsbEnd::CaptureEnd; // not known to be one
    }
    const Sample most = line.begin() + ((mostBits * bit) >> fractionBits);
    packet.last = std::min(line.peekChange(), most) - 1;
    if (line.hasChange() && line.peekChange() <= most) {
        line.next();
    }
}
