#include "wave/SeenTransitions.h"

#include "store/SmpData.h"
#include "wave/RowColumn.h"
#include "wave/WaveDataGen.h"

#include <algorithm>

bool SeenTransitions::areIn(const QRect &seen, const RowColumn &rows, const WaveDataGen &waves)
{
    constexpr int transition = 2; // of SmpWaveRun
    const auto isOne = [](const SmpWaveRun &run) { return run.kind == transition; };
    const QVector<int> channels = rows.enabledChannels();
    return std::any_of(channels.begin(), channels.end(), [&](int chn) {
        const auto runs = waves.digLine(chn);
        return rows.placeOf(chn).intersects(seen) && std::any_of(runs.begin(), runs.end(), isOne);
    });
}

bool SeenTransitions::areAnywhere(const RowColumn &rows, const WaveDataGen &waves)
{
    const SmpData *capture = waves.source();
    const SmpReadLock lock(capture);
    const QVector<int> channels = rows.enabledChannels();
    return lock && std::any_of(channels.begin(), channels.end(), [capture](int chn) {
               const std::int64_t edge = capture->nextEdge(chn, 0);
               return edge > 0 && edge < capture->smpCount();
           });
}
