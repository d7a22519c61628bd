#pragma once

#include "controls/Look.h"

/// The two ways in which a screen's dots per inch decide sizes, as a plain value: geometry functions take it along
/// instead of reading the global, and so can be tested for any screen.
struct PixelScale {
    int dpi = 96; ///< at least 96

    /// `pixels` at 96 dpi in pixels of this screen, truncated.
    [[nodiscard]] constexpr int dp(int pixels) const { return pixels * dpi / 96; }
    /// Device pixels per logical pixel of the time axis: the width of every stroke.
    [[nodiscard]] constexpr int s() const { return dpi / 96; }
    /// The device column of a logical one: strokes are centred on it.
    [[nodiscard]] constexpr int column(int logical) const { return logical * s() + s() / 2; }
};

/// The scale of the primary screen.
[[nodiscard]] inline PixelScale screenScale()
{
    return {gDpi};
}
