#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

enum class UsbSpeed : std::uint8_t { Auto, Low, Full };

/// The settings of a USB bus.
class UsbSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Pcap = 1, Transactions = 2 };

    UsbSettings();

    lux::ChannelSetting dp;
    lux::ChannelSetting dm;
    lux::ChoiceSetting<UsbSpeed> speed;
};
