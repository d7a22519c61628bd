#pragma once

#include <cstdint>
#include <string_view>

/// Chips whose commands differ.
enum class QspiSet : std::uint8_t { Winbond, Macronix, Micron };

/// How one command is sent: which phases there are behind its code, and on how many lines.
struct QspiCommand {
    enum class Data : std::uint8_t { None, Read, Write };
    enum class Effect : std::uint8_t {
        None,
        FourBytes,
        ThreeBytes,
        EnterQpi,
        ExitQpi,
        ReadParameters,
        Configuration,
        Reset
    };
    static constexpr std::uint8_t addressAsSet = 255;

    std::uint8_t code = 0;
    std::string_view name;
    std::uint8_t addressBytes = 0; ///< or addressAsSet
    std::uint8_t addressLines = 1;
    bool hasMode = false;        ///< a byte behind the address, on its lines
    std::uint8_t dummyBytes = 0; ///< on the lines of the data
    std::uint8_t dummyClocks = 0;
    Data data = Data::None;
    std::uint8_t dataLines = 1;
    bool isDouble = false; ///< address, mode and data at both edges of the clock
    Effect effect = Effect::None;

    [[nodiscard]] bool isFastRead() const { return data == Data::Read && (hasMode || dummyClocks > 0); }
};

/// The command of a code; null for one that the set does not have. Lives as long as the program.
[[nodiscard]] const QspiCommand *findCommand(QspiSet set, std::uint8_t code, bool isQpi);
