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
        m_list = data->m_leases;
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

void SmpLease::resign()
{
    if (m_list) {
        m_list->resign(m_holder);
        m_data = nullptr; // may go at any time from here on
    }
}

void SmpLease::release()
{
    m_data = nullptr;
    if (const std::shared_ptr<SmpLeaseList> list = std::exchange(m_list, nullptr)) {
        list->remove(m_holder);
        m_holder.reset();
    }
}

void SmpLeaseList::remove(const std::shared_ptr<Holder> &holder)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock,
                   [&] { return holder->caller == std::thread::id() || holder->caller == std::this_thread::get_id(); });
    std::erase(m_holders, holder);
    m_changed.notify_all();
}

void SmpLeaseList::resign(const std::shared_ptr<Holder> &holder)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return holder->caller == std::thread::id(); });
    holder->writerCame = nullptr;
    holder->hasResigned = true;
    m_changed.notify_all();
}

void SmpLeaseList::leaveTo(const std::shared_ptr<const void> &trees)
{
    const std::lock_guard lock(m_mutex);
    for (const std::shared_ptr<Holder> &holder : m_holders) {
        holder->trees = trees;
    }
    m_holders.clear();
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
    const auto hasResigned = [](const std::shared_ptr<Holder> &holder) { return holder->hasResigned; };
    return m_changed.wait_until(lock, deadline,
                                [&] { return std::all_of(m_holders.begin(), m_holders.end(), hasResigned); });
}

std::size_t SmpLeaseList::count() const
{
    const std::lock_guard lock(m_mutex);
    return m_holders.size();
}
