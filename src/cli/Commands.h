#pragma once

#include <QStringList>

/// The commands of luxcli: each takes the arguments behind its name and answers the process's exit code (Terminal.h).
/// Main thread, below a QCoreApplication.
namespace Commands {

/// Decodes captures and writes what was found.
int decode(const QStringList &arguments);
/// Lists the decoders, or the settings of one.
int analyzers(const QStringList &arguments);
/// Lists the captures that were kept, or fetches one.
int history(const QStringList &arguments);
/// Captures with an instrument, saves and decodes what came.
int capture(const QStringList &arguments);
/// Converts a capture between kinds of files.
int convert(const QStringList &arguments);
/// Lists the instruments that are plugged in.
int devices(const QStringList &arguments);
/// Compares two captures. Its exit codes are those of diff(1).
int diff(const QStringList &arguments);
/// Writes channels of a capture for other programs.
int exportData(const QStringList &arguments);
/// Tells about captures.
int info(const QStringList &arguments);
/// Measures channels of a capture, and checks what is expected of them.
int measure(const QStringList &arguments);

} // namespace Commands
