#pragma once

#include "device/UsbPlatform.h"

#include <condition_variable>
#include <memory>
#include <mutex>

struct LibusbInterface;
struct LibusbSlot;

/// The asynchronous bulk reads of all interfaces. A read that was queued ends on the thread that handles libusb's
/// events; all else may be called from any thread. Outlives its slots, and the interfaces that reads are queued on.
class LibusbReads {
public:
    /// A slot for one read at a time. @return null when memory is spent
    [[nodiscard]] std::unique_ptr<UsbReadSlot> makeSlot();

    // The slots are those of makeSlot(); the answers are those of UsbPlatform.

    [[nodiscard]] UsbResult queue(LibusbInterface &of, std::uint8_t pipe, std::uint8_t *buffer, std::uint32_t size,
                                  UsbReadSlot &slot);
    [[nodiscard]] bool wait(UsbReadSlot &slot, int ms);
    [[nodiscard]] UsbResult result(UsbReadSlot &slot, std::uint32_t &moved);
    /// Ends the queued reads of `pipe`, or of all pipes for 0. When it returns they have ended. Not on the thread that
    /// handles the events, which it waits for.
    void end(LibusbInterface &of, std::uint8_t pipe);

private:
    friend struct LibusbSlot;

    std::mutex m_mutex; ///< slots and the transfers behind them are looked at under it only
    std::condition_variable m_ended;
};
