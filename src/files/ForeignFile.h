#pragma once

#include "files/CaptureFile.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>

class SmpData;

/// Reads captures out of other programs' files; docs/formats.md tells the kinds.
///
/// Free functions without state: any thread. They know no window and no model. Messages are English, as a line of a
/// file or an entry of an archive is what they are about; fileReason() has the translated sentence for `result`.

/// The kinds of files.
enum class ForeignKind {
    None,
    Csv, ///< levels as columns of text, with or without times
    Raw, ///< one or more bytes a sample
    Sr,  ///< session archive, version 2
    Vcd  ///< value change dump
};

/// By the suffix, in either case: .csv, .bin and .raw, .sr, .vcd. None for any other.
[[nodiscard]] ForeignKind foreignKindOf(const QString &path);
/// Whether the file can be opened without a word about rate or channels: .sr and .vcd. By the suffix.
[[nodiscard]] bool isForeignCapture(const QString &path);
/// False for .sr in a build without the library for archives: reading then ends in WrongKind, and says why.
[[nodiscard]] bool foreignKindIsBuilt(ForeignKind kind);

/// What the file does not tell, or too much of.
struct ForeignOptions {
    /// What becomes channel 0, 1 and so on: numbers from 0, ranges such as "4-7", names (that of a vector for all its
    /// bits). Empty for all.
    QStringList channels;
    std::int64_t rate = 0; ///< Hz; 0 for that of the file. Raw needs one, CSV without times too
    int unitSize = 0;      ///< raw: bytes a sample; 0 for as many as the channels need, or one
};

/// A file that has been read, and is nobody's yet.
struct ForeignCapture {
    FileResult result = FileResult::Done;
    QString detail;    ///< why it is not Done, such as "line 12: the time goes back"; may be empty
    QStringList notes; ///< what was passed over, or taken for something else
    /// Closed, with 8, 16 or 32 channels, of which those of `names` hold data; null if not Done.
    std::unique_ptr<SmpData> capture;
    QStringList names; ///< of channels 0, 1 and so on; an empty one for none
    [[nodiscard]] bool isDone() const { return result == FileResult::Done; }
};

/// Asked after each piece with the part of the file that was read, 0 to 1; false cancels. May be empty.
using ForeignHook = std::function<bool(double share)>;

/// Letters of a channel's name; the rest is cut.
inline constexpr int foreignNameMax = 200;

/// Reads a whole file into a store of its own. More channels than CaptureFiller::channelMax are refused, unless some
/// are picked. Memory: that of the store (5.1 bytes an edge) and less than 64 MB, whatever the file holds. Cost: one
/// pass over the file; a second one if a VCD's comment tells a wrong rate.
[[nodiscard]] ForeignCapture readForeign(const QString &path, ForeignKind kind, const ForeignOptions &options = {},
                                         const ForeignHook &hook = {});
