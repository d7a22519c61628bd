#pragma once

#include "emulator/Bench.h"
#include "usbip/UsbIpSession.h"

#include <string>

/// The host's side of USB/IP, written from the protocol's description.
namespace usbIpClient {

using bench::Bytes;
using bench::SetupPacket;

inline Bytes big(std::uint32_t value)
{
    return {std::uint8_t(value >> 24), std::uint8_t(value >> 16), std::uint8_t(value >> 8), std::uint8_t(value)};
}

inline std::uint32_t bigAt(const Bytes &bytes, std::size_t at)
{
    return std::uint32_t(bytes.at(at)) << 24 | std::uint32_t(bytes.at(at + 1)) << 16 |
           std::uint32_t(bytes.at(at + 2)) << 8 | bytes.at(at + 3);
}

inline Bytes importRequest(const std::string &name)
{
    Bytes out{0x01, 0x11, 0x80, 0x03, 0, 0, 0, 0};
    out.insert(out.end(), name.begin(), name.end());
    out.resize(8 + 32);
    return out;
}

inline Bytes submit(std::uint32_t sequence, std::uint32_t endpoint, bool toHost, std::uint32_t length,
                    const SetupPacket &setup, const Bytes &data = {})
{
    using bench::operator+;
    const Bytes packet = Bytes{setup.requestType, setup.request} + bench::little(setup.value, 2) +
                         bench::little(setup.index, 2) + bench::little(setup.length, 2);
    return big(1) + big(sequence) + big(0x10002) + big(toHost ? 1 : 0) + big(endpoint) + big(0) + big(length) + big(0) +
           big(0xFFFFFFFF) + big(0) + packet + data;
}

inline Bytes unlink(std::uint32_t sequence, std::uint32_t target)
{
    using bench::operator+;
    return big(2) + big(sequence) + big(0x10002) + big(0) + big(0) + big(target) + Bytes(24);
}

} // namespace usbIpClient
