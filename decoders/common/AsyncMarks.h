#pragma once

#include "AsyncLine.h"

#include <array>
#include <corvanlux/analyzer/DecoderResults.h>
#include <cstddef>
#include <span>

namespace lux {

/// A dot where each bit of the character that was read last is looked at; an error dot at a wrong parity bit, an error
/// cross at a missing stop bit. Of a break only the latter.
inline void markCharacter(Results &results, const Channel &channel, const AsyncLine &line,
                          const AsyncCharacter &character)
{
    const unsigned stop = line.stopBit();
    if (!character.isBreak) {
        std::array<Sample, AsyncLine::mostBits> looks; // not cleared: that would take longer than to fill it
        std::size_t count = 0;
        for (unsigned bit = 1; bit < stop; ++bit) {
            looks[count++] = line.lookOf(bit);
        }
        const std::size_t sound = count - std::size_t(character.parityWrong); // the parity bit is the last
        results.mark(channel, std::span(looks.data(), sound), MarkerType::Dot);
        if (character.parityWrong) {
            results.mark(channel, looks[sound], MarkerType::ErrorDot);
        }
    }
    if (character.isBreak || character.stopMissing) {
        results.mark(channel, line.lookOf(stop), MarkerType::ErrorX);
    }
}

/// The same of one that may have been ended by a break: then what lies before that.
inline void markWholeOrBroken(Results &results, const Channel &channel, const AsyncLine &line,
                              const AsyncCharacter &character)
{
    if (character.isBreak || character.last >= line.lookOf(line.stopBit())) {
        markCharacter(results, channel, line, character);
        return;
    }
    for (unsigned bit = 1; line.lookOf(bit) <= character.last; ++bit) {
        results.mark(channel, line.lookOf(bit), MarkerType::Dot);
    }
    results.mark(channel, character.last, MarkerType::ErrorX);
}

} // namespace lux
