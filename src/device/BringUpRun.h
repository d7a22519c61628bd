#pragma once

#include "acquisition/SmpState.h"
#include "device/DevConnection.h"

#include <QByteArray>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>

class UsbTransport;

/// One run of a bring-up thread: the device that it began with, its reports, its pauses, and its end.
///
/// Made by the coordinator for each arrival of a device and shared with the thread that works on it. It stands between
/// that thread and the transport, so that a run never reaches another device than its own: when that one has gone,
/// every transfer answers "not open", whatever is open by then.
class BringUpRun {
public:
    static constexpr int done = smpError::none;
    static constexpr int notOpen = smpError::notOpen;
    static constexpr int transferFailed = smpError::transfer;

    /// What a run asks of its coordinator. Each is called on the run's thread and does not block.
    struct Host {
        /// Through which the last steps are performed. Not owned, outlives the run; null for a run that never comes
        /// there.
        DevControl *control = nullptr;
        /// Passes a report on: state, error, value.
        std::function<void(int sta, int err, int n)> report;
        /// Has the main thread make the device object of `model` ready to be connected, and then call endVisit().
        std::function<void(int model, const QByteArray &identity)> prepareDevice;
        /// Has the main thread take over what has been performed, with its result, and then call endVisit().
        std::function<void(const DevConnection &connection, int result)> takeOver;
        /// A test's clock: true lets a pause of so many milliseconds count as over at once. May be null.
        std::function<bool(int ms)> skipPause;
    };

    /// @param product  of the device, which is open
    BringUpRun(UsbTransport &usb, std::uint16_t product, Host host);

    const std::uint16_t product;
    /// The run is to end as soon as it can, and to say nothing more: the program ends, or its device has come back.
    std::atomic<bool> stopRequested{false};

    // ---- the run's thread ------------------------------------------------------------------------------------------

    // One transfer; each answers done, notOpen or transferFailed. See UsbTransport.
    [[nodiscard]] int controlOut(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                                 std::span<const std::uint8_t> data);
    [[nodiscard]] int controlIn(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                                std::span<std::uint8_t> data);
    [[nodiscard]] int bulkWrite(std::span<const std::uint8_t> data, std::uint32_t &moved);

    void report(int sta, int err, int n = 0);
    /// Sleeps while the device works; over at once when it goes or a stop is requested.
    void pause(int ms);
    /// Sleeps while the device is away; over at once when a stop is requested.
    void pauseForReturn(int ms);
    /// Connects the device object, with two visits to the main thread and the requests between them on this one. All
    /// has been reported when it returns, but after a stop.
    void connectDevice(int model, const QByteArray &identity);

    // ---- the main thread -------------------------------------------------------------------------------------------

    /// Sets `stopRequested` and wakes the run.
    void requestStop();
    /// The device has left the bus.
    void setGone();
    [[nodiscard]] bool isGone() const { return m_gone.load(std::memory_order_acquire); }
    /// The main thread is through with prepareDevice() or takeOver().
    /// @param next  what the run is to perform now; nothing when it is through
    void endVisit(std::optional<DevConnection> next);

private:
    [[nodiscard]] bool isStopped() const { return stopRequested.load(std::memory_order_acquire); }
    /// Waits for the end of a visit, or for a stop. @return what is to be performed now
    [[nodiscard]] std::optional<DevConnection> awaitVisit();
    [[nodiscard]] bool hasDevice() const { return !isStopped() && !isGone(); }

    UsbTransport &m_usb;
    const Host m_host;
    std::atomic<bool> m_gone{false};
    std::mutex m_mutex; ///< orders the flags and the waits for them; held for nothing else
    std::condition_variable m_changed;
    bool m_visitEnded = false;           ///< under the mutex
    std::optional<DevConnection> m_next; ///< under the mutex
};
