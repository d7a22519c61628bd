#pragma once

#include <QString>

#include <cstdint>
#include <functional>

/// The samples that a decoded frame covers, both included.
struct DecodedSpan {
    std::int64_t first = 0;
    std::int64_t last = 0;
};

/// A small sign on a row, at a sample. What is not among the types that MarkerGlyphs draws is not drawn.
struct DecodedMarker {
    std::uint64_t sample = 0;
    int type = 0;
};

/// Texts of one frame in the order of their lengths, as UTF-8.
struct DecodedTexts {
    const char *const *texts = nullptr; ///< good until the next call
    std::uint32_t count = 0;
};

/// What one decoder has found so far, as one channel's row shows it: frames and markers, each in the order of time.
///
/// Main thread. While its decoder runs there may be more at each call, and never less. The queries must be logarithmic
/// in the number of results.
class DecodedChannel {
public:
    virtual ~DecodedChannel() = default;

    [[nodiscard]] virtual bool hasBubbles() const = 0;
    /// Its frames stand on other channels too, so that one may say nothing on this one.
    [[nodiscard]] virtual bool sharesFrames() const = 0;
    /// The first and the last frame of those that end past `first` and start at or before `last`.
    /// @return false when there is none; the out values are not touched
    [[nodiscard]] virtual bool framesInRange(std::int64_t first, std::int64_t last, std::uint64_t &firstFrame,
                                             std::uint64_t &lastFrame) const = 0;
    [[nodiscard]] virtual DecodedSpan frame(std::uint64_t index) const = 0;
    /// None when the frame says nothing on this channel.
    [[nodiscard]] virtual DecodedTexts textsOf(std::uint64_t frame) const = 0;

    [[nodiscard]] virtual bool hasMarkers() const = 0;
    [[nodiscard]] virtual std::uint64_t markerCount() const = 0;
    /// The first and the last marker from `first` to `last`, both included; else as framesInRange().
    [[nodiscard]] virtual bool markersInRange(std::int64_t first, std::int64_t last, std::uint64_t &firstMarker,
                                              std::uint64_t &lastMarker) const = 0;
    [[nodiscard]] virtual DecodedMarker marker(std::uint64_t index) const = 0;
};

/// "What is decoded on this channel?" The waves ask it; whoever runs decoders implements it.
///
/// All operations are called on the main thread, while a row is painted or built. They must not change the view.
class DecodedSource {
public:
    virtual ~DecodedSource() = default;
    /// Hands each decoder with results that uses the channel to `visit`, in the order in which they are listed.
    virtual void visit(int chn, const std::function<void(const DecodedChannel &)> &visit) const = 0;
    /// The name of the decoder that uses the channel; empty for none.
    [[nodiscard]] virtual QString chnLabel(int chn) const = 0;
};

/// Null while nothing decodes. Not owned; set on the main thread.
extern DecodedSource *gDecodedSource;
