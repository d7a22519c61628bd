#pragma once

#include "QspiCommands.h"

#include <array>
#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// On how many lines command, address and data of commands are sent that the set does not name.
enum class QspiMode : std::uint8_t {
    Auto, ///< all on one line
    M112,
    M122,
    M114,
    M144,
    M444, ///< no commands: data alone, on four lines
};

enum class QspiOrder : std::uint8_t { Big, Little };

/// The settings of a serial flash memory.
class QspiSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { ReadData = 1, WrittenData = 2, Transfers = 3 };
    static constexpr std::int32_t dummyOfCommand = -1;

    QspiSettings();

    lux::ChannelSetting clk;
    lux::ChannelSetting cs;
    lux::ChannelSetting io0;
    lux::ChannelSetting io1;
    lux::ChannelSetting io2;
    lux::ChannelSetting io3;
    lux::TextSetting io; ///< the data lines in one text
    lux::ChoiceSetting<QspiSet> set;
    lux::BoolSetting qpi;
    lux::ChoiceSetting<QspiMode> mode;
    lux::NumberListSetting address; ///< bytes, 0 to follow the commands
    lux::IntegerSetting dummy;      ///< clocks
    lux::IntegerSetting glitch;     ///< samples
    lux::NumberListSetting clockEdge;
    lux::IntegerSetting word; ///< clocks
    lux::ChoiceSetting<QspiOrder> wordOrder;

    /// IO0 to IO3: the channels, and where these are not chosen those of the text.
    [[nodiscard]] std::array<Channel, 4> lines() const;

protected:
    [[nodiscard]] std::string check() const override;
};
