#pragma once

#include "files/ForeignFile.h"

/// Reads a session archive of version 2: a zip with "version", "metadata" and the samples of the logic channels in
/// "logic-1-1", "logic-1-2" and so on. Private to this folder; docs/formats.md tells the form.
///
/// Nothing of an archive is written anywhere. Its entries may not overlap, so that what it unpacks to is at most some
/// thousand times its size, and it is read in pieces of one megabyte. Analog channels are passed over.
[[nodiscard]] ForeignCapture readSr(const QString &path, const ForeignOptions &options, const ForeignHook &hook);
