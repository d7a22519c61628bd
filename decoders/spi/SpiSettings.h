#pragma once

#include "common/BitOrder.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// When a device is selected.
enum class SpiSelect : std::uint8_t {
    Low,
    High,
    None, ///< always: words follow each other, or are told apart by pauses
};

/// The settings of a serial peripheral interface.
class SpiSettings final : public lux::Settings {
public:
    static constexpr std::int32_t mostBits = 64; ///< of a word
    enum Export : std::uint32_t { MosiWords = 1, MisoWords = 2, Transfers = 3 };

    SpiSettings();

    lux::ChannelSetting clk;
    lux::ChannelSetting mosi;
    lux::ChannelSetting miso;
    lux::ChannelSetting cs;
    lux::NumberListSetting cpol;
    lux::NumberListSetting cpha;
    lux::IntegerSetting word; ///< bits
    lux::ChoiceSetting<lux::BitOrder> bitOrder;
    lux::ChoiceSetting<SpiSelect> csPolarity;
    lux::IntegerSetting idleTime; ///< ns, 0 for none

    /// The select line, undefined where it is not looked at.
    [[nodiscard]] Channel select() const;

protected:
    [[nodiscard]] std::string check() const override;
};
