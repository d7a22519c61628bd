#include "store/SmpLease.h"

#include "store/SmpData.h"
#include "store/SmpLeaseList.h"

#include <algorithm>
#include <utility>

SmpLease::SmpLease(const SmpData *data, std::function<void()> writerCame)
{
    if (data == nullptr) {
        return;
    }
    m_holder = std::make_shared<Holder>();
    m_holder->writerCame = std::move(writerCame);
    if (data->m_leases->add(m_holder, [data] { return data->complete(); })) {
        m_data = data;
    }
}

SmpLease::~SmpLease()
{
    release();
}

bool SmpLease::writerWaits() const
{
    return m_data != nullptr && !m_data->complete();
}

void SmpLease::release()
{
    if (const SmpData *data = std::exchange(m_data, nullptr); data != nullptr) {
        data->m_leases->remove(m_holder);
    }
}

void SmpLeaseList::remove(const std::shared_ptr<Holder> &holder)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock,
                   [&] { return holder->caller == std::thread::id() || holder->caller == std::this_thread::get_id(); });
    std::erase(m_holders, holder);
    // Under the mutex: as soon as nobody is listed the writer may go on and take the store down, this list with it.
    m_changed.notify_all();
}

void SmpLeaseList::tell()
{
    std::unique_lock lock(m_mutex);
    const auto untold = [](const std::shared_ptr<Holder> &holder) { return !holder->told; };
    for (;;) {
        const auto found = std::find_if(m_holders.begin(), m_holders.end(), untold);
        if (found == m_holders.end()) {
            return;
        }
        const std::shared_ptr<Holder> holder = *found; // which may take itself off the list meanwhile
        holder->told = true;
        if (!holder->writerCame) {
            continue;
        }
        holder->caller = std::this_thread::get_id();
        lock.unlock();
        holder->writerCame();
        lock.lock();
        holder->caller = {};
        m_changed.notify_all();
    }
}

void SmpLeaseList::forget()
{
    const std::lock_guard lock(m_mutex);
    for (const std::shared_ptr<Holder> &holder : m_holders) {
        holder->told = false;
    }
}

bool SmpLeaseList::waitUntil(std::chrono::steady_clock::time_point deadline)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_until(lock, deadline, [this] { return m_holders.empty(); });
}

std::size_t SmpLeaseList::count() const
{
    const std::lock_guard lock(m_mutex);
    return m_holders.size();
}
