#pragma once

#include <QString>

class DevBase;

/// What a row of the pulse measurements can be about, as the user reads it. Main thread.

constexpr int pulseTypeCount = 4; ///< rising edges, falling edges, positive pulses, negative pulses
constexpr int pulseTimeCount = 6; ///< the whole capture, then the pairs A to E

/// Translated.
[[nodiscard]] QString pulseTypeName(int type);
/// A path of the resources.
[[nodiscard]] QString pulseTypeIcon(int type);
/// Such as "CH3".
[[nodiscard]] QString pulseChnText(int chn);
/// "ALL", or such as "A1-A2".
[[nodiscard]] QString pulseTimeText(int time);

/// Whether the device has the channel in use; null has none.
[[nodiscard]] bool isChannelInUse(const DevBase *device, int chn);
/// Whether the time index can be counted: the whole capture always, a pair while both of its markers are shown.
[[nodiscard]] bool isPulseTimeShown(int time);
