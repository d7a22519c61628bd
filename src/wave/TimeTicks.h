#pragma once

#include <array>
#include <cstdint>
#include <span>

/// What a mark of the time ruler is.
namespace tickKind {

inline constexpr std::int32_t decade = 0;   ///< a tick with an absolute label
inline constexpr std::int32_t relative = 1; ///< a tick with a label that counts from the decade before
inline constexpr std::int32_t base = 2;     ///< no tick: the decade left of the view, for the labels that count from it

} // namespace tickKind

/// One mark of the time ruler.
struct TimeTick {
    std::int32_t x;    ///< logical pixel
    std::int32_t kind; ///< of tickKind
    char text[32];     ///< NUL-terminated
};

/// The marks of the time ruler, and their labels: pure, no allocation, any thread.
namespace TimeTicks {

/// "ps", "ns", "us", "ms", "s".
inline constexpr std::array<const char *, 5> unitNames{"ps", "ns", "us", "ms", "s"};

/// What a label takes on the screen, in device pixels.
struct LabelMetrics {
    int digitWidth = 6;                            ///< reserved for each digit
    int margin = 8;                                ///< between labels
    std::array<int, unitNames.size()> unitWidth{}; ///< of each unit's name in the ruler's font
    int scale = 1;                                 ///< device pixels per logical pixel
    bool operator==(const LabelMetrics &) const = default;
};

/// What the ruler spans. Times are picoseconds.
struct Scale {
    double leftEdge = 0.0;   ///< time at logical pixel 0
    double psPerPixel = 0.0; ///< per logical pixel
    int width = 0;           ///< logical pixels
};

/// The pitch of the ticks and of their labels.
struct Pitch {
    int decade = 0;             ///< a tick every 10 to the power of this, in ps
    int unit = 0;               ///< of the relative labels, index into unitNames
    int digits = 1;             ///< of a relative label's number
    double ps = 1.0;            ///< 10 to the power of `decade`
    std::int64_t labelStep = 1; ///< a relative label's number per tick
};

/// How many ticks a ruler of this width has room for.
[[nodiscard]] int capacity(int width);
/// False when nothing can be marked: no width, no or not finite time per pixel, or a span beyond 10^30 ps.
[[nodiscard]] bool choosePitch(const Scale &scale, Pitch &pitch);
/// The room of a relative label, in logical pixels.
[[nodiscard]] int labelRoom(const Pitch &pitch, const LabelMetrics &metrics);
/// Every how many ticks a relative label fits: 1, 2 or 5.
[[nodiscard]] int labelEvery(const Pitch &pitch, double psPerPixel, int room);

/// Writes a decade tick's label into `text`: the time of `ps` (0 or above), with at most nine decimal places.
void writeTime(double ps, bool negative, std::span<char> text);

/// Fills `ticks` from the left, and with the base as the last one where the left part of the view has no decade.
/// @return how many were written, never more than there is room for
[[nodiscard]] int fill(const Scale &scale, const LabelMetrics &metrics, std::span<TimeTick> ticks);

} // namespace TimeTicks
