#include "MidiParser.h"

int MidiParser::dataBytesOf(std::uint8_t status)
{
    switch (status >> 4) {
    case 0xc:
    case 0xd:
        return 1;
    case 0xf:
        break;
    default:
        return 2;
    }
    switch (status) {
    case 0xf1: // time code quarter frame
    case 0xf3: // song select
        return 1;
    case 0xf2: // song position
        return 2;
    case 0xf6: // tune request
        return 0;
    default:
        return -1;
    }
}

bool MidiParser::isSoundExclusive(std::span<const std::uint8_t> bytes)
{
    constexpr std::size_t shortest = 3;        // F0, one byte, F7
    constexpr std::size_t shortestOfThree = 5; // F0, 00 and two bytes, F7
    return bytes.size() >= shortest && bytes.back() == endOfExclusive &&
           (bytes[1] != 0 || bytes.size() >= shortestOfThree);
}

bool MidiParser::interrupts(std::uint8_t byte) const
{
    if (!isPending() || !isStatus(byte)) {
        return false;
    }
    return byte != endOfExclusive || (m_pending.status != systemExclusive && !m_pending.isStray);
}

MidiParser::Event MidiParser::take(std::uint8_t byte)
{
    if (isStatus(byte)) {
        if (byte == endOfExclusive && isPending()) {
            m_pending.bytes.push_back(byte);
            return Event::Complete;
        }
        const bool isChannelMessage = byte < systemExclusive;
        m_running = isChannelMessage ? byte : std::uint8_t(0);
        begin(byte, false, byte != systemExclusive && dataBytesOf(byte) < 0);
        m_pending.bytes.push_back(byte);
    } else {
        if (!isPending()) {
            begin(m_running, m_running != 0, m_running == 0);
        }
        m_pending.bytes.push_back(byte);
    }
    if (m_pending.isStray || m_pending.status == systemExclusive) {
        return Event::None;
    }
    const std::size_t own = m_pending.isRunning ? 0 : 1;
    const bool isWhole = m_pending.bytes.size() == own + std::size_t(dataBytesOf(m_pending.status));
    return isWhole ? Event::Complete : Event::None;
}

void MidiParser::begin(std::uint8_t status, bool isRunning, bool isStray)
{
    m_pending.bytes.clear();
    m_pending.status = status;
    m_pending.isRunning = isRunning;
    m_pending.isStray = isStray;
}
