#pragma once

#include "store/SmpData.h"

#include <QByteArray>
#include <QString>

#include <memory>

/// A capture that was read from a data file (.cxdat), with the settings in front of it. The settings also are the
/// config document of the process from then on.
struct CaptureSource {
    QString error; ///< why there is none, for the user; empty if there is one
    std::unique_ptr<SmpData> data;
    int model = 0; ///< model code

    /// Reads the whole file. Cost: about that of a copy of it.
    [[nodiscard]] static CaptureSource open(const QString &path);
};
