#pragma once

#include <corvanlux/analyzer/AnalyzerTypes.h>

/// The base in which decoders write numbers, from an analyzer's display format, which comes from a file and may be any
/// number: one that is no base counts as hexadecimal.
[[nodiscard]] constexpr DisplayBase displayBaseOf(int format)
{
    const bool known = format >= int(DisplayBase::Binary) && format <= int(DisplayBase::AsciiHex);
    return known ? DisplayBase(format) : DisplayBase::Hexadecimal;
}
