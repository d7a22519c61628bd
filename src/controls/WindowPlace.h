#pragma once

#include <QRect>

/// Where the main window stood, in the global key "windowPosition". Main thread.

/// The stored geometry if enough of it lies in `available` to be seen and taken hold of, else the default: 80 % of
/// `available`'s size, a tenth of it from the origin. Pixels.
[[nodiscard]] QRect windowPositionGet(const QRect &available);
void windowPositionSet(const QRect &rect);
