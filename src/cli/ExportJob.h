#pragma once

#include "files/CaptureWriter.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <cmath>

/// What "luxcli export" is to do, as its arguments tell: a value that knows no capture yet. Pure.
struct ExportJob {
    /// What is written: a kind of capture, or a picture, which another program makes.
    enum class Picture { None, Png, Svg };

    QString path; ///< of the capture
    QString out;  ///< "-" for the standard output
    CaptureKind kind = CaptureKind::None;
    Picture picture = Picture::None;
    double from = 0; ///< seconds
    double to = HUGE_VAL;
    QStringList channels;
    QSize size;        ///< of a picture, pixels; empty for what its rows need
    int dpi = 96;      ///< of a picture: 96 to 960
    bool help = false; ///< nothing else was asked

    /// @return empty, or what is wrong with the arguments
    [[nodiscard]] QString read(const QStringList &arguments);
    /// The part of a capture that is meant, with its channels by the names in the config document.
    /// @return empty, or why there is none
    [[nodiscard]] QString pick(const SmpData &data, CapturePart &part) const;
};
