#include "SwdSettings.h"

SwdSettings::SwdSettings()
    : swclk(*this, "swclk", "SWCLK", "The clock"), swdio(*this, "swdio", "SWDIO", "The data in both directions")
{}
