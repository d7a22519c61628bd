#include "device/LibusbReads.h"

#include "device/LibusbInterface.h"
#include "device/UsbErrorsLibusb.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <libusb.h>
#include <utility>
#include <vector>

struct LibusbSlot final : UsbReadSlot {
    explicit LibusbSlot(LibusbReads &reads_) : reads(reads_), transfer(libusb_alloc_transfer(0)) {}
    ~LibusbSlot() override { libusb_free_transfer(transfer); }

    /// The read has ended: what libusb calls.
    static void LIBUSB_CALL ended(libusb_transfer *transfer)
    {
        LibusbSlot &slot = *static_cast<LibusbSlot *>(transfer->user_data);
        const std::lock_guard lock(slot.reads.m_mutex);
        slot.state = Ended;
        std::vector<LibusbSlot *> &queued = slot.of->queued;
        queued.erase(std::remove(queued.begin(), queued.end(), &slot), queued.end());
        slot.reads.m_ended.notify_all();
    }

    LibusbReads &reads;
    libusb_transfer *const transfer;
    LibusbInterface *of = nullptr; ///< while queued
    enum { Idle, Queued, Ended } state = Idle;
};

std::unique_ptr<UsbReadSlot> LibusbReads::makeSlot()
{
    auto slot = std::make_unique<LibusbSlot>(*this);
    return slot->transfer != nullptr ? std::move(slot) : nullptr;
}

UsbResult LibusbReads::queue(LibusbInterface &of, std::uint8_t pipe, std::uint8_t *buffer, std::uint32_t size,
                             UsbReadSlot &slot)
{
    LibusbSlot &own = static_cast<LibusbSlot &>(slot);
    const std::lock_guard lock(m_mutex);
    own.state = LibusbSlot::Idle;
    if (!of.hasPipe(pipe)) {
        return {UsbError::NotFound};
    }
    libusb_fill_bulk_transfer(own.transfer, of.handle, pipe, buffer, int(size), LibusbSlot::ended, &own,
                              of.timeout(pipe).load(std::memory_order_relaxed));
    // The read may end at once, on the event thread, which then waits for the mutex.
    const UsbResult result = usbResultOfLibusb(libusb_submit_transfer(own.transfer));
    if (result.ok()) {
        own.state = LibusbSlot::Queued;
        own.of = &of;
        of.queued.push_back(&own);
    }
    return result;
}

bool LibusbReads::wait(UsbReadSlot &slot, int ms)
{
    const LibusbSlot &own = static_cast<LibusbSlot &>(slot);
    std::unique_lock lock(m_mutex);
    m_ended.wait_for(lock, std::chrono::milliseconds(ms), [&own] { return own.state != LibusbSlot::Queued; });
    return own.state == LibusbSlot::Ended;
}

UsbResult LibusbReads::result(UsbReadSlot &slot, std::uint32_t &moved)
{
    moved = 0;
    LibusbSlot &own = static_cast<LibusbSlot &>(slot);
    const std::lock_guard lock(m_mutex);
    if (own.state == LibusbSlot::Idle) {
        return {UsbError::NotFound};
    }
    if (own.state == LibusbSlot::Queued) {
        return {UsbError::Pending};
    }
    own.state = LibusbSlot::Idle;
    const UsbResult result = usbResultOfTransfer(own.transfer->status);
    if (result.ok()) {
        moved = std::uint32_t(own.transfer->actual_length);
    }
    return result;
}

void LibusbReads::end(LibusbInterface &of, std::uint8_t pipe)
{
    std::unique_lock lock(m_mutex);
    std::vector<LibusbSlot *> ending;
    std::copy_if(of.queued.begin(), of.queued.end(), std::back_inserter(ending),
                 [pipe](const LibusbSlot *slot) { return pipe == 0 || slot->transfer->endpoint == pipe; });
    // The last first, so that none begins to be filled because the one before it went.
    for (auto slot = ending.rbegin(); slot != ending.rend(); ++slot) {
        (void)libusb_cancel_transfer((*slot)->transfer); // it may be about to end by itself
    }
    const auto hasEnded = [](const LibusbSlot *slot) { return slot->state != LibusbSlot::Queued; };
    m_ended.wait(lock, [&] { return std::all_of(ending.begin(), ending.end(), hasEnded); });
}
