#pragma once

#include <corvanlux/analyzer/FrameText.h>
#include <cstdint>
#include <span>
#include <string_view>

/// What numbers mean, in the words of the MIDI 1.0 Detailed Specification 4.2.
namespace midiNames {

[[nodiscard]] std::string_view ofRealTime(std::uint8_t status);
/// "C4" for 60, the middle C.
[[nodiscard]] lux::ShortText ofNote(std::uint8_t note);
/// Table 3: controllers and channel mode messages; "Controller 20" for one without a name.
[[nodiscard]] lux::ShortText ofController(std::uint8_t controller);
/// What a system exclusive message is for, as far as its first bytes tell: "Identity request".
[[nodiscard]] std::string_view ofExclusive(std::span<const std::uint8_t> bytes);

} // namespace midiNames
