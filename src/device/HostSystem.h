#pragma once

#include <QString>

/// The name of the operating system, for the user; never empty. Any thread. One implementation for each system, in a
/// file of its own.
[[nodiscard]] QString osName();

/// The name of a Windows of that version; 0 for `major` if the version is not known. Pure.
[[nodiscard]] QString windowsName(int major, int minor);
