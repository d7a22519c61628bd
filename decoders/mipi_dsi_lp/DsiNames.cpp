#include "DsiNames.h"

#include "DsiLane.h"

#include <algorithm>
#include <span>

namespace dsi {

namespace {

struct Name {
    std::uint8_t code;
    std::string_view name;
};

std::string_view find(std::span<const Name> names, std::uint8_t code)
{
    const auto it = std::find_if(names.begin(), names.end(), [code](const Name &one) { return one.code == code; });
    return it == names.end() ? std::string_view() : it->name;
}

constexpr Name fromProcessor[] = {
    {0x01, "V sync start"},
    {0x11, "V sync end"},
    {0x21, "H sync start"},
    {0x31, "H sync end"},
    {0x08, "End of transmission"},
    {0x02, "Colour mode off"},
    {0x12, "Colour mode on"},
    {0x22, "Shut down"},
    {0x32, "Turn on"},
    {0x03, "Generic short write, no parameters"},
    {0x13, "Generic short write, 1 parameter"},
    {0x23, "Generic short write, 2 parameters"},
    {0x04, "Generic read, no parameters"},
    {0x14, "Generic read, 1 parameter"},
    {0x24, "Generic read, 2 parameters"},
    {0x05, "DCS short write, no parameters"},
    {0x15, "DCS short write, 1 parameter"},
    {0x06, "DCS read"},
    {0x37, "Set maximum return packet size"},
    {0x09, "Null packet"},
    {0x19, "Blanking packet"},
    {0x29, "Generic long write"},
    {0x39, "DCS long write"},
    {0x0e, "Packed pixels, RGB 5-6-5"},
    {0x1e, "Packed pixels, RGB 6-6-6"},
    {0x2e, "Loosely packed pixels, RGB 6-6-6"},
    {0x3e, "Packed pixels, RGB 8-8-8"},
};

constexpr Name fromPeripheralSide[] = {
    {0x02, "Acknowledge and error report"},        {0x08, "End of transmission"},
    {0x11, "Generic short read response, 1 byte"}, {0x12, "Generic short read response, 2 bytes"},
    {0x1a, "Generic long read response"},          {0x1c, "DCS long read response"},
    {0x21, "DCS short read response, 1 byte"},     {0x22, "DCS short read response, 2 bytes"},
};

constexpr Name commands[] = {
    {0x00, "nop"},
    {0x01, "soft_reset"},
    {0x06, "get_red_channel"},
    {0x07, "get_green_channel"},
    {0x08, "get_blue_channel"},
    {0x0a, "get_power_mode"},
    {0x0b, "get_address_mode"},
    {0x0c, "get_pixel_format"},
    {0x0d, "get_display_mode"},
    {0x0e, "get_signal_mode"},
    {0x0f, "get_diagnostic_result"},
    {0x10, "enter_sleep_mode"},
    {0x11, "exit_sleep_mode"},
    {0x12, "enter_partial_mode"},
    {0x13, "enter_normal_mode"},
    {0x20, "exit_invert_mode"},
    {0x21, "enter_invert_mode"},
    {0x26, "set_gamma_curve"},
    {0x28, "set_display_off"},
    {0x29, "set_display_on"},
    {0x2a, "set_column_address"},
    {0x2b, "set_page_address"},
    {0x2c, "write_memory_start"},
    {0x2d, "write_LUT"},
    {0x2e, "read_memory_start"},
    {0x30, "set_partial_area"},
    {0x33, "set_scroll_area"},
    {0x34, "set_tear_off"},
    {0x35, "set_tear_on"},
    {0x36, "set_address_mode"},
    {0x37, "set_scroll_start"},
    {0x38, "exit_idle_mode"},
    {0x39, "enter_idle_mode"},
    {0x3a, "set_pixel_format"},
    {0x3c, "write_memory_continue"},
    {0x3e, "read_memory_continue"},
    {0x44, "set_tear_scanline"},
    {0x45, "get_scanline"},
    {0xa1, "read_DDB_start"},
    {0xa8, "read_DDB_continue"},
};

constexpr Name entries[] = {
    {lowPowerData, "Low-power data"},
    {ultraLowPower, "Ultra-low power"},
    {resetTrigger, "Reset trigger"},
    {tearingTrigger, "Tearing effect trigger"},
    {acknowledgeTrigger, "Acknowledge trigger"},
    {0x9f, "Undefined-1"},
    {0xde, "Undefined-2"},
    {0xa0, "Unknown-5"},
};

} // namespace

std::string_view entryName(std::uint8_t code)
{
    return find(entries, code);
}

std::string_view typeName(std::uint8_t dataType, bool fromPeripheral)
{
    return fromPeripheral ? find(fromPeripheralSide, dataType) : find(fromProcessor, dataType);
}

bool hasCommand(std::uint8_t dataType, bool fromPeripheral)
{
    return !fromPeripheral && (dataType == 0x05 || dataType == 0x15 || dataType == 0x06 || dataType == 0x39);
}

std::string_view commandName(std::uint8_t command)
{
    return find(commands, command);
}

} // namespace dsi
