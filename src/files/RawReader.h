#pragma once

#include "files/ForeignFile.h"

class QIODevice;

/// Reads samples as plain bytes, such as the binary export writes them: options tell rate, and bytes a sample.
/// Private to this folder. Channels have no names.
[[nodiscard]] ForeignCapture readRaw(QIODevice &device, const ForeignOptions &options, const ForeignHook &hook);
