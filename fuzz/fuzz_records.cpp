// What a device sends, whatever it is, must leave a capture that can be closed, asked and drawn.

#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

namespace {

/// Decodes `bytes` as the format that `format` names.
void decode(SmpData &data, int format, std::span<const std::uint8_t> bytes, std::int32_t start)
{
    std::uint32_t consumed = 0;
    std::int64_t count = 0;
    const bool stored = format == 0   ? data.addMixed16(bytes, consumed)
                        : format == 1 ? data.addRle16(bytes, consumed)
                        : format == 2 ? data.addRle32(bytes, consumed)
                        : format == 3 ? data.addBytes8(bytes, start, count)
                                      : data.addSliced(bytes, start, count);
    if (!stored) {
        std::abort(); // the budget is ample
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    constexpr std::size_t headSize = 4; // format, channels and start; split; trigger; end
    constexpr int formats = 5;
    if (size < headSize) {
        return 0;
    }
    memBudget = std::int64_t(1) << 40;
    const int format = bytes[0] % formats;
    SmpData data(1 + bytes[0] / formats % 33, 2);
    std::vector<std::uint8_t> enable(std::size_t(data.chnCount), 1);
    enable[bytes[1] % enable.size()] = bytes[2] & 1;
    data.begin(bytes[2], 1000000, enable);

    const std::span<const std::uint8_t> stream(bytes + headSize, size - headSize);
    const std::size_t split = std::min<std::size_t>(bytes[1], stream.size());
    decode(data, format, stream.first(split), bytes[2] % 8);
    decode(data, format, stream.subspan(split), -1);
    const std::int64_t end = bytes[3] < 128 ? data.smpCount() : bytes[3] - 128;
    data.finish(end);

    std::array<SmpWaveRun, 100> runs{};
    for (int chn = 0; chn < data.chnCount; ++chn) {
        SmpEdgeInfo info{};
        const bool present = enable[std::size_t(chn)] != 0;
        if (present != (data.edgeNeighbours(chn, data.smpCount() / 2, info) == 0) ||
            data.lastPosition(chn) != (present ? data.smpCount() : -1) ||
            data.waveRuns(chn, -1.5, double(data.smpCount() + 1) / 90, int(runs.size()), runs.data()) >
                int(runs.size())) {
            std::abort();
        }
    }
    data.clear();
    if (memBudget != std::int64_t(1) << 40) {
        std::abort();
    }
    return 0;
}
