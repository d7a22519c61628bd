#include "wave/DecodedRow.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

constexpr std::uint64_t mostFramesOfAPixel = 3;
constexpr int leastDots = 11;       ///< a box must be wider to show that its text is cut, pixels at 96 dpi
constexpr int dotsWidth = 10;       ///< pixels at 96 dpi
constexpr double markerRoom = 11.0; ///< logical pixels between two markers that are drawn

/// The first probe, of those that follow each other by `stride` from `probe` on, whose window of `reach` samples holds
/// `sample`, which lies past the first window.
std::int64_t probeBefore(std::int64_t sample, std::int64_t probe, std::int64_t stride, std::int64_t reach)
{
    const std::int64_t beyond = sample - probe - reach; // past the window of the first probe
    return beyond <= 0 ? probe : probe + (beyond + stride - 1) / stride * stride;
}

/// Gives `bubble` the widest of the texts that fit, or dots. @return false when the frame has none at all
bool chooseText(const DecodedTexts &strings, const PixelScale &scale, BubbleTexts &texts, DecodedBubble &bubble)
{
    if (strings.count == 0) {
        return false;
    }
    const std::int64_t room = bubble.x2 - bubble.x1;
    for (std::uint32_t i = 0; i < strings.count; ++i) {
        const BubbleText text = texts.of(strings.texts[i]);
        if (text.width <= room && text.width > bubble.textWidth) {
            bubble.text = text.text;
            bubble.textWidth = text.width;
        }
    }
    if (bubble.textWidth == 0 && room > scale.dp(leastDots)) {
        bubble.text = texts.of("...").text;
        bubble.textWidth = scale.dp(dotsWidth);
    }
    return true;
}

/// Adds the frame's box. @return false when it says nothing on this row
bool addBubble(const DecodedChannel &decoded, std::uint64_t index, const DecodedSpan &frame, const DecodedView &view,
               bool shared, BubbleTexts &texts, std::vector<DecodedBubble> &out)
{
    DecodedBubble bubble;
    bubble.x1 = view.column(double(frame.first));
    bubble.x2 = view.column(double(frame.last));
    bool isSaid = true;
    if (bubble.x2 - bubble.x1 >= texts.narrowest()) {
        isSaid = chooseText(decoded.textsOf(index), view.scale, texts, bubble);
    } else if (shared) { // no text fits, but there must be one
        isSaid = decoded.textsOf(index).count > 0;
    }
    if (isSaid) {
        out.push_back(bubble);
    }
    return isSaid;
}

/// The window of a probe and the frames that were found there. Frames between `first` and `last` may have ended before
/// it, where frames lie within longer ones.
struct ProbedFrames {
    std::int64_t from = 0; ///< samples
    std::int64_t to = 0;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    bool shared = false; ///< some may say nothing on this row

    [[nodiscard]] bool has(const DecodedSpan &frame) const { return frame.last > from && frame.first <= to; }
};

/// Too many frames share the window for one of them to be told.
bool isCrowded(const DecodedChannel &decoded, const ProbedFrames &probed)
{
    if (probed.last - probed.first < mostFramesOfAPixel) {
        return false;
    }
    for (std::uint64_t back = 1; back <= mostFramesOfAPixel; ++back) {
        if (!probed.has(decoded.frame(probed.last - back))) {
            return false;
        }
    }
    return true;
}

/// Adds the box of the frame that this row tells of the window: the last one, or one before it when that says nothing
/// here, or the one that all others lie in.
/// @return its last sample; none when nothing was told
std::optional<std::int64_t> addBubbleOf(const DecodedChannel &decoded, const ProbedFrames &probed,
                                        const DecodedView &view, BubbleTexts &texts, std::vector<DecodedBubble> &out)
{
    const auto add = [&](std::uint64_t index, const DecodedSpan &frame) {
        const double width = double(frame.last - frame.first) / view.ratio; // logical pixels
        return width >= view.scale.s() && addBubble(decoded, index, frame, view, probed.shared, texts, out);
    };
    if (!isCrowded(decoded, probed)) {
        const std::uint64_t looks = probed.shared ? mostFramesOfAPixel : 0;
        for (std::uint64_t back = 0; back <= std::min(looks, probed.last - probed.first); ++back) {
            const DecodedSpan frame = decoded.frame(probed.last - back);
            if (probed.has(frame) && add(probed.last - back, frame)) {
                return frame.last;
            }
        }
    }
    const DecodedSpan outer = decoded.frame(probed.first);
    if (probed.first != probed.last && outer.last > probed.to && add(probed.first, outer)) {
        return outer.last;
    }
    return std::nullopt;
}

/// Where the next probe begins when nothing was told of this one.
std::int64_t pastUntold(const DecodedChannel &decoded, const ProbedFrames &probed, std::uint64_t lastOfView)
{
    const std::int64_t end = decoded.frame(probed.last).last;
    if (!probed.shared || probed.last >= lastOfView) {
        return end;
    }
    return std::min(end, decoded.frame(probed.last + 1).first); // which may be told here while this one lasts
}

/// Which markers stand alone, while they come by from left to right.
class MarkerSieve {
public:
    MarkerSieve(const DecodedChannel &decoded, double ratio)
        : m_decoded(decoded), m_total(decoded.markerCount()), m_room(ratio * markerRoom)
    {}
    /// The markers of one pixel. @return the last of them; `keep` tells whether it is drawn
    DecodedMarker pass(std::uint64_t first, std::uint64_t last, bool &keep)
    {
        const DecodedMarker marker = m_decoded.marker(last);
        const bool isLast = last + 1 >= m_total;
        const bool roomBehind = isLast || double(m_decoded.marker(last + 1).sample - marker.sample) >= m_room;
        keep = first == last && roomBehind && !m_crowded;
        m_crowded = !roomBehind || (first != last && isLast);
        return marker;
    }

private:
    const DecodedChannel &m_decoded;
    const std::uint64_t m_total;
    const double m_room; ///< samples
    bool m_crowded = false;
};

} // namespace

double DecodedView::end() const
{
    return std::min(viewStart + width * ratio / scale.s(), double(smpCount));
}

std::int64_t DecodedView::column(double sample) const
{
    return std::int64_t((sample - viewStart) / ratio) * scale.s() + scale.s() / 2;
}

void DecodedRow::clear()
{
    bubbles.clear();
    markers.clear();
}

void addBubbles(const DecodedChannel &decoded, const DecodedView &view, BubbleTexts &texts,
                std::vector<DecodedBubble> &out)
{
    const double end = view.end();
    auto probe = std::int64_t(view.viewStart);
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (!decoded.hasBubbles() || !decoded.framesInRange(probe, std::int64_t(end), first, last)) {
        return;
    }
    const std::uint64_t lastOfView = last;
    const bool shared = decoded.sharesFrames();
    const auto stride = std::int64_t(view.step()); // between whole samples; a probe's window is as wide
    while (double(probe) < end) {
        const std::int64_t next = probe + stride;
        if (!decoded.framesInRange(probe, next, first, last)) {
            if (!decoded.framesInRange(next, std::int64_t(end), first, last)) {
                return;
            }
            probe = probeBefore(decoded.frame(first).first, next, stride, stride);
            continue;
        }
        const ProbedFrames probed{probe, next, first, last, shared};
        const std::optional<std::int64_t> told = addBubbleOf(decoded, probed, view, texts, out);
        probe = std::max(told ? *told : pastUntold(decoded, probed, lastOfView), probe + 1);
    }
}

void addMarkers(const DecodedChannel &decoded, const DecodedView &view, std::vector<DecodedMarker> &out)
{
    const auto end = std::int64_t(view.end());
    std::int64_t probe = std::max(std::int64_t(view.viewStart), std::int64_t(0));
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (!decoded.hasMarkers() || !decoded.markersInRange(probe, end, first, last)) {
        return;
    }
    const auto reach = std::int64_t(view.step());
    MarkerSieve sieve(decoded, view.ratio);
    while (probe <= end) {
        const std::int64_t next = std::min(probe + reach, end);
        if (!decoded.markersInRange(probe, next, first, last)) {
            if (!decoded.markersInRange(next + 1, end, first, last)) {
                return;
            }
            probe = probeBefore(std::int64_t(decoded.marker(first).sample), next + 1, reach + 1, reach);
            continue;
        }
        bool keep = false;
        const DecodedMarker marker = sieve.pass(first, last, keep);
        if (keep) {
            out.push_back(marker);
        }
        probe = std::max(next, std::int64_t(marker.sample)) + 1;
    }
}
