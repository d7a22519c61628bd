#include "MidiNames.h"

#include <array>

using lux::ShortText;

namespace {

struct Name {
    std::uint8_t number;
    std::string_view text;
};

constexpr std::array<Name, 46> controllers = {{{0, "Bank select"},
                                               {1, "Modulation"},
                                               {2, "Breath"},
                                               {4, "Foot"},
                                               {5, "Portamento time"},
                                               {6, "Data entry"},
                                               {7, "Volume"},
                                               {8, "Balance"},
                                               {10, "Pan"},
                                               {11, "Expression"},
                                               {12, "Effect control 1"},
                                               {13, "Effect control 2"},
                                               {16, "General purpose 1"},
                                               {17, "General purpose 2"},
                                               {18, "General purpose 3"},
                                               {19, "General purpose 4"},
                                               {64, "Damper pedal"},
                                               {65, "Portamento"},
                                               {66, "Sostenuto"},
                                               {67, "Soft pedal"},
                                               {68, "Legato"},
                                               {69, "Hold 2"},
                                               {70, "Sound variation"},
                                               {71, "Timbre"},
                                               {72, "Release time"},
                                               {73, "Attack time"},
                                               {74, "Brightness"},
                                               {80, "General purpose 5"},
                                               {81, "General purpose 6"},
                                               {82, "General purpose 7"},
                                               {83, "General purpose 8"},
                                               {84, "Portamento control"},
                                               {91, "Effects depth"},
                                               {92, "Tremolo depth"},
                                               {93, "Chorus depth"},
                                               {94, "Detune depth"},
                                               {95, "Phaser depth"},
                                               {96, "Data increment"},
                                               {97, "Data decrement"},
                                               {98, "Non-registered number, low"},
                                               {99, "Non-registered number, high"},
                                               {100, "Registered number, low"},
                                               {101, "Registered number, high"},
                                               {120, "All sound off"},
                                               {121, "Reset all controllers"},
                                               {122, "Local control"}}};

constexpr std::array<std::string_view, 5> modes = {"All notes off", "Omni off", "Omni on", "Mono", "Poly"};
constexpr std::uint8_t firstMode = 123;
constexpr std::uint8_t firstLowPart = 32; ///< the low seven bits of controllers 0 to 31
constexpr std::uint8_t lastLowPart = 63;

struct UniversalName {
    std::uint8_t id; ///< 7E non-real time, 7F real time
    std::uint8_t subId1;
    std::uint8_t subId2;
    std::string_view text;
};

/// Table 7a, those that are met.
constexpr std::array<UniversalName, 14> universal = {{{0x7e, 0x01, 0xff, "Sample dump header"},
                                                      {0x7e, 0x02, 0xff, "Sample data packet"},
                                                      {0x7e, 0x03, 0xff, "Sample dump request"},
                                                      {0x7e, 0x06, 0x01, "Identity request"},
                                                      {0x7e, 0x06, 0x02, "Identity reply"},
                                                      {0x7e, 0x07, 0xff, "File dump"},
                                                      {0x7e, 0x08, 0xff, "Tuning"},
                                                      {0x7e, 0x09, 0x01, "General MIDI on"},
                                                      {0x7e, 0x09, 0x02, "General MIDI off"},
                                                      {0x7f, 0x01, 0x01, "Full time code"},
                                                      {0x7f, 0x02, 0xff, "Show control"},
                                                      {0x7f, 0x04, 0x01, "Master volume"},
                                                      {0x7f, 0x04, 0x02, "Master balance"},
                                                      {0x7f, 0x06, 0xff, "Machine control"}}};

std::string_view plainController(std::uint8_t controller)
{
    for (const Name &name : controllers) {
        if (name.number == controller) {
            return name.text;
        }
    }
    return {};
}

} // namespace

std::string_view midiNames::ofRealTime(std::uint8_t status)
{
    static constexpr std::array<std::string_view, 8> names = {
        "Timing clock", "Undefined real-time byte", "Start",          "Continue",
        "Stop",         "Undefined real-time byte", "Active sensing", "System reset"};
    return names[status & 7U];
}

ShortText midiNames::ofNote(std::uint8_t note)
{
    static constexpr std::array<std::string_view, 12> names = {"C",  "C#", "D",  "D#", "E",  "F",
                                                               "F#", "G",  "G#", "A",  "A#", "B"};
    ShortText text(names[note % names.size()]);
    text.add(lux::formatCount(note / std::int64_t(names.size()) - 1));
    return text;
}

ShortText midiNames::ofController(std::uint8_t controller)
{
    if (controller >= firstMode && controller - firstMode < int(modes.size())) {
        return {modes[std::size_t(controller - firstMode)]};
    }
    const bool isLowPart = controller >= firstLowPart && controller <= lastLowPart;
    const std::string_view name = plainController(isLowPart ? std::uint8_t(controller - firstLowPart) : controller);
    ShortText text(name.empty() ? "Controller " : name);
    if (name.empty()) {
        text.add(lux::formatCount(controller));
    } else if (isLowPart) {
        text.add(", low part");
    }
    return text;
}

std::string_view midiNames::ofExclusive(std::span<const std::uint8_t> bytes)
{
    constexpr std::uint8_t nonCommercial = 0x7d;
    constexpr std::uint8_t anyNumber = 0xff;
    constexpr std::size_t leastUniversal = 5; // F0, ID, device, two sub-IDs
    if (bytes.size() > 1 && bytes[1] == nonCommercial) {
        return "non-commercial";
    }
    for (const UniversalName &name : universal) {
        if (bytes.size() > leastUniversal && bytes[1] == name.id && bytes[3] == name.subId1 &&
            (name.subId2 == anyNumber || bytes[4] == name.subId2)) {
            return name.text;
        }
    }
    return {};
}
