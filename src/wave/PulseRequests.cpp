#include "wave/PulseRequests.h"

#include "analysis/PulseCount.h"
#include "controls/Truncate.h"
#include "wave/MarkerBoard.h"

#include <algorithm>

PulseRequests *gPulseRequests = nullptr;

namespace {

struct SampleRange {
    std::int64_t from = 0;
    std::int64_t to = 0;
};

/// The range of a time index. @return false for a pair that is not shown
bool rangeOf(int time, std::int64_t samples, const QVector<ShownPair> &pairs, SampleRange &range)
{
    if (time == 0) {
        range = {0, samples};
        return true;
    }
    const auto pair =
        std::find_if(pairs.begin(), pairs.end(), [time](const ShownPair &each) { return each.group == time - 1; });
    if (pair == pairs.end()) {
        return false;
    }
    const auto ends = std::minmax({truncated64(pair->firstSample), truncated64(pair->secondSample)});
    range = {ends.first, ends.second};
    return true;
}

} // namespace

QStringList countedRequests(const QStringList &requests, const QVector<ShownPair> &pairs, const SmpData *capture)
{
    const SmpReadLock lock(capture);
    if (!lock || capture->smpCount() < 1) {
        return {};
    }
    QStringList results;
    for (const QString &request : requests) {
        const int chn = request.section(QLatin1Char(','), 0, 0).toInt();
        const int time = request.section(QLatin1Char(','), 1, 1).toInt();
        SampleRange range;
        if (rangeOf(time, capture->smpCount(), pairs, range)) {
            results.append(request + QLatin1Char(',') + pulseCountFields(*capture, chn, range.from, range.to));
        }
    }
    return results;
}
