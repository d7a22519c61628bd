#include "StorageCapture.h"

#include <algorithm>

namespace emulator {

namespace {

constexpr std::int64_t effortAtStop = std::int64_t(1) << 22; // steps of the signal: the bus waits for them

} // namespace

void StorageCapture::start(const Sampler &sampler, const SampleConfig &sample, const TriggerConfig &trigger)
{
    m_sampler = sampler;
    m_sample = sample;
    m_trigger = trigger;
    m_unit = TriggerUnit(trigger, sample.preTrigger);
    m_phase = Phase::PreTrigger;
    m_due = 0;
    m_position = 0;
    m_triggerAt = -1;
    m_triggerRecord = 0;
    m_triggerRecorded = false;
    m_memory.begin(m_nextAddress);
}

void StorageCapture::advance(std::int64_t due, std::int64_t effort, bool onePhase)
{
    m_due = std::max(m_due, due);
    const Phase before = m_phase;
    while (step(effort)) {
        if (onePhase && m_phase != before) {
            return;
        }
    }
}

/// One move through the phases. @return false when there is nothing to do for now
bool StorageCapture::step(std::int64_t &effort)
{
    switch (m_phase) {
    case Phase::PreTrigger:
        if (m_due < m_sample.preTrigger) {
            return false;
        }
        m_phase = Phase::Waiting;
        return true;
    case Phase::Waiting:
        m_triggerAt = m_unit.search(m_sampler, m_due, effort);
        if (m_triggerAt < 0) {
            return false;
        }
        m_phase = Phase::Triggered;
        beginRecords(m_triggerAt - m_sample.preTrigger);
        return true;
    case Phase::Triggered:
        recordTriggered(effort);
        return m_phase == Phase::Ended;
    case Phase::Idle:
    case Phase::Ended:
        break;
    }
    return false;
}

void StorageCapture::beginRecords(std::int64_t from)
{
    m_position = from;
    m_memory.slideWithin(m_sample.preMemory);
}

void StorageCapture::recordTriggered(std::int64_t &effort)
{
    if (!m_triggerRecorded) {
        record(m_triggerAt, effort);
        if (m_position < m_triggerAt) {
            return;
        }
        m_memory.closeRecord();
        m_triggerRecord = m_trigger.none() ? 0 : m_memory.recordCount();
        m_triggerRecorded = true;
        m_memory.fill();
    }
    const std::int64_t last = m_triggerAt + std::max<std::int64_t>(m_sample.depth - m_sample.preTrigger, 1);
    record(std::min(m_due, last), effort);
    if (m_position >= last || m_memory.isFull()) {
        end();
    }
}

/// Records up to sample `to`, or until the memory is full or the effort spent.
void StorageCapture::record(std::int64_t to, std::int64_t &effort)
{
    if (m_memory.format() == RecordFormat::Mixed16) {
        recordMixed(to, effort);
        return;
    }
    while (m_position < to && effort > 0 && !m_memory.isFull()) {
        const SignalRun run = m_sampler.at(m_position, m_trigger.enabled);
        m_position += m_memory.append(run.levels, std::min(run.end, to) - m_position);
        --effort;
    }
}

/// As record(); each sample is a step.
void StorageCapture::recordMixed(std::int64_t to, std::int64_t &effort)
{
    while (m_position < to && effort > 0 && !m_memory.isFull()) {
        const SignalRun run = m_sampler.at(m_position, m_trigger.enabled);
        const std::int64_t last = std::min({run.end, to, m_position + effort});
        effort -= last - m_position;
        for (; m_position < last; ++m_position) {
            if (!m_memory.appendMixed(m_sampler.analogAt(0, m_position), m_sampler.analogAt(1, m_position),
                                      std::uint16_t(run.levels))) {
                return;
            }
        }
    }
}

void StorageCapture::stop()
{
    if (m_phase == Phase::Idle || m_phase == Phase::Ended) {
        return;
    }
    std::int64_t effort = effortAtStop; // an unpaced instrument may have any number of them to go
    if (m_phase == Phase::Triggered) {
        recordTriggered(effort);
    } else {
        beginRecords(std::max<std::int64_t>(0, m_due - m_sample.preTrigger));
        record(m_due, effort);
        m_memory.fill();
    }
    if (m_phase != Phase::Ended) {
        end();
    }
}

/// Goes on until the last group is whole; the model with analog channels until its memory is full, since it is read
/// back as a whole.
void StorageCapture::end()
{
    const bool whole = m_memory.format() == RecordFormat::Mixed16;
    m_memory.fill();
    // At least one group, so that there is something to read.
    while (!m_memory.isFull() && (whole || m_memory.groupOpen() || m_memory.recordCount() == 0)) {
        std::int64_t effort = whole ? RecordMemory::maxCount : 1;
        record(m_position + RecordMemory::maxCount, effort);
        m_memory.closeRecord();
    }
    m_nextAddress = m_memory.endAddress();
    m_phase = Phase::Ended;
}

CaptureInfo StorageCapture::info() const
{
    return {m_memory.recordCount(), m_triggerRecord, m_memory.endAddress()};
}

} // namespace emulator
