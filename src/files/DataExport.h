#pragma once

#include "files/DataBlocks.h"

#include <QByteArray>

#include <cstdint>

/// The exports of a capture's digital channels, as text and as a plain dump of samples; docs/formats.md tells both.
///
/// Neither knows threads, dialogs or files: the caller hands in a device that is open for writing, and holds a
/// SmpReadLock. Free functions without state; any thread, except where told. Both keep a buffer of their own and follow
/// the transitions, never sample by sample and channel by channel.

/// Bytes that a text export hands to its device at once, at least, but for the last ones.
inline constexpr int textExportPiece = 65'536;
/// Bytes that putExportTime() writes at most.
inline constexpr int exportTimeMax = 24;

/// Writes a time as decimal seconds with nine decimals, rounded half up, such as "-0.000001500". What rounds to zero
/// has no sign. No number is written as zero, and what 64 bits of nanoseconds do not hold as the nearest that they do.
/// @param out  room for exportTimeMax bytes; no end is marked
/// @return the bytes written
int putExportTime(double seconds, char *out);

/// The first line of a text export: "Time[s]" and the names of the chosen channels as the user sees them, each behind
/// ", ", and a line feed. UTF-8 on every system, since a code page would lose names. They stand as they are, without
/// quotes. Main thread, as it reads the configuration.
/// @param chnSelect  `chnCount` flags; null for none
[[nodiscard]] QByteArray textExportHeader(const std::uint8_t *chnSelect, int chnCount);

/// Writes `header`, then a line for the first sample of the range and one for each further sample at which a chosen
/// channel changes. A range that begins at the capture's end has its one line. Lines end in a line feed: a device in
/// text mode makes of it what the system wants.
/// @param afterPiece  called with the transitions passed so far, over all chosen channels
/// Cost: some tens of nanoseconds a line, and a few a channel in it.
[[nodiscard]] DataBlocksResult writeTextExport(QIODevice &device, const SmpData &data, const DataSelection &selection,
                                               const QByteArray &header, const DataPieceHook &afterPiece = {});

/// Writes one row for each sample of the range: (channels of the model + 7) / 8 bytes, in which bit c modulo 8 of byte
/// c / 8 is the level of channel c. It is 0 for a channel that was not chosen or holds no data.
/// @param afterPiece  called with the samples written so far
/// Cost: that of filling memory, and some tens of nanoseconds for each sample at which a chosen channel changes.
[[nodiscard]] DataBlocksResult writeBinaryExport(QIODevice &device, const SmpData &data, const DataSelection &selection,
                                                 const DataPieceHook &afterPiece = {});
