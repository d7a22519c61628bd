#pragma once

#include "LinFrame.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// Which version of LIN the bus has: since 2.0 the checksum is over the identifier, too.
enum class LinVersion : std::uint8_t { Version1 = 1, Version2 = 2 };

enum class LinChecksumRule : std::uint8_t { ByVersion, Classic, Enhanced };

/// The settings of a LIN bus.
class LinSettings final : public lux::Settings {
public:
    static constexpr std::int32_t highestRate = 1000000; ///< bits/s; the standard ends at 20000
    enum Export : std::uint32_t { Pcap = 1 };

    LinSettings();

    lux::ChannelSetting rx;
    lux::IntegerSetting baudrate; ///< bits/s, 0 to find it
    lux::ChoiceSetting<LinVersion> version;
    lux::ChoiceSetting<LinChecksumRule> checksum;

    /// The checksum that a frame with this identifier should have.
    [[nodiscard]] LinChecksum checksumFor(std::uint8_t id) const;
};
