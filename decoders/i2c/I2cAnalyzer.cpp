#include "I2cAnalyzer.h"

#include "common/Duration.h"
#include "common/FilteredLine.h"

#include <algorithm>

using lux::BusEvent;
using lux::Sample;

LUX_PLUGIN(I2cAnalyzer)

namespace {

constexpr unsigned bitsOfByte = 8;
/// The clock is held low where it is low so many times longer than elsewhere in the byte.
constexpr Sample stretchFactor = 4;
/// The bus is idle, and a stop is missing, where it stays high for so many bits.
constexpr Sample idleBits = 16;

} // namespace

/// UM10204, 3.1: start and stop conditions, bytes of eight bits, highest first, and an acknowledgement.
void I2cAnalyzer::decode()
{
    m_byte = {};
    m_message = {};
    const Sample spike = lux::samplesIn(m_settings.glitchFilter.value(), sampleRate());
    if (spike > 1) {
        decodeBus(lux::FilteredLine(reader(m_settings.scl), spike), lux::FilteredLine(reader(m_settings.sda), spike));
    } else {
        decodeBus(reader(m_settings.scl), reader(m_settings.sda));
    }
}

template<class Line>
void I2cAnalyzer::decodeBus(const Line &scl, const Line &sda)
{
    lux::StartStopBus<Line> bus(scl, sda);
    BusEvent event;
    while (bus.next(event)) {
        if (event.kind == BusEvent::Kind::Bit) {
            takeBit(event, bus.lowTime());
        } else {
            takeCondition(event, bus.rise());
        }
    }
}

void I2cAnalyzer::takeBit(const BusEvent &event, Sample lowTime)
{
    if (!m_message.isOpen) {
        return; // the capture begins within a message, or somebody clocks a free bus
    }
    if (m_byte.count == 0) {
        m_byte = {.first = event.at, .shortestLow = lowTime, .longestLow = lowTime};
    }
    m_byte.shortestLow = std::min(m_byte.shortestLow, lowTime);
    m_byte.longestLow = std::max(m_byte.longestLow, lowTime);
    results().mark(m_settings.scl, event.at, MarkerType::UpArrow);
    if (m_byte.count == bitsOfByte) {
        takeAcknowledge(event.bit, event.at, event.end - 1);
        return;
    }
    m_byte.bits = m_byte.bits << 1 | std::uint32_t(event.bit);
    ++m_byte.count;
}

void I2cAnalyzer::takeCondition(const BusEvent &event, Sample sclRise)
{
    const bool isStart = event.kind == BusEvent::Kind::Start;
    if (m_byte.count == bitsOfByte) {
        takeAcknowledge(event.bit, sclRise, event.at - 1); // some devices need no further clock for the condition
    } else if (m_byte.count > 0) {
        cutByte(event.at);
    }
    const bool isRestart = isStart && m_message.isOpen;
    const bool wasIdle = isRestart && m_message.hasAddress && event.at - sclRise > idleBits * m_message.bitTime;
    if (wasIdle) {
        results().mark(m_settings.sda, event.at, MarkerType::ErrorX);
    }
    results().mark(m_settings.sda, event.at, isStart ? MarkerType::Start : MarkerType::Stop);
    if (!isStart && !m_message.isOpen) {
        return; // the lines of a free bus are let go
    }
    results().add({.firstSample = event.at,
                   .lastSample = event.at,
                   .kind = std::uint8_t(!isStart    ? I2cResults::Stop
                                        : isRestart ? I2cResults::Restart
                                                    : I2cResults::Start),
                   .flags = std::uint16_t(wasIdle ? I2cResults::LostStop : 0)});
    if (!isRestart) {
        m_message.tenBitAddress.reset();
    }
    m_message.isOpen = isStart;
    m_message.hasAddress = false;
    m_message.tenBitFollows = false;
}

/// The ninth clock: the receiver pulls the line low for ACK.
void I2cAnalyzer::takeAcknowledge(bool bit, Sample at, Sample last)
{
    results().mark(m_settings.sda, at, bit ? MarkerType::X : MarkerType::Dot);
    m_message.bitTime = (at - m_byte.first) / bitsOfByte;
    addByte(!bit, last);
    m_byte = {};
}

void I2cAnalyzer::addByte(bool acknowledge, Sample last)
{
    FrameData frame{.firstSample = m_byte.first, .lastSample = last, .data = m_byte.bits, .kind = I2cResults::Data};
    unsigned flags = acknowledge ? 0U : unsigned(I2cResults::Nack);
    if (!m_message.hasAddress) {
        frame.kind = I2cResults::Address;
        m_message.direction = (m_byte.bits & 1U) != 0 ? I2cResults::Read : 0;
        m_message.tenBitFollows = m_byte.bits >> 3 == I2cResults::tenBitPrefix && m_message.direction == 0;
        m_message.tenBitHigh = m_byte.bits >> 1 & 3U;
        m_message.hasAddress = true;
        m_message.isGeneralCall = m_byte.bits == 0;
        if (isReadOfTenBits()) {
            flags |= I2cResults::TenBit;
            frame.data2 = *m_message.tenBitAddress;
        }
    } else if (m_message.tenBitFollows) {
        flags |= I2cResults::TenBit;
        frame.data2 = m_message.tenBitHigh << bitsOfByte | m_byte.bits;
        m_message.tenBitAddress = frame.data2;
        m_message.tenBitFollows = false;
    } else if (m_message.isGeneralCall) {
        flags |= I2cResults::GeneralCall;
        m_message.isGeneralCall = false;
    }
    flags |= m_message.direction;
    if (m_byte.longestLow > stretchFactor * m_byte.shortestLow) {
        flags |= I2cResults::Stretched;
        frame.extra = std::uint32_t(std::min<Sample>(m_byte.longestLow, UINT32_MAX));
    }
    frame.flags = std::uint16_t(flags);
    results().add(frame);
}

/// A device with a 10-bit address is read behind a repeated start with the first part of its address alone, and knows
/// that it was addressed before.
bool I2cAnalyzer::isReadOfTenBits() const
{
    return m_byte.bits >> 3 == I2cResults::tenBitPrefix && m_message.direction != 0 && m_message.tenBitAddress &&
           *m_message.tenBitAddress >> bitsOfByte == m_message.tenBitHigh;
}

/// A condition ends a byte that is not complete. The bit at whose clock it comes was none: a condition right behind an
/// acknowledgement cuts nothing.
void I2cAnalyzer::cutByte(Sample condition)
{
    results().mark(m_settings.sda, condition, MarkerType::ErrorX);
    results().add({.firstSample = m_byte.first,
                   .lastSample = condition - 1,
                   .data = m_byte.bits,
                   .kind = I2cResults::Cut,
                   .extra = m_byte.count});
    m_byte = {};
}
