#include "CecNames.h"

#include <algorithm>
#include <array>

using lux::ShortText;

namespace {

struct Name {
    std::uint8_t code;
    const char *name;
};

constexpr Name opcodes[] = {
    {0x00, "Feature Abort"},
    {0x04, "Image View On"},
    {0x05, "Tuner Step Increment"},
    {0x06, "Tuner Step Decrement"},
    {0x07, "Tuner Device Status"},
    {0x08, "Give Tuner Device Status"},
    {0x09, "Record On"},
    {0x0a, "Record Status"},
    {0x0b, "Record Off"},
    {0x0d, "Text View On"},
    {0x0f, "Record TV Screen"},
    {0x1a, "Give Deck Status"},
    {0x1b, "Deck Status"},
    {0x32, "Set Menu Language"},
    {0x33, "Clear Analogue Timer"},
    {0x34, "Set Analogue Timer"},
    {0x35, "Timer Status"},
    {0x36, "Standby"},
    {0x41, "Play"},
    {0x42, "Deck Control"},
    {0x43, "Timer Cleared Status"},
    {0x44, "User Control Pressed"},
    {0x45, "User Control Released"},
    {0x46, "Give OSD Name"},
    {0x47, "Set OSD Name"},
    {0x64, "Set OSD String"},
    {0x67, "Set Timer Program Title"},
    {0x70, "System Audio Mode Request"},
    {0x71, "Give Audio Status"},
    {0x72, "Set System Audio Mode"},
    {0x7a, "Report Audio Status"},
    {0x7d, "Give System Audio Mode Status"},
    {0x7e, "System Audio Mode Status"},
    {0x80, "Routing Change"},
    {0x81, "Routing Information"},
    {0x82, "Active Source"},
    {0x83, "Give Physical Address"},
    {0x84, "Report Physical Address"},
    {0x85, "Request Active Source"},
    {0x86, "Set Stream Path"},
    {0x87, "Device Vendor ID"},
    {0x89, "Vendor Command"},
    {0x8a, "Vendor Remote Button Down"},
    {0x8b, "Vendor Remote Button Up"},
    {0x8c, "Give Device Vendor ID"},
    {0x8d, "Menu Request"},
    {0x8e, "Menu Status"},
    {0x8f, "Give Device Power Status"},
    {0x90, "Report Power Status"},
    {0x91, "Get Menu Language"},
    {0x92, "Select Analogue Service"},
    {0x93, "Select Digital Service"},
    {0x97, "Set Digital Timer"},
    {0x99, "Clear Digital Timer"},
    {0x9a, "Set Audio Rate"},
    {0x9d, "Inactive Source"},
    {0x9e, "CEC Version"},
    {0x9f, "Get CEC Version"},
    {0xa0, "Vendor Command With ID"},
    {0xa1, "Clear External Timer"},
    {0xa2, "Set External Timer"},
    {0xa3, "Report Short Audio Descriptor"},
    {0xa4, "Request Short Audio Descriptor"},
    {0xc0, "Initiate ARC"},
    {0xc1, "Report ARC Initiated"},
    {0xc2, "Report ARC Terminated"},
    {0xc3, "Request ARC Initiation"},
    {0xc4, "Request ARC Termination"},
    {0xc5, "Terminate ARC"},
    {0xf8, "CDC Message"},
    {0xff, "Abort"},
};

/// CEC table 30.
constexpr Name controls[] = {
    {0x00, "Select"},
    {0x01, "Up"},
    {0x02, "Down"},
    {0x03, "Left"},
    {0x04, "Right"},
    {0x05, "Right-Up"},
    {0x06, "Right-Down"},
    {0x07, "Left-Up"},
    {0x08, "Left-Down"},
    {0x09, "Root Menu"},
    {0x0a, "Setup Menu"},
    {0x0b, "Contents Menu"},
    {0x0c, "Favorite Menu"},
    {0x0d, "Exit"},
    {0x20, "0"},
    {0x21, "1"},
    {0x22, "2"},
    {0x23, "3"},
    {0x24, "4"},
    {0x25, "5"},
    {0x26, "6"},
    {0x27, "7"},
    {0x28, "8"},
    {0x29, "9"},
    {0x2a, "Dot"},
    {0x2b, "Enter"},
    {0x2c, "Clear"},
    {0x2f, "Next Favorite"},
    {0x30, "Channel Up"},
    {0x31, "Channel Down"},
    {0x32, "Previous Channel"},
    {0x33, "Sound Select"},
    {0x34, "Input Select"},
    {0x35, "Display Information"},
    {0x36, "Help"},
    {0x37, "Page Up"},
    {0x38, "Page Down"},
    {0x40, "Power"},
    {0x41, "Volume Up"},
    {0x42, "Volume Down"},
    {0x43, "Mute"},
    {0x44, "Play"},
    {0x45, "Stop"},
    {0x46, "Pause"},
    {0x47, "Record"},
    {0x48, "Rewind"},
    {0x49, "Fast Forward"},
    {0x4a, "Eject"},
    {0x4b, "Forward"},
    {0x4c, "Backward"},
    {0x4d, "Stop-Record"},
    {0x4e, "Pause-Record"},
    {0x50, "Angle"},
    {0x51, "Sub Picture"},
    {0x52, "Video on Demand"},
    {0x53, "Electronic Program Guide"},
    {0x54, "Timer Programming"},
    {0x55, "Initial Configuration"},
    {0x60, "Play Function"},
    {0x61, "Pause-Play Function"},
    {0x62, "Record Function"},
    {0x63, "Pause-Record Function"},
    {0x64, "Stop Function"},
    {0x65, "Mute Function"},
    {0x66, "Restore Volume Function"},
    {0x67, "Tune Function"},
    {0x68, "Select Media Function"},
    {0x69, "Select A/V Input Function"},
    {0x6a, "Select Audio Input Function"},
    {0x6b, "Power Toggle Function"},
    {0x6c, "Power Off Function"},
    {0x6d, "Power On Function"},
    {0x71, "F1 (Blue)"},
    {0x72, "F2 (Red)"},
    {0x73, "F3 (Green)"},
    {0x74, "F4 (Yellow)"},
    {0x75, "F5"},
    {0x76, "Data"},
};

constexpr std::array<const char *, 4> powerStates{"on", "standby", "going on", "going to standby"};
constexpr std::array<const char *, 6> abortReasons{
    "unrecognized opcode", "not in correct mode", "cannot provide source", "invalid operand", "refused",
    "unable to determine"};
constexpr std::array<const char *, 7> versions{"1.1", "1.2", "1.2a", "1.3", "1.3a", "1.4", "2.0"};

std::string_view nameOf(std::span<const Name> names, unsigned code)
{
    const auto *found = std::lower_bound(names.data(), names.data() + names.size(), code,
                                         [](const Name &name, unsigned wanted) { return name.code < wanted; });
    return found != names.data() + names.size() && found->code == code ? found->name : "";
}

template<std::size_t count>
std::string_view entryOf(const std::array<const char *, count> &names, unsigned number)
{
    return number < count ? names[number] : "";
}

/// A physical address: four digits, one a level of HDMI switches.
void addAddress(ShortText &text, std::span<const std::uint8_t> bytes)
{
    constexpr char digits[] = "0123456789ABCDEF";
    const char written[] = {digits[bytes[0] >> 4], '.', digits[bytes[0] & 15U], '.',
                            digits[bytes[1] >> 4], '.', digits[bytes[1] & 15U]};
    text.add(std::string_view(written, sizeof written));
}

void addCharacters(ShortText &text, std::span<const std::uint8_t> bytes)
{
    text.add('"');
    for (const std::uint8_t byte : bytes) {
        text.add(byte >= 0x20 && byte < 0x7f ? char(byte) : '.');
    }
    text.add('"');
}

} // namespace

std::string_view cec::deviceName(unsigned address, bool isDestination)
{
    constexpr std::array<const char *, 15> names{"TV",         "Recording 1",  "Recording 2", "Tuner 1",
                                                 "Playback 1", "Audio system", "Tuner 2",     "Tuner 3",
                                                 "Playback 2", "Recording 3",  "Tuner 4",     "Playback 3",
                                                 "Reserved C", "Reserved D",   "Specific use"};
    return address < names.size() ? names[address] : isDestination ? "all" : "Unregistered";
}

std::string_view cec::opcodeName(unsigned opcode)
{
    return nameOf(opcodes, opcode);
}

ShortText cec::operandText(unsigned opcode, std::span<const std::uint8_t> operands)
{
    ShortText text;
    if (operands.empty()) {
        return text;
    }
    switch (opcode) {
    case SystemAudioModeRequest:
    case RoutingChange:
    case RoutingInformation:
    case ActiveSource:
    case ReportPhysicalAddress:
    case SetStreamPath:
    case InactiveSource:
        if (operands.size() >= 2) {
            addAddress(text, operands.first(2));
        }
        if (opcode == RoutingChange && operands.size() >= 4) {
            text.add(" to ");
            addAddress(text, operands.subspan(2, 2));
        }
        break;
    case SetMenuLanguage:
    case SetOsdName:
        addCharacters(text, operands);
        break;
    case SetOsdString:
        addCharacters(text, operands.subspan(1));
        break;
    case UserControlPressed:
        text.add(nameOf(controls, operands[0]));
        break;
    case ReportPowerStatus:
        text.add(entryOf(powerStates, operands[0]));
        break;
    case CecVersion:
        text.add(entryOf(versions, operands[0]));
        break;
    case FeatureAbort:
        text.add(opcodeName(operands[0]));
        if (operands.size() >= 2) {
            text.add(", ");
            text.add(entryOf(abortReasons, operands[1]));
        }
        break;
    default:
        break;
    }
    return text;
}
