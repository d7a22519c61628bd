#include "UrbQueue.h"

#include <algorithm>

namespace emulator {

void UrbQueue::submit(Urb urb)
{
    urb.actual = 0;
    urb.outcome = Outcome::NotYet;
    if (m_pending.empty()) {
        m_generation = m_instrument.generation();
    }
    m_pending.push_back({urb});
    m_wantsMore = true;
}

std::optional<Urb> UrbQueue::cancel(std::uint64_t key)
{
    const auto found = std::find_if(m_pending.begin(), m_pending.end(),
                                    [key](const Pending &pending) { return pending.urb.key == key; });
    if (found == m_pending.end()) {
        return std::nullopt;
    }
    const Urb urb = found->urb;
    m_pending.erase(found);
    return urb;
}

std::vector<Urb> UrbQueue::pump(std::size_t room)
{
    m_wantsMore = false;
    std::vector<Urb> completed;
    std::uint32_t busy = 0; // end points whose first transfer is not complete
    for (auto at = m_pending.begin(); at != m_pending.end();) {
        Pending &pending = *at;
        const std::uint32_t bit = 1U << ((pending.urb.endpoint & 0xFU) + (pending.urb.endpoint >> 7) * 16U);
        if (!m_instrument.attached() || m_instrument.generation() != m_generation) {
            pending.urb.outcome = Outcome::Gone;
        } else if ((busy & bit) == 0) {
            serve(pending, room);
        }
        if (pending.urb.outcome == Outcome::NotYet) {
            busy |= bit;
            ++at;
            continue;
        }
        const Urb urb = pending.urb;
        at = m_pending.erase(at);
        if (urb.kind == Urb::Kind::BulkIn && urb.actual == urb.buffer.size()) {
            noteRead();
        }
        completed.push_back(urb);
        if (room == 0) {
            m_wantsMore = !m_pending.empty();
            break;
        }
    }
    return completed;
}

void UrbQueue::noteRead()
{
    const auto left = int(std::count_if(m_pending.begin(), m_pending.end(),
                                        [](const Pending &pending) { return pending.urb.kind == Urb::Kind::BulkIn; }));
    m_fewestReadsLeft = m_fewestReadsLeft < 0 ? left : std::min(m_fewestReadsLeft, left);
}

void UrbQueue::serve(Pending &pending, std::size_t &room)
{
    Urb &urb = pending.urb;
    if (urb.kind == Urb::Kind::BulkIn) {
        serveRead(pending, room);
        return;
    }
    if (!pending.executed) {
        const Answer answer = urb.kind == Urb::Kind::Control ? m_instrument.control(urb.setup, urb.buffer)
                                                             : m_instrument.bulkOut(urb.endpoint, urb.buffer);
        pending.executed = true;
        pending.answer = answer.outcome;
        pending.readyAt = m_instrument.now() + answer.delay;
        urb.actual = answer.bytes;
    }
    if (m_instrument.now() >= pending.readyAt) {
        urb.outcome = pending.answer;
    }
}

void UrbQueue::serveRead(Pending &pending, std::size_t &room)
{
    Urb &urb = pending.urb;
    while (room > 0) {
        const std::size_t piece = std::min(room, urb.buffer.size() - urb.actual);
        const Answer answer = m_instrument.bulkIn(urb.endpoint, urb.buffer.subspan(urb.actual, piece));
        if (answer.outcome != Outcome::Done) {
            urb.outcome = answer.outcome;
            return;
        }
        urb.actual += answer.bytes;
        room -= answer.bytes;
        const bool isFull = urb.actual == urb.buffer.size();
        if (isFull || (answer.ends && answer.bytes < piece)) {
            urb.outcome = Outcome::Done;
            return;
        }
        if (answer.bytes < piece && !answer.ends) {
            return; // nothing more for now
        }
    }
    m_wantsMore = true;
}

} // namespace emulator
