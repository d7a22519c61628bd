#pragma once

#include "files/ForeignFile.h"
#include "store/SmpData.h"

#include <QString>

#include <memory>

/// A capture that was read from a data file (.cxdat), with the settings in front of it, or from another program's file.
/// The settings also are the config document of the process from then on.
struct CaptureSource {
    QString error;   ///< why there is none, for the user; empty if there is one
    QString warning; ///< what it lacks, for the user; empty for nothing
    std::unique_ptr<SmpData> data;
    int model = 0; ///< model code

    /// Reads the whole file; the user may end it. Files of other programs are told by their suffixes, .sr and .vcd.
    /// Cost: about that of a copy of it.
    [[nodiscard]] static CaptureSource open(const QString &path);
    /// open(), with what there is to tell told.
    [[nodiscard]] static CaptureSource openOrTell(const QString &path);
    /// The same for a file of this kind, whatever its name; None for a data file.
    [[nodiscard]] static CaptureSource openOrTell(const QString &path, ForeignKind kind, const ForeignOptions &options);
};
