#pragma once

#include <QString>

#include <cstdint>
#include <span>

class SmpData;

/// Measures one analog signal: period, frequency, rise and fall time, pulse widths, duty cycle, and levels.
///
/// The result is one text of seventeen fields "name:value" with a comma between two, in the order Period, Frequency,
/// RiseTime, FallTime, +PulseWidth, -PulseWidth, DutyCycle, Vmax, Vmin, Vpp, Vamp, Vtop, Vbase, Overshoot, Preshoot,
/// Vavg, Vrms; the names are never translated. It is empty for what is no wave: fewer than five samples, or fewer than
/// four rises of 2 V (times the probe's factor). A rise of fewer than 20 samples counts only if at least 20 samples
/// above its middle follow. The times are those of one period near the middle of the samples, not an average. A level
/// that is not there is written as "nan"; what a period, or a rate, of 0 leaves without a value is "--".
///
/// Pure: it keeps nothing between two calls. Any thread. Cost: a median of five a sample and a few passes, well below
/// 3 ms for 32,768 samples; two arrays of doubles, one value a sample each.

/// @param samples  the converter's bytes: -128 to 127 over the full scale of -5 V to 5 V at a probe of factor 1
/// @param rate     Hz; below 1 for an unknown one
/// @param probe    the probe's factor
[[nodiscard]] QString analogParameters(std::span<const std::int8_t> samples, std::int64_t rate, int probe);

/// The same for an analog channel of a capture; empty for a channel that it does not have. Under a SmpReadLock.
[[nodiscard]] QString analogParameters(const SmpData &data, int chn, int probe);

/// The bytes of an analog channel; none for a channel that the capture does not have. Under a SmpReadLock, and valid as
/// long.
[[nodiscard]] std::span<const std::int8_t> analogSamples(const SmpData &data, int chn);
