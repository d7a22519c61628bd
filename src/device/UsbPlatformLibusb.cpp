#include "device/UsbPlatformLibusb.h"

#include "device/LibusbDevices.h"
#include "device/LibusbInterface.h"
#include "device/LibusbReads.h"
#include "device/UsbErrorsLibusb.h"
#include "device/UsbIds.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <libusb.h>
#include <string>
#include <thread>
#include <utility>

namespace {

/// What a list, file or interface of this platform stands for.
template<typename T, typename Name>
T *pointerOf(Name name)
{
    return reinterpret_cast<T *>(name); // NOLINT(performance-no-int-to-ptr): made from this pointer, see UsbPlatform.h
}

libusb_device_handle *handleOf(UsbFile file)
{
    return pointerOf<libusb_device_handle>(file);
}

LibusbInterface &interfaceOf(UsbInterface iface)
{
    return *pointerOf<LibusbInterface>(iface);
}

const LibusbDevices &devicesOf(UsbList list)
{
    return *pointerOf<const LibusbDevices>(list);
}

class UsbPlatformLibusb final : public UsbPlatform {
public:
    explicit UsbPlatformLibusb(libusb_context *context) : m_context(context), m_events([this] { handleEvents(); }) {}
    ~UsbPlatformLibusb() override;

    UsbList openList() override { return UsbList(reinterpret_cast<std::uintptr_t>(new LibusbDevices(m_context))); }
    bool listHas(UsbList list, int index) override { return index >= 0 && index < devicesOf(list).count(); }
    UsbResult interfaceDetail(UsbList list, int index, std::span<char> room, std::size_t &needed) override;
    void freeList(UsbList list) override { delete pointerOf<LibusbDevices>(list); }

    UsbResult openFile(const char *path, UsbFile &file) override;
    void closeFile(UsbFile file) override;
    UsbResult initInterface(UsbFile file, UsbInterface &iface) override;
    void freeInterface(UsbInterface iface) override;

    UsbResult deviceDescriptor(UsbInterface iface, std::span<std::uint8_t> room, std::uint32_t &moved) override;
    UsbResult interfaceSettings(UsbInterface iface, int &count) override;
    UsbResult queryPipe(UsbInterface iface, int index, UsbPipe &pipe) override;
    UsbResult selectSetting(UsbInterface iface) override;
    UsbResult setPipePolicy(UsbInterface iface, std::uint8_t pipe, UsbPolicy policy, std::uint32_t value) override;

    UsbResult controlTransfer(UsbInterface iface, const UsbSetup &setup, std::uint8_t *data,
                              std::uint32_t &moved) override;
    UsbResult writePipe(UsbInterface iface, std::uint8_t pipe, std::span<const std::uint8_t> data,
                        std::uint32_t &moved) override;

    std::unique_ptr<UsbReadSlot> makeReadSlot() override { return m_reads.makeSlot(); }
    UsbResult queueRead(UsbInterface iface, std::uint8_t pipe, std::uint8_t *buffer, std::uint32_t size,
                        UsbReadSlot &slot) override;
    bool waitRead(UsbReadSlot &slot, int ms) override { return m_reads.wait(slot, ms); }
    UsbResult readResult(UsbInterface, UsbReadSlot &slot, std::uint32_t &moved) override
    {
        return m_reads.result(slot, moved);
    }
    UsbResult abortPipe(UsbInterface iface, std::uint8_t pipe) override;
    UsbResult flushPipe(UsbInterface iface, std::uint8_t pipe) override;
    UsbResult resetPipe(UsbInterface iface, std::uint8_t pipe) override;

    bool registerHotplug(std::uintptr_t window, std::function<void()> changed) override;

private:
    void handleEvents();

    libusb_context *const m_context;
    LibusbReads m_reads;
    std::function<void()> m_changed; ///< called on the event thread
    libusb_hotplug_callback_handle m_hotplug = 0;
    bool m_registered = false;
    std::atomic<bool> m_stop{false};
    std::thread m_events; ///< last: it uses the others
};

UsbPlatformLibusb::~UsbPlatformLibusb()
{
    if (m_registered) {
        libusb_hotplug_deregister_callback(m_context, m_hotplug);
    }
    m_stop.store(true, std::memory_order_release);
    libusb_interrupt_event_handler(m_context);
    m_events.join();
    libusb_exit(m_context);
}

void UsbPlatformLibusb::handleEvents()
{
    using namespace std::chrono_literals;
    while (!m_stop.load(std::memory_order_acquire)) {
        const int code = libusb_handle_events(m_context);
        if (code != 0 && code != LIBUSB_ERROR_INTERRUPTED) {
            std::this_thread::sleep_for(10ms); // so that a lasting error does not take a whole core
        }
    }
}

UsbResult UsbPlatformLibusb::interfaceDetail(UsbList list, int index, std::span<char> room, std::size_t &needed)
{
    needed = 0;
    if (!listHas(list, index)) {
        return {UsbError::NotFound};
    }
    const std::string path = LibusbDevices::pathOf(devicesOf(list).at(index));
    needed = path.size() + 1;
    if (room.size() < needed) {
        return {UsbError::TooSmall};
    }
    std::memcpy(room.data(), path.c_str(), needed);
    return {};
}

UsbResult UsbPlatformLibusb::openFile(const char *path, UsbFile &file)
{
    file = UsbFile::None;
    const LibusbDevices devices(m_context);
    libusb_device *device = devices.find(path);
    if (device == nullptr) {
        return {UsbError::NotFound};
    }
    libusb_device_handle *handle = nullptr;
    const int code = libusb_open(device, &handle);
    if (code != 0) {
        return usbResultOfLibusb(code);
    }
    file = UsbFile(reinterpret_cast<std::uintptr_t>(handle));
    return {};
}

void UsbPlatformLibusb::closeFile(UsbFile file)
{
    if (file != UsbFile::None) {
        libusb_close(handleOf(file));
    }
}

UsbResult UsbPlatformLibusb::initInterface(UsbFile file, UsbInterface &iface)
{
    iface = UsbInterface::None;
    std::unique_ptr<LibusbInterface> claimed;
    const UsbResult result = LibusbInterface::claim(handleOf(file), claimed);
    if (result.ok()) {
        iface = UsbInterface(reinterpret_cast<std::uintptr_t>(claimed.release()));
    }
    return result;
}

void UsbPlatformLibusb::freeInterface(UsbInterface iface)
{
    if (iface == UsbInterface::None) {
        return;
    }
    const std::unique_ptr<LibusbInterface> freed(&interfaceOf(iface));
    m_reads.end(*freed, 0);
}

UsbResult UsbPlatformLibusb::deviceDescriptor(UsbInterface iface, std::span<std::uint8_t> room, std::uint32_t &moved)
{
    return interfaceOf(iface).deviceDescriptor(room, moved);
}

UsbResult UsbPlatformLibusb::interfaceSettings(UsbInterface iface, int &count)
{
    count = int(interfaceOf(iface).pipes.size());
    return interfaceOf(iface).settings;
}

UsbResult UsbPlatformLibusb::queryPipe(UsbInterface iface, int index, UsbPipe &pipe)
{
    const std::vector<UsbPipe> &pipes = interfaceOf(iface).pipes;
    if (index < 0 || index >= int(pipes.size())) {
        return {UsbError::NotFound};
    }
    pipe = pipes[std::size_t(index)];
    return {};
}

UsbResult UsbPlatformLibusb::selectSetting(UsbInterface iface)
{
    return interfaceOf(iface).selectSetting();
}

UsbResult UsbPlatformLibusb::setPipePolicy(UsbInterface iface, std::uint8_t pipe, UsbPolicy policy, std::uint32_t value)
{
    LibusbInterface &of = interfaceOf(iface);
    if ((pipe & 0x7F) != 0 && !of.hasPipe(pipe)) {
        return {UsbError::NotFound};
    }
    if (policy == UsbPolicy::TransferTimeout) {
        of.timeout(pipe).store(value, std::memory_order_relaxed);
    }
    // Reads go to the controller as they are, and nothing is kept between them: the other policies are always so.
    return {};
}

UsbResult UsbPlatformLibusb::controlTransfer(UsbInterface iface, const UsbSetup &setup, std::uint8_t *data,
                                             std::uint32_t &moved)
{
    return interfaceOf(iface).control(setup, data, moved);
}

UsbResult UsbPlatformLibusb::writePipe(UsbInterface iface, std::uint8_t pipe, std::span<const std::uint8_t> data,
                                       std::uint32_t &moved)
{
    return interfaceOf(iface).write(pipe, data, moved);
}

UsbResult UsbPlatformLibusb::queueRead(UsbInterface iface, std::uint8_t pipe, std::uint8_t *buffer, std::uint32_t size,
                                       UsbReadSlot &slot)
{
    return m_reads.queue(interfaceOf(iface), pipe, buffer, size, slot);
}

UsbResult UsbPlatformLibusb::abortPipe(UsbInterface iface, std::uint8_t pipe)
{
    LibusbInterface &of = interfaceOf(iface);
    if (!of.hasPipe(pipe)) {
        return {UsbError::NotFound};
    }
    m_reads.end(of, pipe);
    return {};
}

UsbResult UsbPlatformLibusb::flushPipe(UsbInterface iface, std::uint8_t pipe)
{
    // Nobody keeps bytes between reads.
    return interfaceOf(iface).hasPipe(pipe) ? UsbResult{} : UsbResult{UsbError::NotFound};
}

UsbResult UsbPlatformLibusb::resetPipe(UsbInterface iface, std::uint8_t pipe)
{
    return interfaceOf(iface).clearHalt(pipe);
}

bool UsbPlatformLibusb::registerHotplug(std::uintptr_t, std::function<void()> changed)
{
    if (m_registered || libusb_has_capability(LIBUSB_CAP_HAS_HOTPLUG) == 0) {
        return false;
    }
    m_changed = std::move(changed);
    const auto told = [](libusb_context *, libusb_device *, libusb_hotplug_event, void *self) -> int {
        static_cast<UsbPlatformLibusb *>(self)->m_changed();
        return 0; // stay registered
    };
    const int code = libusb_hotplug_register_callback(
        m_context, LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED | LIBUSB_HOTPLUG_EVENT_DEVICE_LEFT, 0, usbVendorId,
        LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY, told, this, &m_hotplug);
    m_registered = code == 0;
    return m_registered;
}

} // namespace

std::unique_ptr<UsbPlatform> makeUsbPlatformLibusb()
{
    libusb_context *context = nullptr;
    if (libusb_init(&context) != 0) {
        return nullptr;
    }
    return std::make_unique<UsbPlatformLibusb>(context);
}
