#pragma once

#include "UsbTypes.h"

#include <string>

namespace emulator {

/// What the USB descriptors of an instrument are made from.
struct DescriptorFacts {
    std::uint16_t product = 0;
    std::uint16_t bcdUsb = 0x0200; ///< told at high speed; at full speed 0x0200 too, as the standard has it
    Speed speed = Speed::High;
    bool firmwareRuns = false; ///< only then are there bulk end points
    std::string productName;
};

/// 18 bytes.
[[nodiscard]] Bytes deviceDescriptor(const DescriptorFacts &facts);
/// The configuration with its one interface and its end points.
[[nodiscard]] Bytes configurationDescriptor(const DescriptorFacts &facts);
/// @return empty for an index that there is not
[[nodiscard]] Bytes stringDescriptor(const DescriptorFacts &facts, std::uint8_t index);

/// Bytes of a bulk packet: 512 at high speed, 64 at full speed.
[[nodiscard]] std::size_t bulkPacketSize(Speed speed);

} // namespace emulator
