#pragma once

#include <array>
#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// The settings of an SD or SDIO bus.
class SdioSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Commands = 1 };

    SdioSettings();

    lux::ChannelSetting clk;
    lux::ChannelSetting cmd;
    lux::ChannelSetting d0;
    lux::ChannelSetting d1;
    lux::ChannelSetting d2;
    lux::ChannelSetting d3;
    lux::NumberListSetting width; ///< data lines in use: 1 or 4, 0 for as many as have a channel
    lux::BoolSetting ddr;         ///< data at both edges of the clock

    [[nodiscard]] std::array<Channel, 4> dataLines() const { return {d0, d1, d2, d3}; }
    [[nodiscard]] unsigned usedLines() const; ///< 1 or 4

protected:
    [[nodiscard]] std::string check() const override;

private:
    [[nodiscard]] bool hasAll() const { return d1.isDefined() && d2.isDefined() && d3.isDefined(); }
};
