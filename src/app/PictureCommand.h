#pragma once

#include <QStringList>

/// The program as the maker of pictures for "luxcli export": without a window, a screen or an instrument, and without
/// touching what is stored.
namespace PictureCommand {

/// True when the arguments, without the program's own name, ask for a picture and nothing else.
[[nodiscard]] bool isAsked(const QStringList &arguments);
/// Makes it, and tells on the standard error what went wrong. Instead of the rest of main(); makes the application.
/// @return the process's exit code, as luxcli has them
[[nodiscard]] int run(int argc, char *argv[]);

} // namespace PictureCommand
