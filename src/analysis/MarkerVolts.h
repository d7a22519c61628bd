#pragma once

#include <QString>

/// The arithmetic of voltage markers without a screen: heights in the analog area, voltages, texts.
///
/// Pure, any thread, cost a few operations each. Voltages are millivolts; heights are logical pixels.
namespace MarkerVolts {

/// A level in the analog area: how far below the area's top it was put, in an area of that height. It keeps its voltage
/// when the area gets another height.
struct AreaLevel {
    int position = 0;
    int height = 0; ///< a level in an area without height has no place: it counts as the area's top
};

/// The voltage of `marker` against the channel's zero level, positive above it.
/// @param fullScale  what the height of the whole area stands for
[[nodiscard]] double voltageOf(AreaLevel marker, AreaLevel zero, int fullScale);
/// The voltage between two markers, 0 or above.
[[nodiscard]] double differenceOf(AreaLevel a, AreaLevel b, int fullScale);

/// Two decimals, in volts from 1000 mV on, of either sign: "999.99mV", "-1.00V".
[[nodiscard]] QString formatMarkerVoltage(double millivolts);

} // namespace MarkerVolts
