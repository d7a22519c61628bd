#include "LinAnalyzer.h"

#include "common/AsyncMarks.h"
#include "common/Duration.h"
#include "common/FilteredLine.h"

#include <algorithm>
#include <cstdlib>
#include <string>

using lux::AsyncCharacter;
using lux::AsyncLine;
using lux::BitGrid;
using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(LinAnalyzer)

namespace {

// In bits; the sections are those of LIN 2.2A.
constexpr std::int64_t leastBreak = 11; ///< what a slave takes for one (2.3.1.1)
/// From the break's end to the identifier: a header may take 1.4 times its 34 bits (2.3.2), 13 of which are the break.
constexpr std::int64_t mostToIdentifier = 25;
/// Header and answer may take 1.4 times their 34 and 90 bits (2.3.2); all of what is more may be one pause.
constexpr std::int64_t mostToLastByte = 164;
constexpr std::int64_t mostPause = 36;
/// A pulse that is idle for so long on both sides belongs to no character.
constexpr std::int64_t leastAround = 14;

constexpr std::int64_t leastWakeUp = 150000; ///< ns: what a slave takes for a wake-up signal (2.6.2)

/// A sender without a crystal may be off by 14 % (2.6 of the physical layer, table 2.2), and an edge by a sample.
constexpr std::int64_t mostOffPercent = 15;
/// So little does not matter within a character, and is what few samples a bit cannot tell.
constexpr std::int64_t slightlyOffPercent = 2;

/// A break may come at any time (2.3.1.1), also within a character, which it ends then.
AsyncCharacter readCharacter(AsyncLine &line, const BitGrid &grid)
{
    AsyncCharacter character = line.read();
    if (character.stopMissing) {
        character.last = std::min(character.last, line.breakWithin(character, grid.endOf(leastBreak) - 1) - 1);
    }
    return character;
}

} // namespace

std::uint32_t LinAnalyzer::NeededSampleRate()
{
    return std::uint32_t(leastSamplesPerBit * m_settings.baudrate.value());
}

void LinAnalyzer::decode()
{
    const std::int64_t rate = m_settings.baudrate.value() != 0 ? m_settings.baudrate.value() : findBitRate();
    const BitGrid grid(sampleRate(), rate);
    if (grid.isCoarserThan(leastSamplesPerBit)) {
        fail(lux::tooFewSamples(rate, leastSamplesPerBit));
    }
    Clock clock{.nominal = grid, .measured = grid, .spike = std::max<Sample>(grid.atQuarter(1) / 2, 1)};
    ChannelReader line(reader(m_settings.rx));
    line.waitForLevel(true);
    for (;;) {
        const Sample idleFrom = line.position();
        const Sample fall = lux::nextSteadyEdge(line, clock.spike);
        const Sample rise = lux::nextSteadyEdge(line, clock.spike);
        if (rise - fall >= grid.endOf(leastBreak) - 1) {
            readHeader(line, fall, clock);
        } else if (isWakeUp(line, fall, fall - idleFrom, grid)) {
            results().add({.firstSample = fall, .lastSample = rise - 1, .kind = LinResults::WakeUp});
        }
    }
}

std::int64_t LinAnalyzer::findBitRate()
{
    const std::int64_t found = LinRateFinder(reader(m_settings.rx), sampleRate()).find();
    if (found < 1) {
        fail("No bit rate can be found: no break is followed by a sync field");
    }
    tell("Bit rate found: " + std::to_string(found) + " bits/s");
    return found;
}

/// The line stands at the end of a break. Goes behind the frame, or to where the next break is looked for.
void LinAnalyzer::readHeader(ChannelReader &line, Sample breakFall, Clock &clock)
{
    const Sample breakEnd = line.position();
    const Sample latest = breakEnd + clock.nominal.endOf(mostToIdentifier);
    LinSync sync;
    ChannelReader ahead(line);
    const bool hasSync = sync.read(ahead, clock.spike) && sync.first < latest;
    const BitGrid *grid = hasSync ? gridOf(sync, clock) : nullptr;
    if (grid == nullptr) {
        if (latest < sampleCount()) {
            addBreak(breakFall, breakEnd - 1, false);
        }
        return;
    }
    line.advanceTo(sync.end);
    AsyncLine characters(ahead, *grid, {});
    if (!characters.findStart()) {
        if (latest + grid->endOf(leastBreak) < sampleCount() && line.peekEdge() > latest) {
            addBreak(breakFall, sync.end, true);
        }
        return;
    }
    const bool isInTime = characters.start() <= latest;
    const AsyncCharacter identifier = isInTime ? readCharacter(characters, *grid) : AsyncCharacter();
    if (!isInTime || identifier.isBreak) {
        addBreak(breakFall, sync.end, true);
        return;
    }
    results().mark(m_settings.rx, breakFall, MarkerType::Start);
    lux::markWholeOrBroken(results(), m_settings.rx, characters, identifier);
    LinFrame frame{.pid = std::uint8_t(identifier.value), .framingError = identifier.stopMissing};
    Sample last = identifier.last;
    bool isCut = false;
    if (!frame.framingError) {
        if (!frame.isParityRight()) {
            results().mark(m_settings.rx, last, MarkerType::ErrorX);
        }
        readAnswer(characters, *grid, frame, breakEnd, last, isCut);
    }
    line.advanceTo(last);
    const bool isRight = frame.isRight(m_settings.checksumFor(frame.id()));
    if (!isCut || isRight) {
        if (!isRight) {
            markAnswerWrong(frame, last);
        }
        results().addFrame(frame, breakFall, last);
    }
    line.waitForLevel(true);
}

/// An error cross at the end of an answer whose checksum is wrong or missing; the identifier's when there is none at
/// all.
void LinAnalyzer::markAnswerWrong(const LinFrame &frame, Sample last)
{
    const bool isMarked = frame.framingError || (frame.count == 0 && !frame.isParityRight());
    if (!isMarked) {
        results().mark(m_settings.rx, last, MarkerType::ErrorX);
    }
}

/// Up to nine characters, as long as each comes in time; a break is the next header.
/// @param first  where the break ends
/// @param last   in: the identifier's last sample, out: that of the answer
/// @param isCut  the capture ends before the answer is known to
void LinAnalyzer::readAnswer(AsyncLine &line, const BitGrid &grid, LinFrame &frame, Sample first, Sample &last,
                             bool &isCut)
{
    const Sample pause = grid.endOf(mostPause);
    while (frame.count < frame.bytes.size() && !frame.framingError) {
        const Sample latest = std::min(last + pause, first + grid.endOf(mostToLastByte));
        if (!line.findStart()) {
            isCut = latest + grid.endOf(leastBreak) >= sampleCount();
            return;
        }
        if (line.start() > latest) {
            return;
        }
        const AsyncCharacter character = readCharacter(line, grid);
        if (character.isBreak && character.last - character.first >= grid.endOf(leastBreak) - 2) {
            return;
        }
        lux::markWholeOrBroken(results(), m_settings.rx, line, character);
        last = character.last;
        frame.framingError = character.stopMissing;
        if (!frame.framingError) {
            frame.bytes[frame.count++] = std::uint8_t(character.value);
        }
    }
}

/// @return null when the sender's clock is further off than any may be
const BitGrid *LinAnalyzer::gridOf(const LinSync &sync, Clock &clock) const
{
    const Sample eight = sync.last - sync.first;
    const std::int64_t rate = clock.nominal.bitRate();
    const std::int64_t right = LinSync::bits * sampleRate(); // of samples times bits/s, so that it is exact
    const std::int64_t off = std::abs(eight * rate - right) * 100;
    if (off > mostOffPercent * right + 100 * rate) {
        return nullptr;
    }
    if (off <= slightlyOffPercent * right + 100 * rate) {
        return &clock.nominal;
    }
    if (clock.measuredEight != eight) {
        clock.measured = BitGrid(sampleRate(), std::max<std::int64_t>(right / eight, 1));
        clock.measuredEight = eight;
    }
    return &clock.measured;
}

/// The line stands at the rise behind a dominant pulse that is too short for a break.
bool LinAnalyzer::isWakeUp(const ChannelReader &line, Sample fall, Sample idle, const BitGrid &grid) const
{
    const Sample around = grid.endOf(leastAround);
    return line.position() - fall >= lux::samplesIn(leastWakeUp, sampleRate()) && idle >= around &&
           line.peekEdge() - line.position() >= around;
}

void LinAnalyzer::addBreak(Sample first, Sample last, bool hasSync)
{
    results().mark(m_settings.rx, first, MarkerType::ErrorX);
    results().add({.firstSample = first,
                   .lastSample = last,
                   .kind = LinResults::Break,
                   .flags = hasSync ? std::uint16_t(0) : std::uint16_t(LinResults::NoSync)});
}
