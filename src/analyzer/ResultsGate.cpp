#include "analyzer/ResultsGate.h"

ResultsPass::ResultsPass(ResultsGate &gate) : m_gate(nullptr)
{
    const std::lock_guard lock(gate.m_mutex);
    if (gate.m_changes == 0) {
        ++gate.m_holders;
        m_gate = &gate;
    }
}

ResultsPass::~ResultsPass()
{
    if (m_gate == nullptr) {
        return;
    }
    const std::lock_guard lock(m_gate->m_mutex);
    if (--m_gate->m_holders == 0) {
        m_gate->m_changed.notify_all(); // under the lock: the gate may go as soon as it is open
    }
}

ResultsChange::ResultsChange(ResultsGate &gate) : m_gate(gate)
{
    std::unique_lock lock(gate.m_mutex);
    ++gate.m_changes;
    gate.modifyPending.store(true, std::memory_order_release);
    gate.m_changed.wait(lock, [&gate] { return gate.m_holders == 0; });
}

ResultsChange::~ResultsChange()
{
    const std::lock_guard lock(m_gate.m_mutex);
    if (--m_gate.m_changes == 0) {
        m_gate.modifyPending.store(false, std::memory_order_release);
    }
}
