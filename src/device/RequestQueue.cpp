#include "device/RequestQueue.h"

#include "device/DevControl.h"
#include "settings/PostedCall.h"

#include <utility>

RequestQueue::RequestQueue(DevControl &control) : m_control(control) {}

RequestQueue::~RequestQueue()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
    }
    m_changed.notify_one();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void RequestQueue::post(Job job, QObject *context, Done done)
{
    const std::uint64_t number = ++m_lastNumber;
    m_answers.emplace(number, Answer{context, std::move(done)});
    push({number, 0, std::move(job)});
}

void RequestQueue::postLatest(int key, Job job)
{
    push({0, key, std::move(job)});
}

void RequestQueue::push(Entry entry)
{
    {
        const std::lock_guard lock(m_mutex);
        if (entry.key > 0 && !m_waiting.empty() && m_waiting.back().key == entry.key) {
            m_waiting.back() = std::move(entry);
        } else {
            m_waiting.push_back(std::move(entry));
        }
    }
    m_changed.notify_one();
    if (!m_thread.joinable()) {
        m_thread = std::thread([this] { run(); });
    }
}

void RequestQueue::drop()
{
    std::deque<Entry> dropped;
    {
        const std::lock_guard lock(m_mutex);
        dropped.swap(m_waiting);
    }
    for (const Entry &entry : dropped) {
        answer(entry.number, SmpDevice::notOpen);
    }
}

bool RequestQueue::isIdle()
{
    const std::lock_guard lock(m_mutex);
    return m_waiting.empty() && !m_works;
}

void RequestQueue::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_ends || !m_waiting.empty(); });
        if (m_waiting.empty()) {
            return;
        }
        const Entry entry = std::exchange(m_waiting.front(), {});
        m_waiting.pop_front();
        m_works = true;
        lock.unlock();
        const int result = entry.job(m_control);
        if (entry.number != 0) {
            postCall(this, [this, number = entry.number, result] { answer(number, result); });
        }
        lock.lock();
        m_works = false;
    }
}

void RequestQueue::answer(std::uint64_t number, int result)
{
    const auto found = m_answers.find(number);
    if (found == m_answers.end()) {
        return;
    }
    const Answer answer = std::move(found->second);
    m_answers.erase(found);
    if (answer.context) {
        answer.done(result);
    }
}
