// Feeds outside bytes to the reader of a data file's binary part, and what it accepts to queries and to the writer.
//
// Byte 0 chooses the channel count of the device, byte 1 the memory budget; the rest is the binary part.

#include "files/DataBlocks.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QBuffer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

void require(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

/// Every channel of a closed capture ends in one end mark, and answers within its range.
void checkTree(const SmpData &data)
{
    for (int chn = 0; chn < data.chnCount; ++chn) {
        if (data.chnRoots()[std::size_t(chn)] == nullptr) {
            continue;
        }
        require(data.lastPosition(chn) == data.smpCount(), "the end mark stands at the end");
        std::int64_t previous = -1;
        const std::int64_t count = std::min<std::int64_t>(data.entryCount(chn), 1000);
        for (std::int64_t i = 0; i < count; ++i) {
            const std::int64_t entry = data.entryAt(chn, {}, i);
            require(entry > previous && entry <= data.smpCount(), "entries increase up to the end");
            previous = entry;
        }
        for (const std::int64_t pos : {std::int64_t(0), data.smpCount() / 2, data.smpCount()}) {
            SmpEdgeCursor cursor;
            const int level = data.locate(chn, pos, cursor);
            require(level == 0 || level == 1, "each sample has a level");
        }
    }
}

QByteArray write(const SmpData &data, std::int64_t start, std::int64_t end)
{
    QByteArray bytes;
    QBuffer out(&bytes);
    out.open(QIODevice::WriteOnly);
    const std::vector<std::uint8_t> all(std::size_t(data.chnCount), 1);
    require(writeDataBlocks(out, data, {all.data(), start, end}) == DataBlocksResult::Done,
            "a closed capture is saved");
    return bytes;
}

/// What was saved loads again, and saves to the same bytes.
void checkRoundTrip(const SmpData &data, std::int64_t start, std::int64_t end)
{
    QByteArray bytes = write(data, start, end);
    QBuffer in(&bytes);
    in.open(QIODevice::ReadOnly);
    SmpData back(data.chnCount, 0);
    require(readDataBlocks(in, back) == DataBlocksResult::Done, "what was saved loads");
    back.finish(back.smpCount());
    checkTree(back);
    require(write(back, 0, back.smpCount() - 1) == bytes, "and saves to the same bytes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    constexpr std::int64_t plenty = std::int64_t(256) << 20;
    if (size < 2) {
        return 0;
    }
    memBudget = bytes[1] == 0 ? 0 : plenty;
    const std::int64_t before = memBudget;
    QByteArray part(reinterpret_cast<const char *>(bytes + 2), int(size - 2));
    QBuffer device(&part);
    device.open(QIODevice::ReadOnly);

    SmpData data(1 + bytes[0] % 32, 0);
    const auto result = readDataBlocks(device, data);
    require(!data.complete(), "a load does not close the capture by itself");
    memBudget += plenty - before;
    if (result == DataBlocksResult::Done) {
        data.finish(data.smpCount());
        checkTree(data);
        const std::int64_t end = data.smpCount();
        checkRoundTrip(data, 0, std::max<std::int64_t>(end - 1, 0));
        checkRoundTrip(data, end / 3, end / 2);
        checkRoundTrip(data, end, end);
    }
    data.clear();
    require(memBudget == plenty, "all memory has been given back");
    return 0;
}
