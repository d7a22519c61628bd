#pragma once

#include "common/BitOrder.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// The settings of a test access port.
class JtagSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Vectors = 1 };

    JtagSettings();

    lux::ChannelSetting tck;
    lux::ChannelSetting tms;
    lux::ChannelSetting tdi;
    lux::ChannelSetting tdo;
    lux::ChannelSetting trst;
    lux::ChoiceSetting<lux::BitOrder> bitOrder;
    lux::IntegerSetting cableDelay; ///< ns
    lux::BoolSetting showStates;

protected:
    [[nodiscard]] std::string check() const override;
};
