#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

/// Who the instruments are on the bus.

constexpr std::uint16_t usbVendorId = 0x77A1;

/// The product ids of all instruments, with and without their firmware.
constexpr std::array<std::uint16_t, 10> usbProductIds = {0x01A1, 0x01A2, 0x01A3, 0x01A4, 0x02A1,
                                                         0x02A2, 0x02A3, 0x03A1, 0x03A2, 0x03A3};

/// Ours, and a product that this program knows. Pure.
[[nodiscard]] constexpr bool isUsbInstrument(std::uint16_t vendor, std::uint16_t product)
{
    return vendor == usbVendorId &&
           std::find(usbProductIds.begin(), usbProductIds.end(), product) != usbProductIds.end();
}

/// The end point that an instrument's data come from. Without its firmware it has none. Pure.
[[nodiscard]] constexpr std::uint8_t usbDataPipe(std::uint16_t product)
{
    constexpr std::uint16_t productSmall = 0x01A3;
    return product == productSmall ? 0x82 : 0x86;
}
