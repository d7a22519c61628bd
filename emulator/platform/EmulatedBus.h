#pragma once

#include "device/UsbPlatform.h"
#include "platform/InstrumentBus.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>

/// A bus in this process, for UsbPlatformEmulated.
class EmulatedBus final : public InstrumentBus {
public:
    /// @param timeScale  the instruments' time passes so many times faster than the real one
    explicit EmulatedBus(double timeScale = 1.0);
    ~EmulatedBus() override;

private:
    friend class UsbPlatformEmulated;

    /// What a transfer became. Shared by the pump and whoever waits.
    struct Transfer {
        bool ended = false;
        UsbError error = UsbError::Pending;
        std::size_t moved = 0;
        Clock::time_point deadline = Clock::time_point::max();
        std::uint64_t key = 0;
        int port = 0;
        std::uintptr_t owner = 0; ///< the interface that it was submitted through
        std::uint8_t endpoint = 0;
    };

    void completed(int port, const emulator::Urb &urb) override;
    void afterPump() override;
    void changed(int port, bool attached, unsigned generation) override;

    // All under the lock.
    void submit(const std::shared_ptr<Transfer> &transfer, emulator::Urb urb);
    void end(const std::shared_ptr<Transfer> &transfer, UsbError error, std::size_t moved);
    /// Takes back what is under way.
    void cancel(const std::shared_ptr<Transfer> &transfer, UsbError error);
    /// The same of all transfers of which that is true.
    void cancelAll(const std::function<bool(const Transfer &)> &isOne, UsbError error);

    std::condition_variable m_transferEnded;
    std::map<std::uint64_t, std::shared_ptr<Transfer>> m_transfers; ///< under way, by key
    std::uint64_t m_lastKey = 0;
    std::function<void()> m_changed; ///< the host's; called without the lock
    bool m_calling = false;          ///< ... just now
};
