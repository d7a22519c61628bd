#pragma once

#include <cstdint>
#include <string_view>

namespace dsi {

/// What the code of an entry asks for: "Low-power data".
[[nodiscard]] std::string_view entryName(std::uint8_t code);
/// What a packet is by its data type (DSI 1.01, tables 16 and 20); empty for a type that is reserved.
[[nodiscard]] std::string_view typeName(std::uint8_t dataType, bool fromPeripheral);
/// The packet carries a command of the display command set.
[[nodiscard]] bool hasCommand(std::uint8_t dataType, bool fromPeripheral);
/// "set_display_on" (MIPI Alliance Standard for Display Command Set 1.02, table 4); empty for none.
[[nodiscard]] std::string_view commandName(std::uint8_t command);

} // namespace dsi
