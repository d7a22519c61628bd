#pragma once

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>

/// The settings of an SMBus.
class SmbusSettings final : public lux::Settings {
public:
    enum Export : std::uint32_t { Transactions = 1 };

    SmbusSettings();

    lux::ChannelSetting scl;
    lux::ChannelSetting sda;
};
