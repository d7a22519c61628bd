#include "cli/Terminal.h"

#include "cli/Console.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <utility>

namespace Terminal {

namespace {

std::atomic<bool> signalled{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void takeSignal(int)
{
    signalled.store(true, std::memory_order_relaxed);
}

/// In one piece: a console of Windows shows nothing of a character whose bytes come one by one.
void write(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stderr);
}

} // namespace

void say(const QString &text)
{
    write(QStringLiteral("luxcli: %1\n").arg(text));
}

void catchSignals()
{
    std::signal(SIGINT, takeSignal);
    std::signal(SIGTERM, takeSignal);
#ifdef SIGHUP
    if (std::signal(SIGHUP, takeSignal) == SIG_IGN) { // nohup(1): it outlives its terminal
        std::signal(SIGHUP, SIG_IGN);
    }
#endif
    // What cannot be written is told where it is written.
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);
#endif
#ifdef SIGXFSZ
    std::signal(SIGXFSZ, SIG_IGN);
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

Progress::Progress(QString what) : m_what(std::move(what)), m_isTerminal(Console::errorIsTerminal()) {}

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
        write(QStringLiteral("\r\033[K") + line);
        std::fflush(stderr);
    }
}

} // namespace Terminal
