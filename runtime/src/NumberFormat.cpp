#include "HexDigits.h"
#include "corvanlux/analyzer/FrameText.h"

#include <algorithm>
#include <charconv>

namespace lux {
namespace {

/// The control characters of ASCII (ISO/IEC 646), in their order; 0x7F is DEL.
constexpr const char *controls[] = {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL", "BS",  "HT",  "LF",
                                    "VT",  "FF",  "CR",  "SO",  "SI",  "DLE", "DC1", "DC2", "DC3", "DC4", "NAK",
                                    "SYN", "ETB", "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"};
constexpr std::uint64_t firstPrintable = 0x20;
constexpr std::uint64_t del = 0x7F;

/// The lowest `count` digits of `bitsEach` bits, the highest first.
void addDigits(ShortText &out, std::string_view prefix, std::uint64_t value, unsigned count, unsigned bitsEach)
{
    out.add(prefix);
    const std::uint64_t mask = (1U << bitsEach) - 1;
    for (unsigned i = count; i-- > 0;)
        out.add(detail::hexDigits[value >> (i * bitsEach) & mask]);
}

void addHexadecimal(ShortText &out, std::uint64_t value, unsigned bits)
{
    addDigits(out, "0x", value, (bits + 3) / 4, 4);
}

void addCharacter(ShortText &out, std::uint64_t value)
{
    if (value < firstPrintable || value == del) {
        out.add(value == del ? "DEL" : controls[value]);
        return;
    }
    out.add('\'');
    out.add(char(value));
    out.add('\'');
}

ShortText inDecimal(std::uint64_t value)
{
    char text[24];
    const char *end = std::to_chars(text, text + sizeof text, value).ptr;
    return {std::string_view(text, std::size_t(end - text))};
}

} // namespace

ShortText formatNumber(std::uint64_t value, unsigned bits, DisplayBase base)
{
    if (base == DisplayBase::Decimal)
        return inDecimal(value);
    bits = std::clamp(bits, 1U, 64U);
    const bool isCharacter = bits <= 8 && value <= del;
    ShortText out;
    if (base == DisplayBase::Binary) {
        addDigits(out, "0b", value, bits, 1);
    } else if (base == DisplayBase::Ascii && isCharacter) {
        addCharacter(out, value);
    } else if (base == DisplayBase::AsciiHex && isCharacter) {
        addCharacter(out, value);
        out.add(" (");
        addHexadecimal(out, value, bits);
        out.add(')');
    } else {
        addHexadecimal(out, value, bits);
    }
    return out;
}

ShortText formatCount(std::int64_t value)
{
    char text[24];
    const char *end = std::to_chars(text, text + sizeof text, value).ptr;
    return {std::string_view(text, std::size_t(end - text))};
}

ShortText formatDuration(std::int64_t samples, std::int64_t sampleRate)
{
    struct Unit {
        double perSecond;
        const char *name;
    };
    static constexpr Unit units[] = {{1, " s"}, {1e3, " ms"}, {1e6, " us"}, {1e9, " ns"}, {1e12, " ps"}};
    constexpr double roundsToThousand = 999.5;
    constexpr double roundsToHundred = 99.95;
    constexpr double roundsToTen = 9.995;
    const double rate = double(std::max<std::int64_t>(sampleRate, 1));
    const double size = samples < 0 ? -double(samples) : double(samples);
    const Unit *unit = units;
    while (size > 0 && unit + 1 < std::end(units) && size * unit->perSecond * 1000 < roundsToThousand * rate)
        ++unit;
    const double value = double(samples) * unit->perSecond / rate;
    const double shown = size * unit->perSecond / rate;
    const int decimals = shown < roundsToTen ? 2 : shown < roundsToHundred ? 1 : 0;
    char text[64];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    ShortText out(std::string_view(text, error == std::errc() ? std::size_t(end - text) : 0));
    out.add(unit->name);
    return out;
}

} // namespace lux
