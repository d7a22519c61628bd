#pragma once

#include <cstdint>
#include <span>
#include <vector>

/// Packing and unpacking of whole blocks in the format of RFC 1951, by a library that takes a third of the usual one's
/// time because it has all of a block in memory. Private to this folder. Free functions without state; any thread.
///
/// A build without that library has none of it: who packs or unpacks goes the usual way then.
namespace Deflate {

/// Bytes of a block that is packed or unpacked at once, at most.
inline constexpr std::int64_t blockMax = std::int64_t(16) << 20;

[[nodiscard]] bool isBuilt();
/// Packs quickly rather than well. @param packed  out; as much room as the block may need, cut to what it took
/// @return false when memory is spent
[[nodiscard]] bool pack(std::span<const std::uint8_t> block, std::vector<std::uint8_t> &packed);
/// @return false if `packed` is damaged, or not exactly as much as `block` holds
[[nodiscard]] bool unpack(std::span<const std::uint8_t> packed, std::span<std::uint8_t> block);
/// CRC-32 as archives have it (APPNOTE.TXT 6.3.10, section 4.4.7).
[[nodiscard]] std::uint32_t checksum(std::span<const std::uint8_t> block);

} // namespace Deflate
