#pragma once

#include "files/DataBlocks.h"

#include <QStringList>

class QIODevice;
class SmpData;

/// Writes the chosen channels of a range as comma-separated values (RFC 4180, with line feeds): a line of names, a line
/// for the first sample, one for each further sample at which a channel changes, and one for the last sample.
///
/// The first column is the time from the trigger in seconds, rounded half up to nanoseconds, or to picoseconds for a
/// rate above 1 GHz. readCsv() finds the samples again, if it is told the rate. The caller holds a SmpReadLock. Any
/// thread.
/// @param names       of all channels of the capture
/// @param afterPiece  called with the transitions passed so far, over all chosen channels
/// Cost: some tens of nanoseconds a line.
[[nodiscard]] DataBlocksResult writeCsv(QIODevice &device, const SmpData &data, const DataSelection &selection,
                                        const QStringList &names, const DataPieceHook &afterPiece = {});
