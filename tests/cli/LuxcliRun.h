#pragma once

#include "device/DevModels.h"
#include "files/CaptureFile.h"
#include "files/DataFileBytes.h"
#include "settings/ConfigDocument.h"

#include <QProcess>
#include <QStringList>

/// The program as it was built, run as a user or a script runs it. LUXCLI is its path.
namespace luxcliRun {

/// What a run of the program left.
struct Outcome {
    int code = -1; ///< -2 it could not be run, -3 it crashed
    QByteArray out;
    QByteArray err;
};

inline Outcome run(const QString &program, const QStringList &arguments)
{
    constexpr int mostMs = 60000;
    QProcess process;
    process.start(program, arguments, QIODevice::ReadOnly);
    if (!process.waitForFinished(mostMs))
        return {-2, {}, process.errorString().toUtf8()};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -3, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

/// @param arguments  parted by blanks; %1 is replaced by `first`, %2 by `second`, neither of which is parted
inline Outcome luxcli(const char *arguments, const QString &first = {}, const QString &second = {})
{
    QStringList list = QString::fromUtf8(arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    list.replaceInStrings(QStringLiteral("%1"), first);
    list.replaceInStrings(QStringLiteral("%2"), second);
    return run(QStringLiteral(LUXCLI), list);
}

/// Writes a capture of a model with 16 channels. @param analyzers  that are stored in it, as the settings have them
/// @return its path; empty if that failed
inline QString save(const FileFolder &folder, const QString &name, CaptureBuilder &builder,
                    const QByteArray &analyzers = {})
{
    constexpr int channels = 16;
    const auto data = builder.build();
    const auto settings = ConfigDocument::parse("<settings><global><devModel>8</devModel>"
                                                "<chnShowName3>Clock</chnShowName3></global><analyzers>" +
                                                analyzers + "</analyzers></settings>\n");
    const CapturePart whole{std::vector<std::uint8_t>(channels, 1), 0, double(data->smpCount())};
    const QString path = folder.path(name);
    const CaptureFile file(digitalChannelsOf);
    return file.save(path, *data, whole, settings.value()).isDone() ? path : QString();
}

} // namespace luxcliRun
