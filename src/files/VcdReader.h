#pragma once

#include "files/ForeignFile.h"

class QIODevice;

/// Reads a value change dump (IEEE Std 1364-2005, clause 18). Private to this folder.
///
/// The sample rate is that of the time scale, or the least that holds all times, as TimeGrid tells; where a comment of
/// the declarations tells the rate from which the times were rounded ("Sample rate: 24000000 Hz"), it is that one. The
/// capture begins at time 0 and ends at the last time. x and z count as 0.
/// @param device  random-access, at its start
[[nodiscard]] ForeignCapture readVcd(QIODevice &device, const ForeignOptions &options, const ForeignHook &hook);
