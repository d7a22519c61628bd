#include "session/EndSignals.h"

#include <atomic>
#include <windows.h>

namespace {

std::atomic<EndSignals *> receiver{nullptr};

/// On a thread of the system's.
BOOL WINAPI noteEvent(DWORD)
{
    EndSignals *const object = receiver.exchange(nullptr);
    if (object == nullptr) {
        return FALSE; // the second one: the system's own way
    }
    QMetaObject::invokeMethod(object, &EndSignals::sigEnd, Qt::QueuedConnection);
    return TRUE;
}

} // namespace

EndSignals::EndSignals(QObject *parent) : QObject(parent)
{
    receiver = this;
    SetConsoleCtrlHandler(noteEvent, TRUE);
}

EndSignals::~EndSignals()
{
    SetConsoleCtrlHandler(noteEvent, FALSE);
    receiver = nullptr;
}
