#pragma once

#include <array>
#include <corvanlux/analyzer/Decoder.h>
#include <string>

/// The settings of the data lanes of a display link.
class DsiSettings final : public lux::Settings {
public:
    static constexpr std::size_t mostLanes = 4;
    struct Lane {
        Channel p;
        Channel n;
    };

    enum Export : std::uint32_t { Packets = 1 };

    DsiSettings();

    lux::ChannelSetting d0p;
    lux::ChannelSetting d0n;
    lux::ChannelSetting d1p;
    lux::ChannelSetting d1n;
    lux::ChannelSetting d2p;
    lux::ChannelSetting d2n;
    lux::ChannelSetting d3p;
    lux::ChannelSetting d3n;
    lux::IntegerSetting lanes;

    [[nodiscard]] std::array<Lane, mostLanes> lines() const
    {
        return {{{d0p, d0n}, {d1p, d1n}, {d2p, d2n}, {d3p, d3n}}};
    }

protected:
    [[nodiscard]] std::string check() const override;
};
