#pragma once

#include <corvanlux/analyzer/AnalyzerTypes.h>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// What packets, requests and descriptors are called (Universal Serial Bus Specification 2.0, 8.3.1, 9.3 to 9.6; Device
// Class Definition for Human Interface Devices 1.11, 7).

namespace usb {

inline constexpr std::size_t setupBytes = 8;
inline constexpr unsigned addressBits = 7;
inline constexpr unsigned endpointBits = 4;

/// "SETUP"; "UNKNOWN" for an identifier that is none.
[[nodiscard]] std::string_view packetName(std::uint8_t pid);
/// What a SETUP asks for: "GET_DESCRIPTOR Device, 18 bytes". @param bytes  eight of them
[[nodiscard]] std::string requestText(std::span<const std::uint8_t> bytes, DisplayBase base);
/// Whether the data of a request comes from the device.
[[nodiscard]] bool isDeviceToHost(std::span<const std::uint8_t> bytes);
[[nodiscard]] std::uint16_t lengthOf(std::span<const std::uint8_t> bytes);
/// What the descriptors say that a request has read; empty when it has read none. Harmless with any bytes.
[[nodiscard]] std::string descriptorText(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> data,
                                         DisplayBase base);

} // namespace usb
