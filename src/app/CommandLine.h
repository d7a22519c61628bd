#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QWidget;

/// What the command line asks for besides the file to open. `arguments` is without the program's own name. Main thread.
namespace CommandLine {

/// What the program prints instead of starting, for "--help" and "--version"; nothing if it is to start. Pure; needs
/// no application object.
[[nodiscard]] std::optional<QString> answer(const QStringList &arguments);

/// The arguments in front of the file that is opened, if any, that are no options and name nothing that exists.
[[nodiscard]] QStringList missingFiles(const QStringList &arguments);

/// Tells of these files on the standard error stream and in a modal box. Nothing for none.
void tellMissing(QWidget *parent, const QStringList &files);

} // namespace CommandLine
