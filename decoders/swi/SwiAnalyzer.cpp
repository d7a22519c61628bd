#include "SwiAnalyzer.h"

#include "SwiNames.h"
#include "common/BitGrid.h"
#include "common/Duration.h"
#include "common/FilteredLine.h"

#include <algorithm>
#include <string>

using lux::Sample;

LUX_PLUGIN(SwiAnalyzer)

namespace {

constexpr unsigned bitsOfByte = 8;
constexpr std::int64_t leastSamplesPerBit = 3;

// DS40002025A, 7.3.1 (single-wire AC parameters), in nanoseconds at 230400 bits/s, where a pulse takes 4.34 us.
constexpr std::int64_t usualPulse = 4340;
constexpr std::int64_t glitch = usualPulse / 2; ///< the shortest pulse is 4.1 us long
constexpr std::int64_t mostLow = 10000;         ///< tSTART, tZLO: 8.6 us at most, and some for slow edges
constexpr std::int64_t zeroWindow = 26000;      ///< between tSTART + tZHI, 17.2 us, and tBIT, 37 us
constexpr std::int64_t tokenTime = 39000;       ///< tBIT, typical
constexpr std::int64_t leastWake = 60000;       ///< tWLO
constexpr std::int64_t leastRest = 500000;      ///< tWHI: 2.5 ms, and 0.5 ms for later devices
constexpr std::int64_t mostAnswer = 250000;     ///< tTURNAROUND, 131 us, behind a bit of up to 78 us
// These are the device's own clock, at any rate.
constexpr std::int64_t timeout = 85000000; ///< tTIMEOUT, the longest

} // namespace

std::uint32_t SwiAnalyzer::NeededSampleRate()
{
    return std::uint32_t(leastSamplesPerBit * m_settings.bitRate.value());
}

/// DS40002025A, chapter 5: a low pulse begins each bit, and a 0 has a second one. The lowest bit comes first.
void SwiAnalyzer::decode()
{
    const std::int64_t rate = m_settings.bitRate;
    if (sampleRate() < leastSamplesPerBit * rate) {
        fail(lux::tooFewSamples(rate, leastSamplesPerBit));
    }
    setTimes();
    m_stage = Stage::Lost;
    m_count = 0;
    m_lastToken = 0;
    m_block.clear();
    const Sample shortest = lux::samplesIn(glitch * SwiSettings::usualRate / rate, sampleRate());
    if (shortest > 1) {
        decodeLine(lux::FilteredLine(reader(m_settings.line), shortest));
    } else {
        decodeLine(reader(m_settings.line));
    }
    if (sampleCount() - m_lastToken > m_timeout) {
        breakOff(m_lastToken + m_timeout, Stage::Flag); // as any later bit would
    }
}

void SwiAnalyzer::setTimes()
{
    const std::int64_t rate = m_settings.bitRate;
    const auto samples = [&](std::int64_t time) {
        return lux::samplesUpTo(time * SwiSettings::usualRate / rate, sampleRate());
    };
    m_mostLow = samples(mostLow);
    m_zeroWindow = samples(zeroWindow);
    m_tokenTime = samples(tokenTime);
    m_leastWake = lux::samplesIn(leastWake * SwiSettings::usualRate / rate, sampleRate());
    m_leastRest = lux::samplesIn(leastRest * SwiSettings::usualRate / rate, sampleRate());
    m_mostAnswer = samples(mostAnswer);
    m_timeout = lux::samplesUpTo(timeout, sampleRate());
}

template<class Line>
void SwiAnalyzer::decodeLine(Line line)
{
    if (!line.level() && line.hasEdge()) {
        line.nextEdge();
    }
    while (line.hasEdge()) {
        const Sample fall = line.nextEdge();
        if (fall - m_lastToken > m_timeout) {
            breakOff(fall, Stage::Flag);
        }
        if (!line.hasEdge()) {
            return;
        }
        const Sample rise = line.nextEdge();
        if (rise - fall >= m_leastWake && !line.hasEdgeBefore(rise + m_leastRest)) {
            breakOff(fall, Stage::Flag);
            results().add({.firstSample = fall, .lastSample = rise - 1, .kind = SwiResults::Wake});
            m_lastToken = fall;
            continue;
        }
        Token token;
        if (!readToken(line, fall, rise, token)) {
            results().mark(m_settings.line, fall, MarkerType::ErrorX);
            breakOff(fall, Stage::Lost);
            m_lastToken = fall;
        } else if (token.last < line.sampleCount()) {
            takeToken(token);
        }
    }
}

/// The line stands at the end of the first pulse. @return false where the pulses are those of no bit
/// @param token  its end is the capture's length where that is before its value is known
template<class Line>
bool SwiAnalyzer::readToken(Line &line, Sample fall, Sample rise, Token &token) const
{
    bool isRight = rise - fall <= m_mostLow;
    token = {.first = fall, .bit = true};
    if (line.hasEdgeBefore(fall + m_zeroWindow)) {
        const Sample second = line.nextEdge();
        if (!line.hasEdge()) {
            token.last = line.sampleCount();
            return true;
        }
        rise = line.nextEdge();
        isRight = isRight && rise - second <= m_mostLow;
        token.bit = false;
    } else if (fall + m_zeroWindow > line.sampleCount()) {
        token.last = line.sampleCount();
        return true;
    }
    token.last = std::max(rise, std::min({fall + m_tokenTime, line.peekEdge(), line.sampleCount()})) - 1;
    return isRight && !line.hasEdgeBefore(fall + m_zeroWindow); // no bit has three pulses
}

void SwiAnalyzer::takeToken(const Token &token)
{
    if (m_stage == Stage::AnswerCount && m_count == 0 && token.first - m_lastToken > m_mostAnswer) {
        m_stage = Stage::Flag; // the device does not answer, and the host asks again
    }
    m_lastToken = token.first;
    if (m_stage == Stage::Lost) {
        return;
    }
    if (m_count == 0) {
        m_first = token.first;
        m_value = 0;
    }
    results().mark(m_settings.line, token.first, token.bit ? MarkerType::One : MarkerType::Zero);
    m_value |= std::uint32_t(token.bit) << m_count;
    m_last = token.last;
    if (++m_count == bitsOfByte) {
        m_count = 0;
        takeByte();
    }
}

void SwiAnalyzer::takeByte()
{
    FrameData frame{.firstSample = m_first, .lastSample = m_last, .data = m_value, .kind = SwiResults::Byte};
    if (m_stage == Stage::Flag) {
        takeFlag(frame);
    } else {
        takeBlockByte(frame);
    }
}

void SwiAnalyzer::takeFlag(FrameData &frame)
{
    switch (frame.data) {
    case swi::Command:
        m_stage = Stage::CommandCount;
        break;
    case swi::Transmit:
        m_stage = Stage::AnswerCount;
        break;
    case swi::Idle:
    case swi::Sleep:
        break;
    default:
        frame.line = SwiResults::Unknown;
        results().mark(m_settings.line, frame.firstSample, MarkerType::ErrorX);
        m_stage = Stage::Lost;
        break;
    }
    frame.kind = swi::isFlag(frame.data) ? SwiResults::Flag : SwiResults::Byte;
    results().add(frame);
}

/// A block: the number of its bytes, data, CRC-16.
void SwiAnalyzer::takeBlockByte(FrameData &frame)
{
    if (m_block.empty()) {
        m_isAnswer = m_stage == Stage::AnswerCount;
        m_stage = Stage::Block;
        m_blockFirst = frame.firstSample;
        m_place = results().open(frame.firstSample);
        frame.line = SwiResults::Count;
    } else if (m_block.size() + swi::crcBytes >= m_block[0]) {
        frame.line = SwiResults::Check;
    } else if (m_block.size() == 1 && !m_isAnswer) {
        frame.line = SwiResults::Opcode;
    }
    m_block.push_back(std::uint8_t(frame.data));
    frame.flags = m_isAnswer ? SwiResults::FromDevice : 0;
    results().add(frame);
    if (m_block[0] < swi::leastCount) {
        breakOff(frame.lastSample, Stage::Lost);
    } else if (m_block.size() == m_block[0]) {
        endBlock();
    }
}

void SwiAnalyzer::endBlock()
{
    unsigned flags = m_isAnswer ? unsigned(SwiResults::FromDevice) : 0U;
    if (!swi::isCrcRight(m_block)) {
        flags |= SwiResults::CrcError;
        results().mark(m_settings.line, m_last, MarkerType::ErrorX);
    }
    results().fill(m_place, {.firstSample = m_blockFirst,
                             .lastSample = m_last,
                             .data = results().keep(m_block),
                             .kind = SwiResults::Block,
                             .flags = std::uint16_t(flags)});
    m_block.clear();
    m_stage = Stage::Flag;
}

/// What is not complete will not be: a block is told as cut.
void SwiAnalyzer::breakOff(Sample at, Stage next)
{
    if (!m_block.empty()) {
        results().mark(m_settings.line, at, MarkerType::ErrorX);
        results().fill(m_place, {.firstSample = m_blockFirst,
                                 .lastSample = m_last,
                                 .data = results().keep(m_block),
                                 .kind = SwiResults::Cut,
                                 .flags = std::uint16_t(m_isAnswer ? SwiResults::FromDevice : 0)});
        m_block.clear();
    }
    m_count = 0;
    m_stage = next;
}
