#pragma once

#include "files/ForeignFile.h"

class QIODevice;

/// Reads levels as columns of text: 0 and 1, separated by commas, semicolons or tabs. Private to this folder.
///
/// - A first line that is no data has the names. Lines that begin with "#" or ";" are passed over before it.
/// - A first column that is named "Time..." or holds something other than 0 and 1 is the time in seconds of the line,
///   from which on its levels hold; without one, each line is the next sample, and a rate must be told.
/// - The sample rate is the one told, to whose samples times are rounded, or the least that holds all times exactly, to
///   the picosecond. The capture begins with the first line and ends with the sample of the last one; time 0, if it is
///   in between, is the trigger.
/// - An empty field, x and z count as 0.
[[nodiscard]] ForeignCapture readCsv(QIODevice &device, const ForeignOptions &options, const ForeignHook &hook);
