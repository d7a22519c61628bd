#pragma once

#include "store/SmpSlabs.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class SmpData;

/// What is still to be given back, by a thread that has nothing else to do: the slabs of big captures, and stores that
/// somebody reads longer than their owner lived.
///
/// Private to this folder. One for the process; its thread starts when it is first needed and ends with the process.
/// Any thread.
class SmpReturns {
public:
    [[nodiscard]] static SmpReturns &instance();

    SmpReturns() = default;
    /// Ends the thread. A store that is still read then stays: whoever reads it ends with the process.
    ~SmpReturns();
    SmpReturns(const SmpReturns &) = delete;
    SmpReturns &operator=(const SmpReturns &) = delete;

    /// Gives slabs back to the system.
    void giveBack(SmpSlabChain slabs);
    /// Destroys a store once nobody reads it any more. It is closed to readers.
    void keep(std::unique_ptr<SmpData> data);

private:
    void run();
    void startThread();
    [[nodiscard]] bool isIdle() const { return m_slabs.empty() && m_read.empty(); }
    void giveSlabs(std::unique_lock<std::mutex> &lock);
    void destroyUnread(std::unique_lock<std::mutex> &lock);

    std::mutex m_mutex; ///< guards all below
    std::condition_variable m_woken;
    std::vector<SmpSlabChain> m_slabs;
    std::vector<std::unique_ptr<SmpData>> m_read;
    bool m_ending = false;
    std::thread m_thread;
};
