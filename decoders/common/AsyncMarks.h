#pragma once

#include "AsyncLine.h"

#include <corvanlux/analyzer/DecoderResults.h>

namespace lux {

/// A dot where each bit of the character that was read last is looked at; an error dot at a wrong parity bit, an error
/// cross at a missing stop bit. Of a break only the latter.
inline void markCharacter(Results &results, const Channel &channel, const AsyncLine &line,
                          const AsyncCharacter &character)
{
    const unsigned stop = line.stopBit();
    for (unsigned bit = 1; bit < stop && !character.isBreak; ++bit) {
        const bool wrong = bit + 1 == stop && character.parityWrong;
        results.mark(channel, line.lookOf(bit), wrong ? MarkerType::ErrorDot : MarkerType::Dot);
    }
    if (character.isBreak || character.stopMissing) {
        results.mark(channel, line.lookOf(stop), MarkerType::ErrorX);
    }
}

} // namespace lux
