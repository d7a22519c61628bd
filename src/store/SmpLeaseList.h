#pragma once

#include "store/SmpLease.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// What the store knows of one lease.
struct SmpLease::Holder {
    std::function<void()> writerCame; ///< written before it is listed, and by resign()
    // Under the list's mutex:
    bool hasResigned = false;          ///< no writer waits for it
    std::shared_ptr<const void> trees; ///< that a writer has left to it; gone with the lease
    bool told = false;                 ///< of the writer who waits now
    std::thread::id caller;            ///< the thread on which `writerCame` is under way; none otherwise
};

/// The leases of one store. Private to this folder. Any thread.
class SmpLeaseList {
public:
    using Holder = SmpLease::Holder;

    /// Lists a holder while `mayRead()` says so, which the writer changes before it calls tell(): each holder is either
    /// refused here or told there. @return false when refused
    template<class MayRead>
    [[nodiscard]] bool add(std::shared_ptr<Holder> holder, const MayRead &mayRead)
    {
        const std::lock_guard lock(m_mutex);
        if (!mayRead()) {
            return false;
        }
        m_holders.push_back(std::move(holder));
        return true;
    }
    /// Takes a holder off the list, after a call to it that is under way on another thread.
    void remove(const std::shared_ptr<Holder> &holder);
    /// Calls each holder that has not been told, outside of the mutex.
    void tell();
    /// What was told is no longer true: the next writer tells again.
    void forget();
    /// The holder is no longer called nor waited for.
    void resign(const std::shared_ptr<Holder> &holder);
    /// Waits until all who hold a lease have resigned, no longer than until `deadline`. @return whether they have
    bool waitUntil(std::chrono::steady_clock::time_point deadline);
    /// Leaves the trees to all who are listed, and takes them off the list.
    void leaveTo(const std::shared_ptr<const void> &trees);
    [[nodiscard]] std::size_t count() const;

private:
    mutable std::mutex m_mutex; ///< guards all below; never held while a holder is called
    std::condition_variable m_changed;
    std::vector<std::shared_ptr<Holder>> m_holders;
};
