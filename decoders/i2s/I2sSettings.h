#pragma once

#include "common/BitOrder.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// How the word select tells where words begin.
enum class I2sFormat : std::uint8_t {
    I2s,   ///< the highest bit one clock behind each change
    Left,  ///< at each change
    Right, ///< the lowest bit right before each change
    DspA,  ///< the first slot one clock behind the rise
    DspB,  ///< the first slot at the rise
    Tdm,   ///< as DSP A, slots are counted from 1
};

enum class I2sEdge : std::uint8_t { Rising, Falling };

/// The level of the word select that means left.
enum class I2sLeft : std::uint8_t { Usual, Low, High };

/// The settings of a serial audio bus.
class I2sSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Wave = 1 };
    static constexpr std::int32_t mostBits = 64;
    static constexpr std::int32_t mostSlots = 64;

    I2sSettings();

    lux::ChannelSetting sck;
    lux::ChannelSetting ws;
    lux::ChannelSetting sd;
    lux::ChoiceSetting<I2sFormat> format;
    lux::IntegerSetting bits;      ///< of a word, 0 for all that are there
    lux::IntegerSetting slotCount; ///< of a frame, 0 for as many as there are
    lux::IntegerSetting slotWidth; ///< clocks of a slot, 0 for those of a word
    lux::ChoiceSetting<I2sEdge> edge;
    lux::ChoiceSetting<lux::BitOrder> bitOrder;
    lux::ChoiceSetting<I2sLeft> left;
    lux::BoolSetting isSigned;

    /// Two words a frame, one for each level of the word select.
    [[nodiscard]] bool isStereo() const;
    /// The number of the first slot.
    [[nodiscard]] unsigned firstSlot() const { return format == I2sFormat::Tdm ? 1 : 0; }
    /// Whether a high word select means left.
    [[nodiscard]] bool isLeftHigh() const;

protected:
    [[nodiscard]] std::string check() const override;
};
