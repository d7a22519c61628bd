// The instrument's bulk end points.

#include "Instrument.h"

#include <algorithm>

namespace emulator {

Answer Instrument::bulkOut(std::uint8_t endpoint, std::span<const std::uint8_t> bytes)
{
    if (!m_attached) {
        m_log.addAfterUnplug();
        return {Outcome::Gone};
    }
    TransferLog::Entry entry;
    entry.kind = TransferLog::Kind::BulkOut;
    entry.length = bytes.size();
    Answer answer{Outcome::Done, bytes.size()};
    const std::optional<Fault> fault = m_faults.takeForOut(m_outBytes, bytes.size());
    if (!m_firmwareRuns || endpoint != bulkOutOf(m_product) || m_haltOut) {
        answer = {Outcome::Stalled};
    } else if (fault) {
        switch (fault->action) {
        case FaultAction::Unplug:
            detach();
            answer = {Outcome::Gone};
            break;
        case FaultAction::Stall:
            m_haltOut = true;
            answer = {Outcome::Stalled};
            break;
        case FaultAction::Fail:
            answer = {Outcome::Failed};
            break;
        case FaultAction::Silence:
            answer = {Outcome::NotYet};
            break;
        case FaultAction::Shorten:
            answer.bytes = std::min<std::size_t>(bytes.size(), fault->amount);
            break;
        case FaultAction::Delay:
            answer.delay = fault->amount;
            break;
        case FaultAction::Replace:
        case FaultAction::End:
            break;
        }
    }
    if (answer.outcome == Outcome::Done) {
        m_fpga.receive(bytes.first(answer.bytes));
        m_outBytes += answer.bytes;
    }
    entry.outcome = answer.outcome;
    entry.moved = answer.bytes;
    m_log.add(std::move(entry));
    return answer;
}

void Instrument::startBulk()
{
    m_inBytes = 0;
    m_holdUntil = 0;
    m_endIsOld = false;
    if (!m_fpga.enabled()) {
        m_pipe = Pipe::Off;
    } else if (m_model.streams()) {
        m_pipe = Pipe::Stream;
        m_streamStart = m_now;
        m_streamer.start(m_model.streamsBytes() ? Streamer::Format::ByteSamples : Streamer::Format::SlicedWords,
                         sampler(), m_trigger.enabled);
    } else {
        m_pipe = Pipe::Window;
    }
}

void Instrument::stopBulk()
{
    if (m_pipe == Pipe::Stream) {
        m_pipe = m_options.silentStop ? Pipe::Silent : Pipe::Ending;
        m_endIsOld = true;
    } else if (m_pipe == Pipe::Ending && !m_endIsOld) {
        // The read that was pending when the stream was stopped is still to be ended. What nobody fetches until the
        // next stop is forgotten.
        m_endIsOld = true;
    } else {
        m_pipe = Pipe::Off;
    }
}

Answer Instrument::bulkIn(std::uint8_t endpoint, std::span<std::uint8_t> out)
{
    if (!m_attached) {
        m_log.addAfterUnplug();
        return {Outcome::Gone};
    }
    if (!m_firmwareRuns || endpoint != bulkInOf(m_product) || m_haltIn) {
        return {Outcome::Stalled};
    }
    if (m_pipe == Pipe::Window || m_pipe == Pipe::Stream) {
        if (const std::optional<Fault> fault = m_faults.takeForIn(m_inBytes)) {
            return strike(*fault);
        }
    }
    if (m_now < m_holdUntil) {
        return {Outcome::NotYet};
    }
    switch (m_pipe) {
    case Pipe::Window:
        return window(out);
    case Pipe::Stream:
        return stream(out);
    case Pipe::Ending:
        m_pipe = Pipe::Off;
        return {Outcome::Done, 0, true};
    case Pipe::Off:
    case Pipe::Silent:
        break;
    }
    return {Outcome::NotYet};
}

/// A fault of the bulk IN pipe.
Answer Instrument::strike(const Fault &fault)
{
    switch (fault.action) {
    case FaultAction::Stall:
        m_haltIn = true;
        return {Outcome::Stalled};
    case FaultAction::Fail:
        return {Outcome::Failed};
    case FaultAction::Unplug:
        detach();
        return {Outcome::Gone};
    case FaultAction::Delay:
        m_holdUntil = m_now + fault.amount;
        return {Outcome::NotYet};
    case FaultAction::Silence:
        m_pipe = Pipe::Silent;
        return {Outcome::NotYet};
    case FaultAction::Shorten:
    case FaultAction::End:
    case FaultAction::Replace:
        break;
    }
    m_pipe = Pipe::Off;
    return {Outcome::Done, 0, true};
}

/// Books bytes that go to the host. `isLast`: nothing follows, which a short packet or one of length zero tells.
Answer Instrument::sent(In out, std::size_t bytes, bool isLast)
{
    m_faults.patch(m_inBytes, out.first(bytes));
    m_inBytes += bytes;
    const bool full = bytes == out.size();
    if (isLast) {
        m_pipe = full && m_inBytes % packetSize() == 0 ? Pipe::Ending : Pipe::Off;
        m_endIsOld = false;
    }
    return {Outcome::Done, bytes, full || isLast};
}

Answer Instrument::window(In out)
{
    const std::uint64_t left = m_windowSize - std::min(m_inBytes, m_windowSize);
    const auto bytes = std::size_t(std::min<std::uint64_t>({out.size(), left, m_faults.inBytesBefore(m_inBytes)}));
    m_memory.read(m_windowAddress + m_inBytes, out.first(bytes));
    return sent(out, bytes, bytes == left);
}

Answer Instrument::stream(In out)
{
    const std::size_t due = m_options.pace > 0 ? streamBytesDue() : out.size();
    const auto bytes = std::size_t(std::min<std::uint64_t>({out.size(), due, m_faults.inBytesBefore(m_inBytes)}));
    if (!m_running || bytes == 0) {
        return {Outcome::NotYet};
    }
    m_streamer.fill(out.first(bytes));
    return sent(out, bytes, false);
}

/// Bytes that the pace allows now: whole packets, so that no transfer ends before the stream does.
std::size_t Instrument::streamBytesDue() const
{
    const double elapsed = double(m_now - m_streamStart) * m_options.pace;
    const auto total = std::uint64_t(m_streamer.bytesIn(sampler().samplesIn(elapsed)));
    const std::uint64_t due = total - std::min(total, m_inBytes);
    return std::size_t(due / packetSize() * packetSize());
}

} // namespace emulator
