#pragma once

#include "acquisition/SmpTransport.h"
#include "device/UsbLook.h"
#include "device/UsbPlatform.h"

#include <QObject>
#include <QString>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>

class InterfaceDevCallback;
class UsbLink;

/// What a look at the bus has changed.
struct UsbChange {
    int change = 0;                   ///< 1 a device was opened; 0 nothing changed; -1 the open device is gone
    std::shared_ptr<UsbLink> leaving; ///< to be cut, and let go of where it may block; null for none
};

/// The one road to the instrument: which device is open, requests to it, and the bulk read run.
///
/// One for the life of the process (`gUsb`), made before and destroyed after everything that uses it. It lives on the
/// main thread; only one device is open at any time, and only refresh(), takeLook() and close() change which. Transfers
/// may be made from any thread: each holds on to the device that it began with, so a device that goes away under it
/// makes it fail, and what the system knows of that device is freed by whoever uses it last. It knows nothing of models
/// and requests.
class UsbTransport final : public QObject, public SmpTransport {
    Q_OBJECT
public:
    /// What control transfers and bulk writes answer.
    static constexpr int done = smpError::none;
    static constexpr int notOpen = smpError::notOpen;
    static constexpr int transferFailed = smpError::transfer;

    /// Finds nothing until refresh(). The platform must not be null.
    explicit UsbTransport(std::unique_ptr<UsbPlatform> platform, QObject *parent = nullptr);
    /// Closes. No transfer may be under way.
    ~UsbTransport() override;

    // What is known of the open device. Written on the main thread by refresh(); any thread may read. They keep their
    // values when the device goes.
    std::atomic<std::uint16_t> pipeReady{0}; ///< 1: runs its firmware; 0: has none yet. Means something while open.
    std::atomic<std::uint16_t> vendorId{0};
    std::atomic<std::uint16_t> productId{0};
    std::atomic<std::uint16_t> bcdUsb{0}; ///< the link level in BCD, 0x0200 for 2.0; at most 0x0110 at full speed
    std::atomic<std::uint8_t> pipeOut{0x02};
    std::atomic<std::uint8_t> pipeIn{0x86};
    /// Bytes of the next bulk read; a run that is under way takes a change with its next read.
    std::atomic<std::int32_t> chunkSize{0x100000};
    /// Who receives the data of read runs; null for nobody. Not owned. See setCallback().
    std::atomic<InterfaceDevCallback *> callback{nullptr};
    /// Requests that ran into their time limit so far.
    std::atomic<unsigned> timeOuts{0};
    /// 1 while a device is open, else 0. A user tests it before each transfer; the transfers below do so by themselves.
    std::atomic<std::int32_t> deviceOpen{0};

    // ---- main thread ------------------------------------------------------------------------------------------------

    /// Starts telling sigDevChange. Once, when the main window stands. @return false when changes cannot be told
    bool registerHotplug(std::uintptr_t window);
    /// Brings the object in line with the devices present. Blocks as lookAtUsb() does, so that who has an event loop
    /// takes a UsbLookThread instead.
    /// @return 1 a device was opened; 0 nothing changed; -1 the open device is gone. An open device that is still there
    ///         stays open, whatever else came; another one is looked for only by the next call after it has gone.
    int refresh();
    // refresh() in three steps, of which the second alone may block. One such round at a time.

    /// What a look is to ask for: the path of the open device, nothing while none is open.
    [[nodiscard]] std::optional<std::string> openPath() const;
    /// Looks at the bus, see lookAtUsb(). Any thread; changes nothing here.
    [[nodiscard]] UsbLook look(const std::optional<std::string> &openPath) const;
    /// Takes over what was seen, unless it is out of date. Never blocks.
    [[nodiscard]] UsbChange takeLook(UsbLook look);

    /// Closes the open device, if there is one. A read run that is under way ends with runFailed.
    void close();
    void setCallback(InterfaceDevCallback *receiver) override;
    /// Chooses the size of reads so that one takes 0.05 s to 0.2 s at this rate on the wire; see usbChunkSize(). A rate
    /// that is not above 0 changes nothing. Any thread, never blocks.
    void tuneChunkSize(std::int64_t bitsPerSecond);

    // ---- any thread -------------------------------------------------------------------------------------------------

    [[nodiscard]] bool isOpen() const override { return deviceOpen.load(std::memory_order_acquire) != 0; }
    [[nodiscard]] int readStream(std::int32_t limit, InterfaceDevCallback &receiver) override;
    void breakOffStream() override;

    /// One vendor request to the device (request type 0x40). Blocks for at most 2 s.
    /// @param data  what is sent, at most 65,535 bytes; may be empty
    /// @return done, notOpen (nothing was sent), or transferFailed, also when fewer bytes were moved
    int controlOut(std::uint8_t request, std::uint16_t value, std::uint16_t index, std::span<const std::uint8_t> data);
    /// One vendor request from the device (request type 0xC0). Blocks for at most 2 s.
    /// @param data  filled; left alone unless bytes came; at most 65,535 bytes
    /// @return as controlOut()
    int controlIn(std::uint8_t request, std::uint16_t value, std::uint16_t index, std::span<std::uint8_t> data);
    /// Writes to the bulk OUT pipe. Blocks for at most 3 s.
    /// @param moved  out, bytes that the device took: with `done` it may be fewer than asked, the caller then goes on
    ///               with the rest
    /// @return done, notOpen or transferFailed
    int bulkWrite(std::span<const std::uint8_t> data, std::uint32_t &moved);

    /// The operating system's name for the user, and its tag for the update service. Never empty.
    [[nodiscard]] static QString osName();
    [[nodiscard]] static QString osTag();

signals:
    /// An instrument has come or gone: time for a refresh(). Once for each message of the system, on the main thread,
    /// queued; not emitted where the system tells the window instead.
    void sigDevChange();

private:
    using Slots = std::array<std::unique_ptr<UsbReadSlot>, 2>;

    /// Nothing is open any more. @return what was; null for nothing
    [[nodiscard]] std::shared_ptr<UsbLink> detach();
    /// What a transfer holds on to; null while nothing is open.
    [[nodiscard]] std::shared_ptr<UsbLink> link() const;
    [[nodiscard]] Slots takeSlots();
    int control(const UsbSetup &setup, std::uint8_t *data);

    const std::unique_ptr<UsbPlatform> m_platform;
    std::string m_path;              ///< of the open device
    mutable std::mutex m_mutex;      ///< guards the next two; never held while calling out
    std::shared_ptr<UsbLink> m_link; ///< null while nothing is open
    Slots m_slots;                   ///< empty while a run has them
};

/// The size of reads in bytes for a rate on the wire: the power of two, times 0x100000 of any sign, whose time to fill
/// lies within 0.05 s to 0.2 s; between 2048 and 2^30. The rate must be above 0. Pure.
[[nodiscard]] std::int32_t usbChunkSize(std::int64_t bitsPerSecond);
