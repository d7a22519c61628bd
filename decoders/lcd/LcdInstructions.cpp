#include "LcdInstructions.h"

#include <bit>
#include <initializer_list>
#include <string_view>

using lux::ShortText;

namespace {

/// The number of the highest bit that is set: an instruction's kind. 8 for 0.
unsigned kindOf(std::uint8_t code)
{
    return code == 0 ? 8 : unsigned(std::bit_width(code)) - 1;
}

/// The parts that are not empty, with commas.
ShortText joined(std::initializer_list<std::string_view> parts)
{
    ShortText text;
    for (const std::string_view part : parts) {
        if (!text.view().empty() && !part.empty()) {
            text.add(", ");
        }
        text.add(part);
    }
    return text;
}

bool has(std::uint8_t code, unsigned bit)
{
    return (code >> bit & 1U) != 0;
}

ShortText shift(std::uint8_t code)
{
    return joined({has(code, 3) ? "display" : "cursor", has(code, 2) ? "right" : "left"});
}

ShortText displayControl(std::uint8_t code)
{
    return joined({has(code, 2) ? "display on" : "display off", has(code, 1) ? "cursor on" : "cursor off",
                   has(code, 0) ? "blink on" : "blink off"});
}

ShortText entryMode(std::uint8_t code)
{
    return joined({has(code, 1) ? "increment" : "decrement", has(code, 0) ? "display shift" : "no shift"});
}

/// HD44780U data sheet (ADE-207-272), table 6.
LcdInstruction hd44780(std::uint8_t code, DisplayBase base)
{
    switch (kindOf(code)) {
    case 0:
        return {"Clear display", {}};
    case 1:
        return {"Return home", {}};
    case 2:
        return {"Entry mode set", entryMode(code)};
    case 3:
        return {"Display control", displayControl(code)};
    case 4:
        return {"Cursor or display shift", shift(code)};
    case 5:
        return {"Function set", joined({has(code, 4) ? "8 bits" : "4 bits", has(code, 3) ? "2 lines" : "1 line",
                                        has(code, 2) ? "5x10 dots" : "5x8 dots"})};
    case 6:
        return {"Set CGRAM address", lux::formatNumber(code & 0x3fU, 6, base)};
    case 7:
        return {"Set DDRAM address", lux::formatNumber(code & 0x7fU, 7, base)};
    default:
        return {"No operation", {}};
    }
}

/// ST7920 data sheet, revision 4.0: instruction set 1 is the basic one, set 2 the extended one.
LcdInstruction st7920(std::uint8_t code, bool extended, DisplayBase base)
{
    if (kindOf(code) == 5) {
        return {"Function set", joined({has(code, 4) ? "8 bits" : "4 bits", has(code, 2) ? "extended set" : "basic set",
                                        extended && has(code, 1) ? "graphics on" : ""})};
    }
    if (!extended) {
        return hd44780(code, base);
    }
    switch (kindOf(code)) {
    case 0:
        return {"Standby", {}};
    case 1:
        return {"Vertical scroll or CGRAM address", ShortText(has(code, 0) ? "scroll" : "CGRAM")};
    case 2:
        return {"Reverse line", lux::formatCount((code & 3U) + 1)};
    case 6:
        return {"Set scroll address", lux::formatNumber(code & 0x3fU, 6, base)};
    case 7:
        return {"Set GDRAM address", lux::formatNumber(code & 0x7fU, 7, base)};
    default:
        return {"Unknown instruction", {}};
    }
}

/// KS0108B data sheet, display control instructions.
LcdInstruction ks0108(std::uint8_t code, DisplayBase base)
{
    constexpr unsigned displayOnOff = 0x3e;
    constexpr unsigned setPage = 0xb8;
    if ((code & 0xfeU) == displayOnOff) {
        return {"Display", ShortText(has(code, 0) ? "on" : "off")};
    }
    if ((code & 0xc0U) == 0x40) {
        return {"Set address (Y)", lux::formatNumber(code & 0x3fU, 6, base)};
    }
    if ((code & 0xf8U) == setPage) {
        return {"Set page (X)", lux::formatNumber(code & 7U, 3, base)};
    }
    if ((code & 0xc0U) == 0xc0) {
        return {"Display start line (Z)", lux::formatNumber(code & 0x3fU, 6, base)};
    }
    return {"Unknown instruction", {}};
}

} // namespace

LcdInstruction lcdInstruction(LcdController controller, std::uint8_t code, bool extended, DisplayBase base)
{
    switch (controller) {
    case LcdController::St7920:
        return st7920(code, extended, base);
    case LcdController::Ks0108:
        return ks0108(code, base);
    default:
        return hd44780(code, base);
    }
}
