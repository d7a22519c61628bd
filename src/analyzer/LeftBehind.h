#pragma once

#include <thread>

/// Threads that do not come out of a plug-in are left behind: they run on until the process ends, in code and with data
/// that an orderly end would take away from under them.
namespace LeftBehind {

/// There is one more. Any thread.
void note();
/// The same of a thread that its owner has given up: nobody joins it.
void leave(std::thread &thread);

/// For the end of main(), when all that the program made is gone or stored: returns the code, or ends the process with
/// it here and now when a thread was left behind.
[[nodiscard]] int end(int code);

} // namespace LeftBehind
