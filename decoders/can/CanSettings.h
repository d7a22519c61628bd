#pragma once

#include "CanLine.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>
#include <vector>

struct CanRates {
    std::int64_t sample;  ///< Hz
    std::int64_t nominal; ///< bits/s
    std::int64_t data;    ///< bits/s behind a recessive BRS
};

/// The settings of a CAN line.
class CanSettings final : public lux::Settings {
public:
    static constexpr std::int32_t highestRate = 20000000; ///< bits/s
    enum Export : std::uint32_t { CandumpLog = 1, Pcap = 2 };

    CanSettings();

    lux::ChannelSetting rx;
    lux::IntegerSetting baudrate;     ///< bits/s, 0 to find it
    lux::IntegerSetting dataBaudrate; ///< bits/s, 0 to find it
    lux::TextSetting samplePoint;     ///< percent of a bit
    lux::BoolSetting invert;

    /// Thousandths of a bit; 0 when the text is no number within the limits.
    [[nodiscard]] std::int64_t samplePointThousandths() const;
    [[nodiscard]] CanBitTimes bitTimes(const CanRates &rates) const;
    /// The ways to look at the bits, in the order in which they are tried: one, or several for bits of few samples.
    [[nodiscard]] std::vector<CanBitTimes> lookTimes(const CanRates &rates) const;

protected:
    [[nodiscard]] std::string check() const override;
};
