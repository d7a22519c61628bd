#pragma once

#include "store/SmpData.h"

#include <QString>

#include <cstdint>

/// How often a channel changes in a range of samples.
struct PulseCounts {
    std::int64_t rising = 0;
    std::int64_t falling = 0;
    std::int64_t positive = 0; ///< high pulses with both edges in the range
    std::int64_t negative = 0; ///< low pulses with both edges in the range
    bool operator==(const PulseCounts &) const = default;
};

/// The counts that follow from the edges of a range alone.
/// @param edges        edges behind the start of the range, up to its end included
/// @param edgeAtStart  an edge stands exactly on the start; it is counted in only if another one follows
/// @param level        0 or 1, at the start, after an edge that stands there
[[nodiscard]] PulseCounts pulseCounts(std::int64_t edges, bool edgeAtStart, int level);

/// Counts one channel between two samples, `from` at most `to`. Under a SmpReadLock. Cost: some searches in the
/// channel's tree, whatever the number of edges.
/// @return false for a channel without data or a position outside of it; `counts` then stays as it is
[[nodiscard]] bool countPulses(const SmpData &capture, int chn, std::int64_t from, std::int64_t to,
                               PulseCounts &counts);

/// Four fields, the order that of PulseCounts; "###" in each where nothing could be counted.
[[nodiscard]] QString pulseCountFields(const SmpData &capture, int chn, std::int64_t from, std::int64_t to);
