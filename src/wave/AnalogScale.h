#pragma once

#include "controls/PixelScale.h"
#include "store/SmpData.h"

#include <QLineF>
#include <QRect>
#include <QString>

#include <span>
#include <vector>

/// Where voltages stand in the analog area, as pure functions of plain numbers. Lengths are device pixels from the top
/// of the area unless told otherwise, voltages millivolts, full scales the millivolts that the area's height stands for
/// (ten divisions). Any thread.

/// Of the area's height.
inline constexpr int aChnDivisions = 10;

/// "50mV/div" is 50, "2V/div" 2000; any other text is 0.
[[nodiscard]] int voltDivOfText(const QString &text);
/// The text of so many millivolts per division: whole volts are told as such.
[[nodiscard]] QString voltDivText(int millivolts);

/// A flag's place as it is stored: logical pixels, and the area's height that they refer to.
struct TagPlace {
    int y = 0;
    int refHeight = 0;
    bool operator==(const TagPlace &) const = default;
};

/// False for what no flag can have left behind, also for a place that has never been set.
[[nodiscard]] bool isPlace(TagPlace place);
/// Where flag `index` stands at first: 0.3 of the height, the next one 0.7.
[[nodiscard]] TagPlace startPlace(int index, int height, int s);
/// The place of a flag whose centre is there.
[[nodiscard]] TagPlace placeAt(int centre, int height, int s);
/// The flag's centre in an area of another height. @param place  one that is a place, see isPlace()
[[nodiscard]] int centreOf(TagPlace place, int height, int s);

/// The voltage at a row, from the zero level at `zeroY`. Full scale or height 0: 0.
[[nodiscard]] int voltageAt(int centre, int zeroY, int fullScale, int height, int s);
/// The row of a voltage; above the area is its top, below it its last row. Full scale 0: the zero level.
[[nodiscard]] int rowOfVoltage(int millivolts, int zeroY, int fullScale, int height, int s);

/// How an analog channel is drawn.
struct TraceScale {
    int zeroY;
    int fullScale;
    bool reversed;
    int height;
};

/// What a trace is painted with.
struct TraceStrokes {
    std::vector<QLineF> lines; ///< to be stroked, from middle to middle of the pixels
    std::vector<QRect> bars;   ///< to be filled
};

/// The strokes between neighbouring points, each at the device column of its sample (PixelScale::column), so that it
/// stands above what a digital channel shows of the same sample. What is above or below the area is cut off, also for
/// drawings that know no clip.
/// Steep strokes from one column to the next become bars in both, which cost a fraction of slanted lines and cannot be
/// told from them. Nothing for a full scale or a height of 0, or for a single point.
/// @param left, right  device columns: strokes that lie beyond them are left out
/// @param strokes      replaced; its memory is used again
/// Cost: one step a point.
void traceStrokes(std::span<const SmpAChnPoint> points, const TraceScale &trace, PixelScale scale, int left, int right,
                  TraceStrokes &strokes);
