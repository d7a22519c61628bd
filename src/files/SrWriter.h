#pragma once

#include "files/CaptureFile.h"
#include "files/DataBlocks.h"

#include <QStringList>

/// Writes the chosen channels of a range as a session archive of version 2; docs/formats.md tells the form. The first
/// chosen channel is bit 0, and so on.
///
/// The samples are made as they are packed, so that memory does not follow the capture. The caller holds a SmpReadLock.
/// Any thread.
/// @param path        a file that is there and is replaced; others may be made beside it meanwhile
/// @param names       of all channels of the capture
/// @param afterPiece  called with the samples written so far
/// @return Done, Cancelled, DiskFull, NoRights or Failed
/// Cost: that of packing; stretches in which much happens are not packed.
[[nodiscard]] FileResult writeSr(const QString &path, const SmpData &data, const DataSelection &selection,
                                 const QStringList &names, const DataPieceHook &afterPiece = {});
