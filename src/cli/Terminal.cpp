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

bool takeInterrupt()
{
    return signalled.exchange(false, std::memory_order_relaxed);
}

Progress::Progress(QString what) : m_what(std::move(what)), m_isTerminal(errorIsTerminal()) {}

Progress::~Progress()
{
    if (!m_shown.isEmpty()) {
        std::fputs("\r\033[K", stderr);
    }
}

void Progress::show(const QString &what, double share)
{
    m_what = what;
    show(share);
}

void Progress::show(double share)
{
    const QString line = share < 0 ? m_what : QStringLiteral("%1 %2 %").arg(m_what).arg(int(share * 100));
    if (m_isTerminal && line != m_shown) {
        m_shown = line;
        std::fprintf(stderr, "\r\033[K%s", qUtf8Printable(line));
        std::fflush(stderr);
    }
}

} // namespace Terminal
