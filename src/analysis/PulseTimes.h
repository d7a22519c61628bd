#pragma once

#include "store/SmpData.h"

#include <QStringList>

#include <cstdint>

/// What is told about one pulse. A value that is not known is -1.
struct PulseTimes {
    double width;  ///< picoseconds
    double period; ///< picoseconds, of this pulse and the next
    double duty;   ///< share of the high level in the period, 0 to 1
    double frequ;  ///< Hz
};

/// The times of the pulse that `info` surrounds. Pure; any thread, as all functions here.
/// @param rate  Hz, above 0
[[nodiscard]] PulseTimes pulseTimes(const SmpEdgeInfo &info, std::int64_t rate);

/// `value` in the largest unit that leaves at least 1 of it, with nine significant digits; "###" unless above 0.
[[nodiscard]] QString unitText(double value, const QStringList &units);

/// Width, period, duty and frequency as the user reads them.
[[nodiscard]] QStringList pulseTexts(const PulseTimes &times, const QStringList &timeUnits,
                                     const QStringList &freqUnits);

/// The texts of no pulse.
[[nodiscard]] QStringList noPulseTexts();
