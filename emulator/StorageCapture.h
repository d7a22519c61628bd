#pragma once

#include "RecordMemory.h"
#include "TriggerUnit.h"

namespace emulator {

/// What an instrument tells of its last capture.
struct CaptureInfo {
    std::uint32_t recordCount = 0;
    std::uint32_t triggerRecord = 0; ///< from 1: the trigger stands behind it; 0 for none
    std::uint32_t endAddress = 0;
};

/// A capture into the instrument's memory, from its start to its end.
///
/// Sample 0 is the first one after the start. The trigger is looked for from sample `preTrigger` on; the records begin
/// `preTrigger` samples before it (later, when the share of memory for them is spent) and end with the group in which
/// `depth` samples are complete, or when the memory is full. A stop ends it in the same way at once; one before the
/// trigger keeps what lies within the last `preTrigger` samples.
class StorageCapture {
public:
    enum class Phase {
        Idle,
        PreTrigger, ///< filling the part before the trigger
        Waiting,
        Triggered, ///< filling the rest
        Ended
    };

    /// @param memory  not owned, outlives this
    explicit StorageCapture(RecordMemory &memory) : m_memory(memory) {}

    void start(const Sampler &sampler, const SampleConfig &sample, const TriggerConfig &trigger);
    /// Time has brought samples up to `due` (not included).
    /// @param effort    steps of the signal after which the rest is left for the next call
    /// @param onePhase  stop as soon as the phase has changed
    void advance(std::int64_t due, std::int64_t effort, bool onePhase);
    void stop();
    /// The power went: there is no capture.
    void powerOn() { m_phase = Phase::Idle; }

    [[nodiscard]] Phase phase() const { return m_phase; }
    [[nodiscard]] CaptureInfo info() const;
    /// The trigger's sample, counted from the start; -1 while there is none.
    [[nodiscard]] std::int64_t triggerAt() const { return m_triggerAt; }
    /// The first sample of the records that are kept.
    [[nodiscard]] std::int64_t firstKept() const { return m_position - m_memory.samplesKept(); }
    /// The first sample that time has not brought yet.
    [[nodiscard]] std::int64_t due() const { return m_due; }

    /// Where the memory begins to be written at the next start.
    void setNextAddress(std::uint32_t address) { m_nextAddress = address; }

private:
    [[nodiscard]] bool step(std::int64_t &effort);
    void beginRecords(std::int64_t from);
    void record(std::int64_t to, std::int64_t &effort);
    void recordMixed(std::int64_t to, std::int64_t &effort);
    void recordTriggered(std::int64_t &effort);
    void end();

    RecordMemory &m_memory;
    Sampler m_sampler;
    SampleConfig m_sample;
    TriggerConfig m_trigger;
    TriggerUnit m_unit;
    Phase m_phase = Phase::Idle;
    std::int64_t m_due = 0;
    std::int64_t m_position = 0; ///< the first sample that stands in no record
    std::int64_t m_triggerAt = -1;
    std::uint32_t m_triggerRecord = 0;
    bool m_triggerRecorded = false;
    std::uint32_t m_nextAddress = 0;
};

} // namespace emulator
