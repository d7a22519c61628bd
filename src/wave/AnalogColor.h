#pragma once

#include "controls/Look.h"

#include <QColor>

#include <cstdlib>

/// The colour of an analog channel's trace and flags. GUI thread.
inline QColor aChnColor(int channel)
{
    constexpr int colors = 2; // of gChnColors
    constexpr int lighter = 120;
    return gChnColors[std::abs(channel) % colors].lighter(lighter);
}
