#include "UsbReceiver.h"

#include <algorithm>

using lux::Sample;

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
      m_fullSpeed(fullSpeed)
{}

/// Behind a PRE, and in the answer to it, a full-speed bus has packets of low speed (8.6.5): the first K and J of their
/// sync pattern are eight times as long.
bool UsbReceiver::isLowSpeedPacket(const UsbLine &line) const
{
    constexpr std::int64_t least = 4;
    if (!m_fullSpeed) {
        return true;
    }
    UsbLine ahead(line);
    for (int i = 0; i < 2; ++i) {
        const Sample begin = ahead.begin();
        if (!ahead.hasChange() || ahead.peekChange() - begin < samplesOf(least)) {
            return false;
        }
        ahead.next();
        if (ahead.state() == UsbState::Se0 || ahead.state() == UsbState::Se1) {
            return false;
        }
    }
    return true;
}

void UsbReceiver::receive(UsbLine &line, UsbPacket &packet) const
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
    // A change seen at sample p was half a sample earlier on the average; a time within a sample is seen in it.
    Time look = (line.begin() << fractionBits) - (Time(1) << (fractionBits - 1)) + bit / 2;
    for (;;) {
        bool mayJump = packet.bits > 0;
        while ((line.peekChange() << fractionBits) <= look && line.hasChange()) {
            line.next();
            const bool isData = line.state() == UsbState::J || line.state() == UsbState::K;
            if (mayJump && isData && line.state() != before) {
                const Time at = (line.begin() << fractionBits) - (Time(1) << (fractionBits - 1));
                look += std::clamp(at - (look - bit / 2), -mostJump, mostJump);
                mayJump = false;
            }
        }
        if ((look >> fractionBits) >= line.sampleCount()) {
            packet.end = UsbEnd::CaptureEnd;
            packet.last = line.sampleCount() - 1;
            return;
        }
        UsbState state = line.state();
        if (state == UsbState::Se0 && endsHere(line)) {
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

bool UsbReceiver::endsHere(UsbLine &line) const
{
    return !line.hasChange() || isEndOfPacket(line.peekChange() - line.begin());
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
