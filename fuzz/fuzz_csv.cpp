// Feeds outside bytes to the reader of a file of comma-separated values. Byte 0 tells whether a rate is told;
// the rest is the file.

#include "ForeignInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    if (size < 1) {
        return 0;
    }
    ForeignOptions options;
    options.rate = (bytes[0] & 1) != 0 ? 1'000'000 : 0;
    return readAnything(bytes + 1, size - 1, ForeignKind::Csv, options);
}
