#include "ModbusReceiver.h"

#include "common/Duration.h"

#include <numeric>

using lux::AsyncCharacter;
using lux::Sample;

namespace {

// Silence (Modbus over serial line V1.02, 2.5.1.1), in characters, and above 19200 bits/s as a time.
constexpr Sample shortHalves = 3;   ///< 1.5 characters
constexpr Sample longQuarters = 13; ///< 3.5 characters, less a quarter that the sender's clock and edges may take
constexpr std::int64_t longTime = 1625000; ///< ns: 1.75 ms, less as much
constexpr std::int64_t fastRate = 19200;

constexpr std::size_t leastRtu = 4;   ///< address, function, CRC
constexpr std::size_t mostRtu = 256;  ///< bytes (2.5.1)
constexpr std::size_t leastAscii = 3; ///< address, function, LRC
constexpr std::size_t mostAscii = 255;
constexpr std::int64_t asciiTimeout = 1000000000; ///< ns (2.5.2.1)

constexpr char asciiStart = ':';

int hexDigit(std::uint32_t character)
{
    if (character >= '0' && character <= '9') {
        return int(character - '0');
    }
    return character >= 'A' && character <= 'F' ? int(character - 'A') + 10 : -1;
}

} // namespace

ModbusReceiver::ModbusReceiver(const lux::ChannelReader &line, const lux::BitGrid &grid, const lux::AsyncFormat &format,
                               ModbusMode mode, std::int64_t sampleRate)
    : m_line(line, grid, format),
      m_mode(mode),
      m_sampleCount(line.sampleCount()),
      m_shortSilence(m_line.length() * shortHalves / 2),
      m_longSilence(grid.bitRate() > fastRate ? lux::samplesIn(longTime, sampleRate)
                                              : m_line.length() * longQuarters / 4),
      m_timeout(lux::samplesIn(asciiTimeout, sampleRate))
{}

bool ModbusReceiver::next(Received &received, const Watcher &watch)
{
    received = {};
    if (m_mode == ModbusMode::Ascii) {
        return nextAscii(received, watch);
    }
    if (!nextRtu(received, watch)) {
        return false;
    }
    const bool isTail = !m_hasFrame && received.first < m_longSilence && !received.isCheckRight;
    m_hasFrame = true;
    if (!isTail) {
        return true;
    }
    received = {}; // it began before the capture
    return nextRtu(received, watch);
}

/// The start that ended the frame before is the next one's first.
bool ModbusReceiver::findStart()
{
    m_hasStart = m_hasStart || m_line.findStart();
    return m_hasStart;
}

/// Reads the character whose start was found. @return false when it began before the capture, and this was no start bit
bool ModbusReceiver::read(AsyncCharacter &character)
{
    m_hasStart = false;
    character = m_line.read();
    if (character.stopMissing && !character.isBreak && character.first < m_line.length()) {
        m_line.forget();
        return false;
    }
    return true;
}

void ModbusReceiver::add(Received &received, const AsyncCharacter &character) const
{
    if (received.bytes.empty()) {
        received.first = character.first;
    }
    received.last = character.last;
    received.hasParityError = received.hasParityError || character.parityWrong;
    received.hasFramingError = received.hasFramingError || character.stopMissing;
}

// ---- RTU ------------------------------------------------------------------------------------------------------------

bool ModbusReceiver::nextRtu(Received &received, const Watcher &watch)
{
    m_crc.reset();
    while (received.bytes.size() < mostRtu) {
        if (!findStart()) {
            const bool isCut = m_sampleCount - received.last <= m_longSilence && m_crc.value() != 0;
            if (received.bytes.empty() || isCut) {
                return false;
            }
            break;
        }
        if (!received.bytes.empty() && endsBefore(m_line.start(), received)) {
            break;
        }
        AsyncCharacter character;
        if (!read(character)) {
            continue;
        }
        if (character.isBreak && character.last - character.first >= m_longSilence) {
            if (received.bytes.empty()) {
                continue;
            }
            break; // nobody drives the line: a silence as well
        }
        watch(m_line, character);
        add(received, character);
        received.bytes.push_back(std::uint8_t(character.value));
        m_crc.addByte(received.bytes.back());
    }
    received.isFrame = received.bytes.size() >= leastRtu;
    received.isCheckRight = received.isFrame && m_crc.value() == 0;
    return true;
}

/// By a silence of 3.5 characters; by one of 1.5 already where the frame is whole, for fast lines whose devices do not
/// wait for as long as 1.75 ms.
bool ModbusReceiver::endsBefore(Sample start, Received &received) const
{
    const Sample silence = start - received.last - 1;
    const bool isWhole = received.bytes.size() >= leastRtu && m_crc.value() == 0;
    // The last character before the capture's first silence may be read late, from an edge within it on.
    const bool mayBeTail = !m_hasFrame && received.first < m_longSilence;
    if (silence >= m_longSilence - (mayBeTail ? m_line.length() : 0) || (isWhole && silence > m_shortSilence)) {
        return true;
    }
    if (silence > m_shortSilence) {
        received.hasPause = true;
        received.pauseEnd = start;
    }
    return false;
}

// ---- ASCII ----------------------------------------------------------------------------------------------------------

bool ModbusReceiver::nextAscii(Received &received, const Watcher &watch)
{
    bool isOpen = m_hasColon;
    if (isOpen) {
        add(received, m_colon);
    }
    m_hasColon = false;
    m_digits = 0;
    m_hasReturn = false;
    for (;;) {
        if (!findStart()) {
            return false; // without its end it is cut
        }
        if (isOpen && m_line.start() - received.last > m_timeout) {
            return true;
        }
        AsyncCharacter character;
        if (!read(character)) {
            continue;
        }
        watch(m_line, character);
        if (isOpen && character.value == asciiStart) {
            m_hasColon = true;
            m_colon = character;
            return true;
        }
        if (!isOpen && character.value != asciiStart) {
            continue;
        }
        if (!isOpen) {
            isOpen = true;
            add(received, character);
            continue;
        }
        switch (takeAscii(received, character)) {
        case Step::Goes:
            break;
        case Step::Ends:
            received.isFrame = received.bytes.size() >= leastAscii && m_digits % 2 == 0;
            received.isCheckRight =
                received.isFrame && (std::accumulate(received.bytes.begin(), received.bytes.end(), 0U) & 0xffU) == 0;
            return true;
        case Step::Breaks:
            return true;
        }
    }
}

ModbusReceiver::Step ModbusReceiver::takeAscii(Received &received, const AsyncCharacter &character)
{
    const Sample first = received.first;
    add(received, character);
    received.first = first;
    if (m_hasReturn) {
        return character.value == '\n' ? Step::Ends : Step::Breaks;
    }
    if (character.value == '\r') {
        m_hasReturn = true;
        return Step::Goes;
    }
    const int digit = hexDigit(character.value);
    if (digit < 0 || received.bytes.size() > mostAscii) {
        return Step::Breaks;
    }
    if (m_digits++ % 2 == 0) {
        m_half = std::uint8_t(digit << 4);
    } else {
        received.bytes.push_back(std::uint8_t(m_half | digit));
    }
    return Step::Goes;
}
