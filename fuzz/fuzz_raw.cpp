// Feeds outside bytes to the reader of a file of plain bytes. Byte 0 tells the bytes of a sample;
// the rest is the file.

#include "ForeignInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    if (size < 1) {
        return 0;
    }
    ForeignOptions options;
    options.rate = 1'000'000;
    options.unitSize = bytes[0] % 6;
    return readAnything(bytes + 1, size - 1, ForeignKind::Raw, options);
}
