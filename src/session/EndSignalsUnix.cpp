#include "session/EndSignals.h"

#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array<int, 2> wanted{SIGINT, SIGTERM};
std::array<struct sigaction, wanted.size()> former{};

/// Read end and write end; a handler may do no more than write.
std::array<int, 2> ends{-1, -1};

void noteSignal(int)
{
    const char one = 1;
    (void)!write(ends[1], &one, 1);
}

} // namespace

EndSignals::EndSignals(QObject *parent) : QObject(parent)
{
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        ends = {-1, -1};
        return;
    }
    auto *notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char bytes[8];
        while (read(ends[0], bytes, sizeof bytes) > 0) {
        }
        emit sigEnd();
    });
    struct sigaction action {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART | int(SA_RESETHAND);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        sigaction(wanted[i], &action, &former[i]);
    }
}

EndSignals::~EndSignals()
{
    if (ends[0] < 0) {
        return;
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        sigaction(wanted[i], &former[i], nullptr);
    }
    close(ends[0]);
    close(ends[1]);
    ends = {-1, -1};
}
