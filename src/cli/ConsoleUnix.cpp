#include "cli/Console.h"
#include "cli/Terminal.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int patience = 100; // ms

} // namespace

Console::Console()
{
    for (const int handle : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(handle, F_GETFD) < 0) { // open() gives the least number that is free, which is this one
            (void)::open("/dev/null", handle == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

Console::~Console() = default;

bool Console::write(std::string_view bytes, std::FILE *to)
{
    const int handle = fileno(to);
    constexpr std::size_t most{PIPE_BUF}; // a pipe that has room takes as much without a wait
    while (!bytes.empty()) {
        pollfd out{handle, POLLOUT, 0};
        const int ready = poll(&out, 1, patience);
        if (ready == 0 && Terminal::wasInterrupted()) {
            return false;
        }
        const ssize_t count = ready > 0 ? ::write(handle, bytes.data(), std::min(bytes.size(), most)) : 0;
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            return false;
        }
        bytes.remove_prefix(std::size_t(std::max<ssize_t>(count, 0)));
    }
    return true;
}

std::FILE *Console::open(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat there {};
    const bool isPipe = stat(name.constData(), &there) == 0 && S_ISFIFO(there.st_mode);
    for (;;) {
        const int handle = ::open(name.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        const bool lacksReader = handle < 0 && isPipe && errno == ENXIO;
        if (!lacksReader || Terminal::wasInterrupted()) {
            return handle < 0 ? nullptr : fdopen(handle, "w");
        }
        poll(nullptr, 0, patience);
    }
}

bool Console::errorIsTerminal()
{
    return isatty(STDERR_FILENO) != 0;
}
