#include "analysis/PulseCount.h"

PulseCounts pulseCounts(std::int64_t edges, bool edgeAtStart, int level)
{
    if (edges <= 0) {
        return {};
    }
    const std::int64_t atStart = edgeAtStart ? 1 : 0;
    const std::int64_t half = edges / 2;
    const std::int64_t otherHalf = edges - half;
    const std::int64_t open = otherHalf - (1 - atStart); // pulses of the start's level that begin in the range
    if (level != 0) {
        return {half + atStart, otherHalf, open, half};
    }
    return {otherHalf, half + atStart, half, open};
}

bool countPulses(const SmpData &capture, int chn, std::int64_t from, std::int64_t to, PulseCounts &counts)
{
    const std::int64_t edges = capture.edgeCount(chn, from, to);
    SmpEdgeCursor cursor;
    const int level = edges < 0 ? -1 : capture.locate(chn, from, cursor);
    if (level < 0) {
        return false;
    }
    counts = pulseCounts(edges, capture.isEdge(chn, from), level);
    return true;
}

QString pulseCountFields(const SmpData &capture, int chn, std::int64_t from, std::int64_t to)
{
    PulseCounts counts;
    if (!countPulses(capture, chn, from, to, counts)) {
        return QStringLiteral("###,###,###,###");
    }
    return QStringLiteral("%1,%2,%3,%4")
        .arg(counts.rising)
        .arg(counts.falling)
        .arg(counts.positive)
        .arg(counts.negative);
}
