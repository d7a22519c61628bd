#include "QspiCommands.h"

#include <algorithm>
#include <array>
#include <span>

namespace {

using D = QspiCommand::Data;
using E = QspiCommand::Effect;

constexpr std::uint8_t asSet = QspiCommand::addressAsSet;

constexpr QspiCommand plain(std::uint8_t code, std::string_view name, E effect = E::None)
{
    return {.code = code, .name = name, .effect = effect};
}

constexpr QspiCommand reading(std::uint8_t code, std::string_view name, std::uint8_t dummyBytes = 0)
{
    return {.code = code, .name = name, .dummyBytes = dummyBytes, .data = D::Read};
}

constexpr QspiCommand writing(std::uint8_t code, std::string_view name, E effect = E::None)
{
    return {.code = code, .name = name, .data = D::Write, .effect = effect};
}

constexpr QspiCommand at(std::uint8_t code, std::string_view name, D data, std::uint8_t addressBytes = asSet,
                         std::uint8_t dummyClocks = 0)
{
    return {.code = code, .name = name, .addressBytes = addressBytes, .dummyClocks = dummyClocks, .data = data};
}

/// Address on `addressLines`, data on `dataLines`.
constexpr QspiCommand wide(std::uint8_t code, std::string_view name, std::uint8_t addressBytes,
                           std::uint8_t addressLines, bool hasMode, std::uint8_t dummyClocks, D data,
                           std::uint8_t dataLines)
{
    return {.code = code,
            .name = name,
            .addressBytes = addressBytes,
            .addressLines = addressLines,
            .hasMode = hasMode,
            .dummyClocks = dummyClocks,
            .data = data,
            .dataLines = dataLines};
}

constexpr QspiCommand doubled(QspiCommand command)
{
    command.isDouble = true;
    return command;
}

/// What most chips share (data sheet W25Q128JV rev. F, 8.1.2 and 8.2; of 256 Mbit and more W25Q256JV, 8.1).
constexpr QspiCommand common[] = {
    plain(0x06, "Write enable"),
    plain(0x04, "Write disable"),
    plain(0x50, "Write enable for volatile status"),
    reading(0xab, "Release power-down, device ID", 3),
    at(0x90, "Manufacturer and device ID", D::Read, 3),
    wide(0x92, "Manufacturer and device ID, dual I/O", 3, 2, true, 0, D::Read, 2),
    wide(0x94, "Manufacturer and device ID, quad I/O", 3, 4, true, 4, D::Read, 4),
    reading(0x9f, "JEDEC ID"),
    reading(0x4b, "Unique ID", 4),
    at(0x03, "Read data", D::Read),
    at(0x13, "Read data, 4-byte address", D::Read, 4),
    at(0x0b, "Fast read", D::Read, asSet, 8),
    at(0x0c, "Fast read, 4-byte address", D::Read, 4, 8),
    wide(0x3b, "Fast read dual output", asSet, 1, false, 8, D::Read, 2),
    wide(0x3c, "Fast read dual output, 4-byte address", 4, 1, false, 8, D::Read, 2),
    wide(0x6b, "Fast read quad output", asSet, 1, false, 8, D::Read, 4),
    wide(0x6c, "Fast read quad output, 4-byte address", 4, 1, false, 8, D::Read, 4),
    wide(0xbb, "Fast read dual I/O", asSet, 2, true, 0, D::Read, 2),
    wide(0xbc, "Fast read dual I/O, 4-byte address", 4, 2, true, 0, D::Read, 2),
    wide(0xeb, "Fast read quad I/O", asSet, 4, true, 4, D::Read, 4),
    wide(0xec, "Fast read quad I/O, 4-byte address", 4, 4, true, 4, D::Read, 4),
    wide(0xe7, "Word read quad I/O", asSet, 4, true, 2, D::Read, 4),
    wide(0xe3, "Octal word read quad I/O", asSet, 4, true, 0, D::Read, 4),
    doubled(wide(0x0d, "DTR fast read", asSet, 1, false, 6, D::Read, 1)),
    doubled(wide(0x0e, "DTR fast read, 4-byte address", 4, 1, false, 6, D::Read, 1)),
    doubled(wide(0xbd, "DTR fast read dual I/O", asSet, 2, true, 4, D::Read, 2)),
    doubled(wide(0xbe, "DTR fast read dual I/O, 4-byte address", 4, 2, true, 4, D::Read, 2)),
    doubled(wide(0xed, "DTR fast read quad I/O", asSet, 4, true, 7, D::Read, 4)),
    doubled(wide(0xee, "DTR fast read quad I/O, 4-byte address", 4, 4, true, 7, D::Read, 4)),
    wide(0x77, "Set burst with wrap", 0, 1, false, 6, D::Write, 4),
    at(0x02, "Page program", D::Write),
    at(0x12, "Page program, 4-byte address", D::Write, 4),
    wide(0x32, "Quad input page program", asSet, 1, false, 0, D::Write, 4),
    wide(0x34, "Quad input page program, 4-byte address", 4, 1, false, 0, D::Write, 4),
    at(0x20, "Sector erase", D::None),
    at(0x21, "Sector erase, 4-byte address", D::None, 4),
    at(0x52, "Block erase 32 KB", D::None),
    at(0x5c, "Block erase 32 KB, 4-byte address", D::None, 4),
    at(0xd8, "Block erase 64 KB", D::None),
    at(0xdc, "Block erase 64 KB, 4-byte address", D::None, 4),
    plain(0xc7, "Chip erase"),
    plain(0x60, "Chip erase"),
    reading(0x05, "Read status 1"),
    reading(0x35, "Read status 2"),
    reading(0x15, "Read status 3"),
    writing(0x01, "Write status 1"),
    writing(0x31, "Write status 2"),
    writing(0x11, "Write status 3"),
    reading(0xc8, "Read extended address"),
    writing(0xc5, "Write extended address"),
    at(0x5a, "Read SFDP", D::Read, 3, 8),
    at(0x44, "Erase security register", D::None),
    at(0x42, "Program security register", D::Write),
    at(0x48, "Read security register", D::Read, asSet, 8),
    plain(0x7e, "Global block lock"),
    plain(0x98, "Global block unlock"),
    at(0x3d, "Read block lock", D::Read),
    at(0x36, "Block lock", D::None),
    at(0x39, "Block unlock", D::None),
    plain(0x75, "Suspend erase or program"),
    plain(0x7a, "Resume erase or program"),
    plain(0xb9, "Power-down"),
    plain(0xb7, "Enter 4-byte address mode", E::FourBytes),
    plain(0xe9, "Exit 4-byte address mode", E::ThreeBytes),
    plain(0x66, "Enable reset"),
    plain(0x99, "Reset", E::Reset),
    plain(0x38, "Enter QPI", E::EnterQpi),
    plain(0xff, "Exit QPI", E::ExitQpi),
    writing(0xc0, "Set read parameters", E::ReadParameters),
};

/// In QPI 0C has another meaning (W25Q128JV, 8.2.45).
constexpr QspiCommand winbondQpi[] = {
    at(0x0c, "Burst read with wrap", D::Read, asSet, 2),
};

/// Data sheet MX25L25645G rev. 1.8, table 5.
constexpr QspiCommand macronix[] = {
    plain(0x35, "Enter QPI", E::EnterQpi),
    plain(0xf5, "Exit QPI", E::ExitQpi),
    plain(0xff, "Release read enhanced"),
    plain(0xb0, "Suspend erase or program"),
    plain(0x30, "Resume erase or program"),
    reading(0x15, "Read configuration"),
    reading(0x2b, "Read security status"),
    plain(0x2f, "Write security status"),
    reading(0xaf, "QPI ID"),
    writing(0xc0, "Set burst length"),
    wide(0xbb, "2 x I/O read", asSet, 2, false, 4, D::Read, 2),
    wide(0xbc, "2 x I/O read, 4-byte address", 4, 2, false, 4, D::Read, 2),
    wide(0x38, "4 x I/O page program", asSet, 4, false, 0, D::Write, 4),
    wide(0x3e, "4 x I/O page program, 4-byte address", 4, 4, false, 0, D::Write, 4),
};

/// Data sheet MT25QL128ABA rev. F, tables 19 to 23: dummy clocks as they are from the factory.
constexpr QspiCommand micron[] = {
    plain(0x35, "Enter quad", E::EnterQpi),
    plain(0xf5, "Reset quad", E::ExitQpi),
    plain(0x50, "Clear flag status"),
    plain(0xff, "Release from read enhanced"),
    reading(0x70, "Read flag status"),
    reading(0xaf, "Multiple I/O read ID"),
    reading(0x85, "Read volatile configuration"),
    writing(0x81, "Write volatile configuration", E::Configuration),
    reading(0x65, "Read enhanced volatile configuration"),
    writing(0x61, "Write enhanced volatile configuration"),
    reading(0xb5, "Read nonvolatile configuration"),
    writing(0xb1, "Write nonvolatile configuration"),
    wide(0xbb, "Dual I/O fast read", asSet, 2, false, 8, D::Read, 2),
    wide(0xbc, "Dual I/O fast read, 4-byte address", 4, 2, false, 8, D::Read, 2),
    wide(0xeb, "Quad I/O fast read", asSet, 4, false, 10, D::Read, 4),
    wide(0xec, "Quad I/O fast read, 4-byte address", 4, 4, false, 10, D::Read, 4),
    doubled(wide(0x3d, "DTR dual output fast read", asSet, 1, false, 6, D::Read, 2)),
    doubled(wide(0xbd, "DTR dual I/O fast read", asSet, 2, false, 6, D::Read, 2)),
    doubled(wide(0xbe, "DTR dual I/O fast read, 4-byte address", 4, 2, false, 6, D::Read, 2)),
    doubled(wide(0x6d, "DTR quad output fast read", asSet, 1, false, 6, D::Read, 4)),
    doubled(wide(0xed, "DTR quad I/O fast read", asSet, 4, false, 8, D::Read, 4)),
    doubled(wide(0xee, "DTR quad I/O fast read, 4-byte address", 4, 4, false, 8, D::Read, 4)),
    wide(0xa2, "Dual input fast program", asSet, 1, false, 0, D::Write, 2),
    wide(0xd2, "Extended dual input fast program", asSet, 2, false, 0, D::Write, 2),
    wide(0x38, "Extended quad input fast program", asSet, 4, false, 0, D::Write, 4),
    wide(0x3e, "Extended quad input fast program, 4-byte address", 4, 4, false, 0, D::Write, 4),
};

const QspiCommand *find(std::span<const QspiCommand> list, std::uint8_t code)
{
    const auto it = std::find_if(list.begin(), list.end(), [code](const QspiCommand &one) { return one.code == code; });
    return it == list.end() ? nullptr : &*it;
}

} // namespace

const QspiCommand *findCommand(QspiSet set, std::uint8_t code, bool isQpi)
{
    const QspiCommand *own = nullptr;
    switch (set) {
    case QspiSet::Winbond:
        own = isQpi ? find(winbondQpi, code) : nullptr;
        break;
    case QspiSet::Macronix:
        own = find(macronix, code);
        break;
    case QspiSet::Micron:
        own = find(micron, code);
        break;
    }
    return own != nullptr ? own : find(common, code);
}
