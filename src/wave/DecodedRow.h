#pragma once

#include "controls/PixelScale.h"
#include "wave/BubbleTexts.h"
#include "wave/DecodedSource.h"

#include <cstdint>
#include <vector>

/// The part of the time axis that a row shows.
struct DecodedView {
    double viewStart = 0.0;    ///< sample at logical pixel 0
    double ratio = 1.0;        ///< samples per logical pixel
    int width = 0;             ///< of the row, device pixels
    std::int64_t smpCount = 0; ///< of the capture
    PixelScale scale;

    [[nodiscard]] double end() const; ///< the first sample right of the row, at most `smpCount`
    [[nodiscard]] double step() const { return ratio < 1.0 ? 1.0 : ratio; } ///< samples between two probes
    /// The device column of a sample.
    [[nodiscard]] std::int64_t column(double sample) const;
};

/// A frame's box. Device pixels from the row's left, which may lie far outside of the row.
struct DecodedBubble {
    std::int64_t x1 = 0;
    std::int64_t x2 = 0;
    QStaticText text;  ///< what fits; empty for an empty box
    int textWidth = 0; ///< device pixels; 0 without a text
};

/// What is drawn on one row.
struct DecodedRow {
    std::vector<DecodedBubble> bubbles; ///< decoder by decoder, each in the order of time
    std::vector<DecodedMarker> markers;

    void clear();
};

/// Adds the boxes of a decoder's frames that are a pixel wide at least, each with the widest of its texts that fits.
/// Texts are asked for only where a box can hold one, or where the decoder has frames on several channels: a frame
/// without a text gets no box.
/// Cost: at most two queries a logical pixel and two a box, however many frames are in view.
void addBubbles(const DecodedChannel &decoded, const DecodedView &view, BubbleTexts &texts,
                std::vector<DecodedBubble> &out);

/// Adds the markers that have room around them: where they stand closer than 11 logical pixels there is none.
/// Cost: as addBubbles().
void addMarkers(const DecodedChannel &decoded, const DecodedView &view, std::vector<DecodedMarker> &out);
