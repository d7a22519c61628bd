#pragma once

#include <functional>
#include <memory>

class SmpData;
class SmpLeaseList;

/// Admission to read a capture for long: for a decoder, a list, an export, whoever reads for more than a frame.
///
/// It is granted as a SmpReadLock is, only while a capture is closed, and may be kept across a return to the event
/// loop. In exchange its holder gives it up within 20 ms when a writer waits, as at a capture's start, a load and a
/// change of device: whoever works asks writerWaits() between two steps, whoever sleeps has itself woken by the call. A
/// holder that stays makes the next capture begin late, or the load wait for it; the window does not stand still for
/// it, and the capture that it reads stays valid as long as it holds on. Made, asked and released on any thread, one
/// thread at a time.
class SmpLease {
public:
    /// @param data         may be null: then refused
    /// @param writerCame  called at most once for each writer that comes, on the writer's thread and outside of all
    ///                     locks; may release and even destroy this lease, must not wait for another thread. May be
    ///                     empty.
    explicit SmpLease(const SmpData *data, std::function<void()> writerCame = {});
    /// As release().
    ~SmpLease();
    SmpLease(const SmpLease &) = delete;
    SmpLease &operator=(const SmpLease &) = delete;

    /// True while admitted.
    explicit operator bool() const { return m_data != nullptr; }
    /// True when the holder must leave. False without admission. Cost: one atomic load.
    [[nodiscard]] bool writerWaits() const;
    /// Of a holder whose thread does not leave: nothing is called from here on, and no writer waits. The next one
    /// leaves the trees to the holder, who may read them, and nothing else of the store, until release(). Not within
    /// `writerCame`.
    void resign();
    /// Gives the admission up. Waits for a call of `writerCame` that is under way on another thread, so that nothing
    /// is called from here on. Harmless without admission.
    void release();

private:
    friend class SmpLeaseList;
    struct Holder;

    const SmpData *m_data = nullptr;      ///< null when refused, resigned or released
    std::shared_ptr<SmpLeaseList> m_list; ///< null when refused or released; may outlive the store
    std::shared_ptr<Holder> m_holder;
};
