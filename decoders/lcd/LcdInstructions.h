#pragma once

#include <corvanlux/analyzer/FrameText.h>
#include <cstdint>

/// The chip of a display.
enum class LcdController : std::uint8_t { Hd44780, St7920, Ks0108 };

/// What an instruction is called by its data sheet.
struct LcdInstruction {
    const char *name;      ///< "Function set"
    lux::ShortText detail; ///< what its bits say: "8 bits, 2 lines, 5x8 dots"; may be empty
};

/// @param extended  the ST7920 is in its extended instruction set
[[nodiscard]] LcdInstruction lcdInstruction(LcdController controller, std::uint8_t code, bool extended,
                                            DisplayBase base);
