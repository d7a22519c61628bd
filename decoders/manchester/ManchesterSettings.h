#pragma once

#include "common/BitOrder.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// How a bit is coded by edges.
enum class BiphaseCode : std::uint8_t {
    Manchester,   ///< an edge in the middle, whose direction is the bit
    Differential, ///< an edge in the middle, and one at the begin for a 0 (IEEE 802.5, 5.1)
    Mark,         ///< an edge at the begin, and one in the middle for a 1 (IEC 60958-1, 4.3)
    Space,        ///< an edge at the begin, and one in the middle for a 0
};

/// Which edge in the middle of a bit is a 1.
enum class ManchesterSense : std::uint8_t { Auto, Rising, Falling };

/// The level of the line while it sends a mark: it rests at the other one.
enum class ManchesterPolarity : std::uint8_t { Auto, High, Low };

/// How the bits of a run are shown.
enum class ManchesterFormat : std::uint8_t { Words, Ascii };

/// The settings of a line with a code that carries its clock.
class ManchesterSettings final : public lux::Settings {
public:
    static constexpr std::int32_t highestRate = 500000000; ///< bits/s
    static constexpr std::int32_t mostWordBits = 64;

    ManchesterSettings();

    lux::ChannelSetting data;
    lux::ChoiceSetting<BiphaseCode> decodeAs;
    lux::ChoiceSetting<ManchesterSense> convention;
    lux::ChoiceSetting<ManchesterPolarity> polarity;
    lux::IntegerSetting bitrate; ///< bits/s, 0 to find it
    lux::TextSetting preamble;   ///< 0 and 1, or "auto" for none
    lux::IntegerSetting bits;    ///< of a word, 0 for a run as a whole
    lux::ChoiceSetting<lux::BitOrder> bitOrder;
    lux::ChoiceSetting<ManchesterFormat> format;

    /// The bits from which on a run is shown; empty for all of it.
    [[nodiscard]] std::string preambleBits() const;

protected:
    [[nodiscard]] std::string check() const override;
};
