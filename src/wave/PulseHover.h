#pragma once

#include "store/SmpData.h"

#include <QStringList>

#include <cstdint>

/// What is told about the pulse under the pointer. A value that is not known is -1.
struct PulseTimes {
    double width;  ///< picoseconds
    double period; ///< picoseconds, of this pulse and the next
    double duty;   ///< share of the high level in the period, 0 to 1
    double frequ;  ///< Hz
};

/// The two arrows of the pulse under the pointer, in logical pixels. A `span2End` of 0: there is no second one.
struct ArrowSpans {
    double span1Start = 0;
    double span1End = 0;
    double span2Start = 0;
    double span2End = 0;
    bool operator==(const ArrowSpans &) const = default;
};

/// The part of the capture that the view shows.
struct WaveWindow {
    double start; ///< sample at logical pixel 0
    double ratio; ///< samples per logical pixel, above 0
    int width;    ///< logical pixels
};

/// The sample under a logical pixel, truncated; values out of the range of samples come back as -1.
[[nodiscard]] std::int64_t sampleUnder(int x, const WaveWindow &window);

/// The times of the pulse that `info` surrounds.
/// @param rate  Hz
[[nodiscard]] PulseTimes pulseTimes(const SmpEdgeInfo &info, std::int64_t rate);

/// `value` in the largest unit that leaves at least 1 of it, with nine significant digits; "###" unless above 0.
[[nodiscard]] QString unitText(double value, const QStringList &units);

/// Width, period, duty and frequency as the user reads them.
[[nodiscard]] QStringList pulseTexts(const PulseTimes &times, const QStringList &timeUnits,
                                     const QStringList &freqUnits);

/// The texts of no pulse.
[[nodiscard]] QStringList noPulseTexts();

/// The first arrow lies within the pulse, the second within the one after it.
[[nodiscard]] ArrowSpans arrowSpans(const SmpEdgeInfo &info, const WaveWindow &window);
