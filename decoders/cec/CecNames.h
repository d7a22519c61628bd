#pragma once

#include <corvanlux/analyzer/FrameText.h>
#include <cstdint>
#include <span>
#include <string_view>

/// Names of HDMI 1.4b, supplement 1 (CEC).
namespace cec {

enum Opcode : std::uint8_t {
    FeatureAbort = 0x00,
    SetMenuLanguage = 0x32,
    UserControlPressed = 0x44,
    SetOsdName = 0x47,
    SetOsdString = 0x64,
    SystemAudioModeRequest = 0x70,
    RoutingChange = 0x80,
    RoutingInformation = 0x81,
    ActiveSource = 0x82,
    ReportPhysicalAddress = 0x84,
    SetStreamPath = 0x86,
    ReportPowerStatus = 0x90,
    InactiveSource = 0x9d,
    CecVersion = 0x9e,
};

/// A logical address (CEC table 5). @param isDestination  the highest one is everybody, else a device without one
[[nodiscard]] std::string_view deviceName(unsigned address, bool isDestination);
/// A message (CEC tables 8 to 31); empty for none.
[[nodiscard]] std::string_view opcodeName(unsigned opcode);
/// What the operands say, where there is more to it than numbers: "1.0.0.0", "Volume Up"; empty elsewhere.
[[nodiscard]] lux::ShortText operandText(unsigned opcode, std::span<const std::uint8_t> operands);

} // namespace cec
