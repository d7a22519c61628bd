#pragma once

#include "files/ForeignFile.h"
#include "settings/ConfigDocument.h"

/// What a capture of another program needs to be one of this: a model that has the channels, and settings.

/// The settings of a capture that was read, as they stand in front of a data file: a model with as many channels, the
/// channels in use, their names, the model's rate, depth and trigger position next to the capture's.
/// @param capture  Done
/// @param base     settings to take the rest from, such as configCopy(); without, there is no rest. Analyzers, names,
///                 rows and heights of channels are not taken
/// Main thread. Changes nothing.
[[nodiscard]] ConfigDocument foreignSettings(const ForeignCapture &capture, const ConfigDocument *base = nullptr);
