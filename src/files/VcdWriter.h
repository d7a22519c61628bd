#pragma once

#include "files/DataBlocks.h"

#include <QStringList>

class QIODevice;
class SmpData;

/// Writes the chosen channels of a range as a value change dump (IEEE Std 1364-2005, clause 18): scalars in one scope,
/// all levels at time 0, then the changes, then the time of the range's end.
///
/// The time scale is the coarsest whose ticks hold all samples exactly. A rate that has none, such as 24 MHz, has times
/// rounded to a hundredth of a sample or finer; a comment tells the rate, from which readVcd() finds the samples again.
/// The caller holds a SmpReadLock. Any thread.
/// @param names       of all channels of the capture; blanks in them become "_"
/// @param afterPiece  called with the transitions passed so far, over all chosen channels
/// Cost: some ten nanoseconds a change.
[[nodiscard]] DataBlocksResult writeVcd(QIODevice &device, const SmpData &data, const DataSelection &selection,
                                        const QStringList &names, const DataPieceHook &afterPiece = {});
