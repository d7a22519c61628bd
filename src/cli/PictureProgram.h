#pragma once

#include <QString>
#include <QStringList>

/// The program that makes pictures for luxcli, which itself has no fonts and paints nothing: the one with the window,
/// run once in the background without a screen. Main thread.
namespace PictureProgram {

/// What makes it such a run, as its first argument; those of "luxcli export" follow.
inline constexpr const char *option = "--export-picture";

/// Where it stands: beside this program.
[[nodiscard]] QString path();
/// Runs it with the arguments of "luxcli export", waits, and passes a Ctrl+C on. What it has to tell goes to the
/// standard error.
/// @return the process's exit code: its own, or bad input if there is none, or it takes longer than ten minutes
[[nodiscard]] int run(const QStringList &arguments);

} // namespace PictureProgram
