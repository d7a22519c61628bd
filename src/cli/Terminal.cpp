#include "cli/Terminal.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <utility>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace Terminal {

namespace {

std::atomic<bool> signalled{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void takeSignal(int)
{
    signalled.store(true, std::memory_order_relaxed);
}

bool errorIsTerminal()
{
#ifdef Q_OS_WIN
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

} // namespace

void say(const QString &text)
{
    std::fprintf(stderr, "luxcli: %s\n", qUtf8Printable(text));
}

void catchSignals()
{
    std::signal(SIGINT, takeSignal);
    std::signal(SIGTERM, takeSignal);
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

bool wasInterrupted()
{
    return signalled.load(std::memory_order_relaxed);
}

Progress::Progress(QString what) : m_what(std::move(what)), m_isTerminal(errorIsTerminal()) {}

Progress::~Progress()
{
    if (m_percent >= 0) {
        std::fputs("\r\033[K", stderr);
    }
}

void Progress::show(double share)
{
    const int percent = int(share * 100);
    if (m_isTerminal && percent != m_percent) {
        m_percent = percent;
        std::fprintf(stderr, "\r\033[K%s %d %%", qUtf8Printable(m_what), percent);
        std::fflush(stderr);
    }
}

} // namespace Terminal
