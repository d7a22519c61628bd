#include "cli/Console.h"
#include "cli/Terminal.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <poll.h>
#include <unistd.h>

Console::Console() = default;

Console::~Console() = default;

bool Console::write(std::string_view bytes)
{
    constexpr int patience = 100;         // ms
    constexpr std::size_t most{PIPE_BUF}; // a pipe that has room takes as much without a wait
    while (!bytes.empty()) {
        pollfd out{STDOUT_FILENO, POLLOUT, 0};
        const int ready = poll(&out, 1, patience);
        if (ready == 0 && Terminal::wasInterrupted()) {
            return false;
        }
        const ssize_t count = ready > 0 ? ::write(STDOUT_FILENO, bytes.data(), std::min(bytes.size(), most)) : 0;
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            return false;
        }
        bytes.remove_prefix(std::size_t(std::max<ssize_t>(count, 0)));
    }
    return true;
}

bool Console::errorIsTerminal()
{
    return isatty(STDERR_FILENO) != 0;
}
