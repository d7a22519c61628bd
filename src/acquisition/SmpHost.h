#pragma once

#include "acquisition/SmpBufQueue.h"
#include "store/SmpData.h"

#include <QObject>
#include <QSemaphore>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

/// What a capture thread needs of the device object that it runs for: state, stop flag, store, the queue of received
/// buffers and the report signals.
///
/// The device object derives from it, so that the capture threads need not know devices. It lives on the main thread;
/// the atomics are shared with the capture threads. The signals are emitted from capture threads: receivers on the main
/// thread get them queued.
class SmpHost : public QObject {
    Q_OBJECT
public:
    explicit SmpHost(QObject *parent = nullptr);
    ~SmpHost() override;

    /// The store of the last capture. Made by the model's constructor, destroyed with the host.
    std::unique_ptr<SmpData> smpData;

    /// Capture state: 0 starting, 1 pre-trigger part, 2 waiting for the trigger, 3 sampling, 4 reading, 5 done.
    std::atomic<int> smpSta{0};
    /// The user asked for a stop. Cleared when a capture starts. Follow it by wake().
    std::atomic<bool> smpStop{false};
    /// Error code with which the current capture is to end, 0 for none.
    std::atomic<std::uint32_t> endErr{0};

    // ---- captures of an instrument ----------------------------------------------------------------------------------

    /// The capture is to end without publishing its data: what it needs is about to go. Cleared when a capture starts.
    /// Set it with `smpStop`; follow it by wake().
    std::atomic<bool> smpAbort{false};
    /// The user asked for a stop while a device's memory was read back: what has come is enough. Cleared when a capture
    /// starts.
    std::atomic<bool> smpCut{false};
    /// True from a start until the store is closed, or until it is clear that it will not be; the last signals may
    /// still be on their way. Set by who starts, cleared by the last thread that works on the capture.
    std::atomic<bool> smpBusy{false};
    /// Bytes asked of the device's memory by the last read window.
    std::atomic<std::int32_t> readSize{0};
    /// The received buffers that are still to be converted.
    SmpBufQueue smpBufs;
    /// One token for each buffer that may be converted, and a last one that ends the conversion.
    QSemaphore smpSem{0};

    /// Waits until a stop is asked for or `abort` is set, at most `ms` milliseconds. Any thread.
    void waitForStop(int ms, const std::atomic<bool> &abort);
    void waitForStop(int ms) { waitForStop(ms, smpAbort); }
    /// Lets waitForStop() look at the flags now. Any thread.
    void wake();

    /// Opens the store for the next capture: waits until nobody reads the last one any more, or until `givesUp`, which
    /// is asked every 20 ms. Then the last capture can be read again. The capture's thread.
    /// @return false when the wait was given up
    [[nodiscard]] bool openStore(const std::function<bool()> &givesUp);

    /// Sets the state and tells it.
    void report(int sta, int err, int value);

signals:
    /// State, error (smpError), value. Error 0: progress, `value` is a percentage (state 2: the trigger position).
    /// Error 32: no error, but a note; `value` is the offset of the last malformed record. All that a report tells
    /// travels with it: the store is the next capture's when it arrives.
    void sigSmpSta(int sta, int err, int value);
    /// A capture or a file load has closed `smpData`.
    void sigSmpDataReady();

private:
    std::mutex m_mutex; ///< of `m_woken` alone
    std::condition_variable m_woken;
};
