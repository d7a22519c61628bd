#pragma once

#include "files/CaptureFile.h"
#include "files/DataBlocks.h"

#include <QStringList>

#include <functional>

class QIODevice;
class SmpData;

/// Writes a capture as one of the kinds of files that this program and others read: the way that a command line and a
/// dialog share. Knows no window, and of the program's settings only what is handed in.

/// The kinds. Their names are as on a command line.
enum class CaptureKind {
    None,
    Bin,   ///< "bin", "raw": a dump of samples (writeBinaryExport)
    Csv,   ///< "csv": comma-separated values (writeCsv)
    Cxdat, ///< "cxdat": data file with settings
    Sr,    ///< "sr": session archive (writeSr)
    Text,  ///< "text", "txt": a line a change, as the window exports it (writeTextExport)
    Vcd    ///< "vcd": value change dump (writeVcd)
};

/// The kind of a name, or of a path's suffix, in either case but for that of data files; None for any other.
[[nodiscard]] CaptureKind captureKindNamed(const QString &name);
[[nodiscard]] CaptureKind captureKindOf(const QString &path);

/// What is written.
struct CaptureOut {
    CaptureKind kind = CaptureKind::None;
    CapturePart part;
    QStringList names;                        ///< of all channels
    const ConfigDocument *settings = nullptr; ///< Cxdat only, and to be there for it
    std::function<bool(double share)> hook{}; ///< asked after each piece, 0 to 1; false cancels. May be empty
};

/// Writes beside `path` and gives the file its name when it is whole and on the disk: whatever goes wrong, an earlier
/// file stays and no part is left. Blocks; not under a SmpReadLock that a writer waits for. Any thread.
[[nodiscard]] FileOutcome writeCaptureFile(const QString &path, const SmpData &data, const CaptureOut &out);
/// Writes to a device that is open for writing, such as the standard output. A session archive cannot be written that
/// way: WrongKind. Any thread.
[[nodiscard]] FileOutcome writeCaptureTo(QIODevice &device, const SmpData &data, const CaptureOut &out);
