// With libdeflate. Without it DeflateNone.cpp takes this file's place.

#include "files/Deflate.h"

#include <libdeflate.h>
#include <memory>

namespace Deflate {

namespace {

struct Free {
    void operator()(libdeflate_compressor *one) const { libdeflate_free_compressor(one); }
    void operator()(libdeflate_decompressor *one) const { libdeflate_free_decompressor(one); }
};

} // namespace

bool isBuilt()
{
    return true;
}

bool pack(std::span<const std::uint8_t> block, std::vector<std::uint8_t> &packed)
{
    constexpr int fastest = 1;
    const std::unique_ptr<libdeflate_compressor, Free> compressor(libdeflate_alloc_compressor(fastest));
    if (!compressor) {
        return false;
    }
    packed.resize(libdeflate_deflate_compress_bound(compressor.get(), block.size()));
    packed.resize(
        libdeflate_deflate_compress(compressor.get(), block.data(), block.size(), packed.data(), packed.size()));
    return !packed.empty();
}

bool unpack(std::span<const std::uint8_t> packed, std::span<std::uint8_t> block)
{
    const std::unique_ptr<libdeflate_decompressor, Free> decompressor(libdeflate_alloc_decompressor());
    return decompressor && libdeflate_deflate_decompress(decompressor.get(), packed.data(), packed.size(), block.data(),
                                                         block.size(), nullptr) == LIBDEFLATE_SUCCESS;
}

std::uint32_t checksum(std::span<const std::uint8_t> block)
{
    return libdeflate_crc32(0, block.data(), block.size());
}

} // namespace Deflate
