#include "platform/EmulatedBus.h"

#include <vector>

using emulator::Outcome;
using emulator::Urb;

namespace {

UsbError errorOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Done:
        return UsbError::None;
    case Outcome::NotYet:
        return UsbError::Pending;
    case Outcome::Stalled:
        return UsbError::Halted;
    case Outcome::Failed:
        return UsbError::Failed;
    case Outcome::Gone:
        break;
    }
    return UsbError::Gone;
}

} // namespace

EmulatedBus::EmulatedBus(double timeScale) : InstrumentBus(timeScale)
{
    start();
}

EmulatedBus::~EmulatedBus()
{
    stop();
}

void EmulatedBus::submit(const std::shared_ptr<Transfer> &transfer, Urb urb)
{
    transfer->key = ++m_lastKey;
    transfer->endpoint = urb.endpoint;
    urb.key = transfer->key;
    m_transfers[transfer->key] = transfer;
    m_ports[std::size_t(transfer->port)]->urbs->submit(urb);
}

void EmulatedBus::end(const std::shared_ptr<Transfer> &transfer, UsbError error, std::size_t moved)
{
    transfer->ended = true;
    transfer->error = error;
    transfer->moved = moved;
    m_transfers.erase(transfer->key);
    m_transferEnded.notify_all();
}

void EmulatedBus::cancel(const std::shared_ptr<Transfer> &transfer, UsbError error)
{
    if (transfer->ended) {
        return;
    }
    const auto urb = m_ports[std::size_t(transfer->port)]->urbs->cancel(transfer->key);
    end(transfer, error, urb ? urb->actual : 0);
}

void EmulatedBus::completed(int /*port*/, const Urb &urb)
{
    const auto found = m_transfers.find(urb.key);
    if (found != m_transfers.end()) {
        end(std::shared_ptr<Transfer>(found->second), errorOf(urb.outcome), urb.actual);
    }
}

void EmulatedBus::cancelAll(const std::function<bool(const Transfer &)> &isOne, UsbError error)
{
    std::vector<std::shared_ptr<Transfer>> found;
    for (const auto &[key, transfer] : m_transfers) {
        if (isOne(*transfer)) {
            found.push_back(transfer);
        }
    }
    for (const auto &transfer : found) {
        cancel(transfer, error);
    }
}

/// Ends what is late.
void EmulatedBus::afterPump()
{
    const Clock::time_point now = time();
    cancelAll([now](const Transfer &transfer) { return now >= transfer.deadline; }, UsbError::TimedOut);
}

void EmulatedBus::changed(int /*port*/, bool /*attached*/, unsigned /*generation*/)
{
    std::function<void()> tell;
    {
        const std::lock_guard lock(m_mutex);
        tell = m_changed;
        m_calling = bool(tell);
    }
    if (tell) {
        tell();
        const std::lock_guard lock(m_mutex);
        m_calling = false;
        m_transferEnded.notify_all();
    }
}
