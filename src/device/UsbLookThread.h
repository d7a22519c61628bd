#pragma once

#include "acquisition/SmpThread.h"
#include "device/UsbLook.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class UsbTransport;

/// The thread that looks at the bus, so that a device which is slow to open, or which the system is not ready with,
/// holds up nobody. It also closes the device that has gone.
///
/// A member of the coordinator, which lives on the main thread. One look is under way at a time; what it found is taken
/// over on the main thread, by the event loop.
class UsbLookThread final : public SmpThread {
    Q_OBJECT
public:
    /// The transport outlives this.
    explicit UsbLookThread(UsbTransport &usb) : m_usb(usb) {}

    /// Told of each look, when it has been taken over: 1 a device was opened, 0 nothing changed, -1 the open device is
    /// gone. Main thread. Set before the first look.
    std::function<void(int change)> looked;
    /// Asked before a look is taken over; true lets it wait for a while. Main thread. May be null.
    std::function<bool()> isHeldBack;

    /// Has one more look made, at once or behind those that wait. Of those that wait two are made at the most: the
    /// first may find that the open device has gone, the second opens another, and a third would find nothing new.
    /// Main thread; does not block, unless the system gives no thread.
    void begin();
    /// No more looks, for good, and no word of the one under way. Main thread; does not block.
    void stop();
    /// stop(), and waits for the look that is under way, see lookAtUsb(). Main thread.
    void end();
    /// True from begin() until the look has been taken over; after stop(), until the thread is through. Main thread.
    [[nodiscard]] bool isBusy() const;

private:
    void work() override;
    void startNext();
    void takeOver(UsbLook look);

    UsbTransport &m_usb;
    int m_waiting = 0;        ///< looks that have not begun; main thread
    bool m_underWay = false;  ///< from a launch until its answer has been taken; main thread
    bool m_isStopped = false; ///< main thread
    UsbLook m_heldBack;       ///< until it is taken over; main thread
    // What the thread is to do, set before it is launched.
    bool m_looks = false;
    std::optional<std::string> m_openPath;
    std::shared_ptr<UsbLink> m_leaving;
    std::atomic<bool> m_works{false}; ///< set on the main thread at a launch, cleared on the thread as it ends
};
