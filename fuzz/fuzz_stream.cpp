// Whatever a device streams, and however its buffers cut it, the capture is the part of the stream around the trigger,
// the store can be closed and asked, and no memory is left behind.

#include "acquisition/SmpCnvtTransfer.h"
#include "acquisition/SmpCtrlTransfer.h"
#include "acquisition/SmpHost.h"
#include "store/NaiveTrigger.h"
#include "support/FakeCapture.h"

#include <cstdlib>

namespace {

constexpr std::size_t headSize = 8; // format and channels; four codes; samples before the trigger; depth; buffers
constexpr std::int64_t budget = std::int64_t(1) << 40;
constexpr int group = SmpStreamWindow::groupSamples;

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// The samples of the stream's whole groups, or of all its bytes.
std::vector<std::uint32_t> samplesOf(const std::vector<std::uint8_t> &stream, int chns, bool bytes8)
{
    if (bytes8) {
        return {stream.begin(), stream.end()};
    }
    const std::size_t groups = stream.size() / 2 / std::size_t(chns);
    std::vector<std::uint32_t> samples(groups * group, 0);
    for (std::size_t i = 0; i < groups * std::size_t(chns); ++i) {
        const std::uint32_t word = stream[2 * i] | std::uint32_t(stream[2 * i + 1]) << 8;
        for (std::size_t k = 0; k < std::size_t(group); ++k) {
            samples[i / std::size_t(chns) * std::size_t(group) + k] |= (word >> k & 1) << i % std::size_t(chns);
        }
    }
    return samples;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    if (size < headSize) {
        return 0;
    }
    memBudget = budget;
    SmpRunSettings settings;
    settings.bytes8 = (bytes[0] & 1) != 0;
    const int chns = settings.bytes8 ? 8 : 1 + bytes[0] / 2 % 16;
    settings.frequency = 1000000;
    settings.depth = 1 + bytes[6] * std::int64_t(7);
    settings.preTrig = std::min<std::int64_t>(bytes[5] * std::int64_t(7), settings.depth - 1);
    settings.enable.assign(std::size_t(chns), 1);
    settings.trig.assign(std::size_t(chns), 0);
    bool edge = false; // no more than one, as the settings allow
    for (int i = 1; i <= 4; ++i) {
        const int code = bytes[i] >> 5;
        const bool isEdge = code == smpTrigCode::risingEdge || code == smpTrigCode::fallingEdge;
        const auto chn = std::size_t(bytes[i] % chns);
        if (settings.trig[chn] == 0 && !(isEdge && edge)) {
            settings.trig[chn] = code;
            edge = edge || isEdge;
        }
    }

    SmpHost host;
    host.smpData = std::make_unique<SmpData>(chns, 0);
    SmpCnvtTransfer converter(host);
    SmpCtrlTransfer control(host, converter);
    FakeDevice device;
    FakeBulk bulk;
    bulk.stream.assign(bytes + headSize, bytes + size);
    bulk.sizes = {2 + 2 * (bytes[7] & 15), 2 + 2 * (bytes[7] >> 4), 34};
    bulk.device = &device;
    bulk.setCallback(&control);
    control.startRun(settings, device, bulk);
    control.join();
    converter.join();

    const std::vector<std::uint32_t> samples = samplesOf(bulk.stream, chns, settings.bytes8);
    const std::int64_t trigger = naiveTrigger::find(samples, naiveTrigger::firstChns(chns), settings.trig);
    SmpData &data = *host.smpData;
    require(data.complete() == (data.smpCount() > 0));
    if (trigger >= 0 && data.complete()) {
        const std::int64_t start = trigger > settings.preTrig ? (trigger - settings.preTrig) / group * group : 0;
        require(data.trgPos() == trigger - start);
        require(data.smpCount() <= settings.depth);
        for (int chn = 0; chn < chns; ++chn) {
            SmpEdgeCursor cursor;
            for (std::int64_t pos = 0; pos < data.smpCount(); ++pos) {
                require(data.locate(chn, pos, cursor) == int(samples[std::size_t(start + pos)] >> chn & 1));
            }
        }
    }
    data.clear();
    require(memBudget == budget && host.smpBufs.count() == 0);
    return 0;
}
