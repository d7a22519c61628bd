// Feeds outside bytes to the reader of a value change dump. Byte 0 tells whether channels are picked;
// the rest is the file.

#include "ForeignInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    if (size < 1) {
        return 0;
    }
    ForeignOptions options;
    if ((bytes[0] & 1) != 0) {
        options.channels = QStringList{QStringLiteral("3"), QStringLiteral("0-1")};
    }
    return readAnything(bytes + 1, size - 1, ForeignKind::Vcd, options);
}
