#pragma once

#include <corvanlux/analyzer/ExportWriter.h>
#include <cstdint>

namespace lux {

/// The file head of pcap with times in nanoseconds (draft-ietf-opsawg-pcap, 4), version 2.4.
inline void writePcapHead(ExportWriter &out, std::uint32_t linkType)
{
    constexpr std::uint32_t magicOfNanoseconds = 0xa1b23c4d;
    constexpr std::uint32_t longestPacket = 65535;
    out.little(magicOfNanoseconds, 4);
    out.little(2, 2);
    out.little(4, 2);
    out.little(0, 8);
    out.little(longestPacket, 4);
    out.little(linkType, 4);
}

/// The head of one packet (section 5 there). @param sample  when it began @param length  bytes
inline void writePcapPacketHead(ExportWriter &out, std::int64_t sample, std::int64_t sampleRate, std::size_t length)
{
    constexpr std::int64_t nanoseconds = 1000000000;
    const std::int64_t rest = sample % sampleRate;
    // The rate is at most 10^10 Hz and the rest below it: as one product it would not stay within 64 bits.
    const auto nanos =
        std::int64_t(static_cast<long double>(rest) * nanoseconds / static_cast<long double>(sampleRate));
    out.little(std::uint64_t(sample / sampleRate), 4);
    out.little(std::uint64_t(nanos), 4);
    out.little(length, 4);
    out.little(length, 4);
}

} // namespace lux
