// A build without libdeflate.

#include "files/Deflate.h"

namespace Deflate {

bool isBuilt()
{
    return false;
}

bool pack(std::span<const std::uint8_t>, std::vector<std::uint8_t> &)
{
    return false;
}

bool unpack(std::span<const std::uint8_t>, std::span<std::uint8_t>)
{
    return false;
}

std::uint32_t checksum(std::span<const std::uint8_t>)
{
    return 0;
}

} // namespace Deflate
