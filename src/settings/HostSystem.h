#pragma once

#include <QString>

/// The name of the operating system, for the user; never empty. Any thread. One implementation for each system, in a
/// file of its own.
[[nodiscard]] QString osName();

/// The short word for the operating system that the update service knows: "lnx", "mac", or that of the Windows; never
/// empty. Any thread.
[[nodiscard]] QString osTag();

/// The name of a Windows of that version; 0 for `major` if the version is not known. Pure.
[[nodiscard]] QString windowsName(int major, int minor);

/// The tag of the same. Pure.
[[nodiscard]] QString windowsTag(int major, int minor);
