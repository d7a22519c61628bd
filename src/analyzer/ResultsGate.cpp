#include "analyzer/ResultsGate.h"

#include "analyzer/LeftBehind.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::chrono::milliseconds endPatience{20}; ///< with a thread that was asked to end
constexpr std::chrono::milliseconds betweenTakes{2}; ///< behind the patience, while a reader is outside of plug-ins
constexpr std::chrono::milliseconds betweenTurns{1}; ///< two looks for whether results are free again

} // namespace

/// Those who lost their pass and did not come out yet. Outlives the gate, with them. Any thread.
class LostReaders {
public:
    void add(std::shared_ptr<ResultsReader> reader)
    {
        const std::lock_guard lock(m_mutex);
        m_readers.push_back(std::move(reader));
        m_count.store(m_readers.size(), std::memory_order_release);
    }
    /// Whether one of them is in there. Nobody is, as a rule: then it costs an atomic load.
    [[nodiscard]] bool areIn(const AnalyzerResults *results)
    {
        if (m_count.load(std::memory_order_acquire) == 0) {
            return false;
        }
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_readers, [](const std::shared_ptr<ResultsReader> &reader) { return !reader->isStuck(); });
        m_count.store(m_readers.size(), std::memory_order_release);
        return std::any_of(m_readers.begin(), m_readers.end(), [results](const std::shared_ptr<ResultsReader> &reader) {
            return reader->results() == results;
        });
    }

private:
    std::atomic<std::size_t> m_count{0};
    std::mutex m_mutex; ///< of what follows
    std::vector<std::shared_ptr<ResultsReader>> m_readers;
};

ResultsGate::ResultsGate(ResultsKeeper *keeper) : m_keeper(keeper), m_lost(std::make_shared<LostReaders>()) {}

bool ResultsGate::takeLocked(const std::shared_ptr<ResultsReader> &reader)
{
    using State = ResultsReader::State;
    if (m_keeper == nullptr || reader->m_state.load(std::memory_order_acquire) != State::Inside ||
        !m_keeper->owns(reader->results())) {
        return false;
    }
    State state = State::Inside;
    if (!reader->m_state.compare_exchange_strong(state, State::Lost, std::memory_order_acq_rel)) {
        return false;
    }
    m_lost->add(reader);
    m_keeper->keep(reader->results(), reader);
    std::erase(m_holders, reader);
    return true;
}

bool ResultsGate::take(const std::shared_ptr<ResultsReader> &reader)
{
    const std::lock_guard lock(m_mutex);
    return takeLocked(reader);
}

std::vector<const AnalyzerResults *> ResultsGate::takeFromStuck(std::chrono::milliseconds now)
{
    std::vector<const AnalyzerResults *> stuckIn;
    const std::lock_guard lock(m_mutex);
    for (const std::shared_ptr<ResultsReader> &reader : std::vector(m_holders)) {
        const std::uint64_t calls = reader->m_calls.load(std::memory_order_relaxed);
        const bool isInside = reader->m_state.load(std::memory_order_relaxed) == ResultsReader::State::Inside;
        if (!isInside || calls != reader->m_seenCalls || reader->m_isLong.load(std::memory_order_relaxed)) {
            reader->m_seenCalls = calls;
            reader->m_seenAt = now;
        } else if (now - reader->m_seenAt >= grace && takeLocked(reader)) {
            stuckIn.push_back(reader->results());
        }
    }
    return stuckIn;
}

void ResultsGate::endThread(std::thread &thread, const std::shared_ptr<ResultsReader> &reader,
                            const std::function<bool(std::chrono::milliseconds)> &waitForEnd)
{
    for (auto most = endPatience; !waitForEnd(most); most = betweenTakes) {
        if (reader->isLost() || take(reader)) {
            LeftBehind::leave(thread);
            return;
        }
    }
    thread.join();
}

bool ResultsReader::waitForTurn() const
{
    while (m_lost->areIn(results())) {
        if (isLost()) {
            return false;
        }
        std::this_thread::sleep_for(betweenTurns);
    }
    return true;
}

ResultsPass::ResultsPass(ResultsGate &gate, std::shared_ptr<ResultsReader> reader)
    : m_gate(nullptr), m_reader(std::move(reader))
{
    const std::lock_guard lock(gate.m_mutex);
    if (gate.m_changes == 0) {
        m_reader->m_lost = gate.m_lost;
        gate.m_holders.push_back(m_reader);
        m_gate = &gate;
    }
}

ResultsPass::~ResultsPass()
{
    if (m_gate == nullptr) {
        return;
    }
    if (m_reader->isLost()) {
        m_reader->m_lost.reset(); // which has the reader as well
        m_reader->m_isOut.store(true, std::memory_order_release);
        return;
    }
    const std::lock_guard lock(m_gate->m_mutex); // none is lost any more: it is inside of nothing
    std::erase(m_gate->m_holders, m_reader);
    if (m_gate->m_holders.empty()) {
        m_gate->m_changed.notify_all(); // under the lock: the gate may go as soon as it is open
    }
}

ResultsChange::ResultsChange(ResultsGate &gate, std::chrono::milliseconds patience) : m_gate(gate)
{
    const auto isFree = [&gate] { return gate.m_holders.empty(); };
    std::unique_lock lock(gate.m_mutex);
    ++gate.m_changes;
    gate.modifyPending.store(true, std::memory_order_release);
    if (gate.m_changed.wait_for(lock, patience, isFree)) {
        return;
    }
    do {
        for (const std::shared_ptr<ResultsReader> &reader : std::vector(gate.m_holders)) {
            (void)gate.takeLocked(reader);
        }
    } while (!gate.m_changed.wait_for(lock, betweenTakes, isFree));
}

ResultsChange::~ResultsChange()
{
    const std::lock_guard lock(m_gate.m_mutex);
    if (--m_gate.m_changes == 0) {
        m_gate.modifyPending.store(false, std::memory_order_release);
    }
}
