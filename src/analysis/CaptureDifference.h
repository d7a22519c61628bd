#pragma once

#include "store/SmpData.h"

#include <cstdint>

/// Where two captures differ on a channel. Positions are samples of the first capture.
struct ChannelDifference {
    std::int64_t edgesA = 0;    ///< compared edges of the first capture
    std::int64_t edgesB = 0;    ///< ... of the second
    std::int64_t differing = 0; ///< edges of either that the other does not have
    std::int64_t first = -1;    ///< position of the first difference; -1 for none
    bool inA = false;           ///< the first difference is an edge that the first capture has, else one of the second
    bool startLevel = false;    ///< the first difference is the level at the start

    [[nodiscard]] bool isSame() const { return first < 0; }
};

/// What of two captures is compared.
struct DifferenceRange {
    std::int64_t startA = 0;    ///< first sample of the first capture
    std::int64_t startB = 0;    ///< the sample of the second that lies on it
    std::int64_t samples = 0;   ///< how many are compared
    std::int64_t tolerance = 0; ///< samples by which an edge may be earlier or later
};

/// Compares one channel, which both captures must have. Edges of the same direction that are no further apart than the
/// tolerance are the same one; the others differ. An edge within the tolerance of either end of the range
/// may have its counterpart outside it, and is no difference if it has none inside. Under SmpReadLocks or leases of
/// both. Any thread. Cost: some nanoseconds an edge.
[[nodiscard]] ChannelDifference compareChannel(const SmpData &a, const SmpData &b, int chn,
                                               const DifferenceRange &range);
