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
