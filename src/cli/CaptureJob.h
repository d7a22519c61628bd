#pragma once

#include "cli/Arguments.h"
#include "cli/CaptureSource.h"
#include "files/CaptureWriter.h"

#include <QString>

/// What the commands that write captures share. Main thread.
namespace CaptureJob {

/// The items of the option "--channels", lists such as "0-3,CLK,7". @return why one is wrong, for the user; empty if
/// none is
[[nodiscard]] QString readChannels(const Arguments::Parsed &parsed, QStringList &items);
/// The channels of a capture that `wanted` names, as flags; those that hold data for none. @return empty, or why not
[[nodiscard]] QString pick(const SmpData &data, const QStringList &wanted, std::vector<std::uint8_t> &channels);
/// Names of all channels, from the config document.
[[nodiscard]] QStringList names(const SmpData &data);
/// @return why the file that is read cannot be written, which would take its place; empty when it is another one
[[nodiscard]] QString overwritten(const QString &in, const QString &out);
/// Writes to a file, a device or a pipe that has a name, or for "-" to the standard output, with progress, and tells
/// what went wrong.
/// @return the process's exit code
[[nodiscard]] int write(const QString &path, const SmpData &data, CaptureOut &out);

} // namespace CaptureJob
