#include "device/UsbPlatformLibusb.h"

#include "device/UsbIds.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <libusb.h>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int interfaceNumber = 0;
constexpr std::uint8_t endpointNumbers = 16;

/// "usb:bus:address", decimal. The system does not give an address anew before it has been through all others.
std::string pathOf(libusb_device *device)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "usb:%03d:%03d", int(libusb_get_bus_number(device)),
                  int(libusb_get_device_address(device)));
    return text.data();
}

bool isInstrument(libusb_device *device)
{
    libusb_device_descriptor descriptor{};
    return libusb_get_device_descriptor(device, &descriptor) == 0 &&
           isUsbInstrument(descriptor.idVendor, descriptor.idProduct);
}

/// The instruments that are present. Each holds its device until it goes.
class Devices {
public:
    explicit Devices(libusb_context *context)
    {
        libusb_device **all = nullptr;
        const ssize_t count = libusb_get_device_list(context, &all);
        for (ssize_t i = 0; i < count; ++i) {
            if (isInstrument(all[i])) {
                m_devices.push_back(libusb_ref_device(all[i]));
            }
        }
        if (count >= 0) {
            libusb_free_device_list(all, 1);
        }
    }
    ~Devices() { std::for_each(m_devices.begin(), m_devices.end(), libusb_unref_device); }
    Devices(const Devices &) = delete;
    Devices &operator=(const Devices &) = delete;

    [[nodiscard]] int count() const { return int(m_devices.size()); }
    [[nodiscard]] libusb_device *at(int index) const { return m_devices[std::size_t(index)]; }
    [[nodiscard]] libusb_device *find(const char *path) const
    {
        const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                        [path](libusb_device *device) { return pathOf(device) == path; });
        return found == m_devices.end() ? nullptr : *found;
    }

private:
    std::vector<libusb_device *> m_devices;
};

/// The state of all reads: slots and the transfers behind them are looked at under `mutex` only.
struct Reads {
    std::mutex mutex;
    std::condition_variable ended;
};

struct Interface;

struct Slot final : UsbReadSlot {
    explicit Slot(Reads &reads_) : reads(reads_), transfer(libusb_alloc_transfer(0)) {}
    ~Slot() override { libusb_free_transfer(transfer); }

    Reads &reads;
    libusb_transfer *const transfer;
    Interface *of = nullptr; ///< while queued
    enum { Idle, Queued, Ended } state = Idle;
};

struct Interface {
    libusb_device_handle *handle = nullptr;
    std::vector<UsbPipe> pipes; ///< of alternate setting 0
    UsbResult settings;         ///< whether they could be read
    /// Time-outs in ms by end point number, OUT and IN; 0 for none.
    std::array<std::array<std::atomic<std::uint32_t>, endpointNumbers>, 2> timeouts{};
    std::vector<Slot *> queued; ///< in order; under Reads::mutex

    [[nodiscard]] std::atomic<std::uint32_t> &timeout(std::uint8_t pipe)
    {
        return timeouts[(pipe & LIBUSB_ENDPOINT_IN) != 0 ? 1 : 0][pipe & 0x0F];
    }
    [[nodiscard]] bool hasPipe(std::uint8_t pipe) const
    {
        return std::any_of(pipes.begin(), pipes.end(), [pipe](const UsbPipe &p) { return p.id == pipe; });
    }
};

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

Interface &interfaceOf(UsbInterface iface)
{
    return *pointerOf<Interface>(iface);
}

const Devices &devicesOf(UsbList list)
{
    return *pointerOf<const Devices>(list);
}

void readSettings(Interface &made)
{
    libusb_config_descriptor *config = nullptr;
    made.settings = usbResultOfLibusb(libusb_get_active_config_descriptor(libusb_get_device(made.handle), &config));
    if (!made.settings.ok()) {
        return;
    }
    if (config->bNumInterfaces > interfaceNumber && config->interface[interfaceNumber].num_altsetting > 0) {
        const libusb_interface_descriptor &setting = config->interface[interfaceNumber].altsetting[0];
        for (int i = 0; i < setting.bNumEndpoints; ++i) {
            made.pipes.push_back({setting.endpoint[i].bEndpointAddress, setting.endpoint[i].wMaxPacketSize});
        }
    } else {
        made.settings = {UsbError::NotFound};
    }
    libusb_free_config_descriptor(config);
}

/// A system may announce a device some ms before it has configured it.
int claimWithPatience(libusb_device_handle *handle)
{
    using namespace std::chrono_literals;
    const auto until = std::chrono::steady_clock::now() + 1s;
    int code = libusb_claim_interface(handle, interfaceNumber);
    while (code == LIBUSB_ERROR_NOT_FOUND && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(5ms);
        code = libusb_claim_interface(handle, interfaceNumber);
    }
    return code;
}

void LIBUSB_CALL readEnded(libusb_transfer *transfer)
{
    Slot &slot = *static_cast<Slot *>(transfer->user_data);
    const std::lock_guard lock(slot.reads.mutex);
    slot.state = Slot::Ended;
    std::vector<Slot *> &queued = slot.of->queued;
    queued.erase(std::remove(queued.begin(), queued.end(), &slot), queued.end());
    slot.reads.ended.notify_all();
}

class UsbPlatformLibusb final : public UsbPlatform {
public:
    explicit UsbPlatformLibusb(libusb_context *context) : m_context(context), m_events([this] { handleEvents(); }) {}
    ~UsbPlatformLibusb() override;

    UsbList openList() override { return UsbList(reinterpret_cast<std::uintptr_t>(new Devices(m_context))); }
    bool listHas(UsbList list, int index) override { return index >= 0 && index < devicesOf(list).count(); }
    UsbResult interfaceDetail(UsbList list, int index, std::span<char> room, std::size_t &needed) override;
    void freeList(UsbList list) override { delete pointerOf<Devices>(list); }

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

    std::unique_ptr<UsbReadSlot> makeReadSlot() override;
    UsbResult queueRead(UsbInterface iface, std::uint8_t pipe, std::uint8_t *buffer, std::uint32_t size,
                        UsbReadSlot &slot) override;
    bool waitRead(UsbReadSlot &slot, int ms) override;
    UsbResult readResult(UsbInterface iface, UsbReadSlot &slot, std::uint32_t &moved) override;
    UsbResult abortPipe(UsbInterface iface, std::uint8_t pipe) override;
    UsbResult flushPipe(UsbInterface iface, std::uint8_t pipe) override;
    UsbResult resetPipe(UsbInterface iface, std::uint8_t pipe) override;

    bool registerHotplug(std::uintptr_t window, std::function<void()> changed) override;

private:
    void handleEvents();
    /// Ends the queued reads of `pipe`, or of all pipes for 0. When it returns they have ended.
    void endReads(Interface &of, std::uint8_t pipe);

    libusb_context *const m_context;
    Reads m_reads;
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
    const std::string path = pathOf(devicesOf(list).at(index));
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
    const Devices devices(m_context);
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
    const int code = claimWithPatience(handleOf(file));
    if (code != 0) {
        return usbResultOfLibusb(code);
    }
    auto made = std::make_unique<Interface>();
    made->handle = handleOf(file);
    readSettings(*made);
    iface = UsbInterface(reinterpret_cast<std::uintptr_t>(made.release()));
    return {};
}

void UsbPlatformLibusb::freeInterface(UsbInterface iface)
{
    if (iface == UsbInterface::None) {
        return;
    }
    const std::unique_ptr<Interface> freed(&interfaceOf(iface));
    endReads(*freed, 0);
    libusb_release_interface(freed->handle, interfaceNumber);
}

UsbResult UsbPlatformLibusb::deviceDescriptor(UsbInterface iface, std::span<std::uint8_t> room, std::uint32_t &moved)
{
    // As the system read it when the device came; it cannot have changed since.
    moved = 0;
    libusb_device_descriptor d{};
    const UsbResult result =
        usbResultOfLibusb(libusb_get_device_descriptor(libusb_get_device(interfaceOf(iface).handle), &d));
    if (!result.ok()) {
        return result;
    }
    const auto low = [](std::uint16_t v) { return std::uint8_t(v & 0xFF); };
    const auto high = [](std::uint16_t v) { return std::uint8_t(v >> 8); };
    const std::array<std::uint8_t, LIBUSB_DT_DEVICE_SIZE> bytes = {
        d.bLength,         d.bDescriptorType, low(d.bcdUSB),       high(d.bcdUSB),    d.bDeviceClass,
        d.bDeviceSubClass, d.bDeviceProtocol, d.bMaxPacketSize0,   low(d.idVendor),   high(d.idVendor),
        low(d.idProduct),  high(d.idProduct), low(d.bcdDevice),    high(d.bcdDevice), d.iManufacturer,
        d.iProduct,        d.iSerialNumber,   d.bNumConfigurations};
    moved = std::uint32_t(std::min(room.size(), bytes.size()));
    std::copy_n(bytes.begin(), moved, room.begin());
    return {};
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
    return usbResultOfLibusb(libusb_set_interface_alt_setting(interfaceOf(iface).handle, interfaceNumber, 0));
}

UsbResult UsbPlatformLibusb::setPipePolicy(UsbInterface iface, std::uint8_t pipe, UsbPolicy policy, std::uint32_t value)
{
    Interface &of = interfaceOf(iface);
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
    Interface &of = interfaceOf(iface);
    const std::uint8_t pipe = setup.isIn() ? LIBUSB_ENDPOINT_IN : LIBUSB_ENDPOINT_OUT;
    const int code = libusb_control_transfer(of.handle, setup.requestType, setup.request, setup.value, setup.index,
                                             data, setup.length, of.timeout(pipe).load(std::memory_order_relaxed));
    moved = std::uint32_t(std::max(code, 0));
    return usbResultOfLibusb(code);
}

UsbResult UsbPlatformLibusb::writePipe(UsbInterface iface, std::uint8_t pipe, std::span<const std::uint8_t> data,
                                       std::uint32_t &moved)
{
    moved = 0;
    Interface &of = interfaceOf(iface);
    if (!of.hasPipe(pipe)) {
        return {UsbError::NotFound};
    }
    int written = 0;
    // libusb takes one kind of pointer for both directions; from this one it only reads.
    const int code = libusb_bulk_transfer(of.handle, pipe, const_cast<std::uint8_t *>(data.data()), int(data.size()),
                                          &written, of.timeout(pipe).load(std::memory_order_relaxed));
    moved = std::uint32_t(std::max(written, 0));
    return usbResultOfLibusb(code);
}

std::unique_ptr<UsbReadSlot> UsbPlatformLibusb::makeReadSlot()
{
    auto slot = std::make_unique<Slot>(m_reads);
    return slot->transfer != nullptr ? std::move(slot) : nullptr;
}

UsbResult UsbPlatformLibusb::queueRead(UsbInterface iface, std::uint8_t pipe, std::uint8_t *buffer, std::uint32_t size,
                                       UsbReadSlot &slot)
{
    Interface &of = interfaceOf(iface);
    Slot &own = static_cast<Slot &>(slot);
    const std::lock_guard lock(m_reads.mutex);
    own.state = Slot::Idle;
    if (!of.hasPipe(pipe)) {
        return {UsbError::NotFound};
    }
    libusb_fill_bulk_transfer(own.transfer, of.handle, pipe, buffer, int(size), readEnded, &own,
                              of.timeout(pipe).load(std::memory_order_relaxed));
    // The read may end at once, on the event thread, which then waits for the mutex.
    const UsbResult result = usbResultOfLibusb(libusb_submit_transfer(own.transfer));
    if (result.ok()) {
        own.state = Slot::Queued;
        own.of = &of;
        of.queued.push_back(&own);
    }
    return result;
}

bool UsbPlatformLibusb::waitRead(UsbReadSlot &slot, int ms)
{
    const Slot &own = static_cast<Slot &>(slot);
    std::unique_lock lock(m_reads.mutex);
    m_reads.ended.wait_for(lock, std::chrono::milliseconds(ms), [&own] { return own.state != Slot::Queued; });
    return own.state == Slot::Ended;
}

UsbResult UsbPlatformLibusb::readResult(UsbInterface, UsbReadSlot &slot, std::uint32_t &moved)
{
    moved = 0;
    Slot &own = static_cast<Slot &>(slot);
    const std::lock_guard lock(m_reads.mutex);
    if (own.state == Slot::Idle) {
        return {UsbError::NotFound};
    }
    if (own.state == Slot::Queued) {
        return {UsbError::Pending};
    }
    own.state = Slot::Idle;
    const UsbResult result = usbResultOfTransfer(own.transfer->status);
    if (result.ok()) {
        moved = std::uint32_t(own.transfer->actual_length);
    }
    return result;
}

void UsbPlatformLibusb::endReads(Interface &of, std::uint8_t pipe)
{
    std::unique_lock lock(m_reads.mutex);
    std::vector<Slot *> ending;
    std::copy_if(of.queued.begin(), of.queued.end(), std::back_inserter(ending),
                 [pipe](const Slot *slot) { return pipe == 0 || slot->transfer->endpoint == pipe; });
    // The last first, so that none begins to be filled because the one before it went.
    for (auto slot = ending.rbegin(); slot != ending.rend(); ++slot) {
        (void)libusb_cancel_transfer((*slot)->transfer); // it may be about to end by itself
    }
    const auto hasEnded = [](const Slot *slot) { return slot->state != Slot::Queued; };
    m_reads.ended.wait(lock, [&] { return std::all_of(ending.begin(), ending.end(), hasEnded); });
}

UsbResult UsbPlatformLibusb::abortPipe(UsbInterface iface, std::uint8_t pipe)
{
    Interface &of = interfaceOf(iface);
    if (!of.hasPipe(pipe)) {
        return {UsbError::NotFound};
    }
    endReads(of, pipe);
    return {};
}

UsbResult UsbPlatformLibusb::flushPipe(UsbInterface iface, std::uint8_t pipe)
{
    // Nobody keeps bytes between reads.
    return interfaceOf(iface).hasPipe(pipe) ? UsbResult{} : UsbResult{UsbError::NotFound};
}

UsbResult UsbPlatformLibusb::resetPipe(UsbInterface iface, std::uint8_t pipe)
{
    Interface &of = interfaceOf(iface);
    return of.hasPipe(pipe) ? usbResultOfLibusb(libusb_clear_halt(of.handle, pipe)) : UsbResult{UsbError::NotFound};
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

UsbResult usbResultOfLibusb(int code)
{
    if (code >= 0) {
        return {};
    }
    const auto system = std::uint32_t(-code);
    switch (code) {
    case LIBUSB_ERROR_ACCESS:
    case LIBUSB_ERROR_BUSY:
        return {UsbError::Refused, system};
    case LIBUSB_ERROR_NO_DEVICE:
        return {UsbError::Gone, system};
    case LIBUSB_ERROR_NOT_FOUND:
        return {UsbError::NotFound, system};
    case LIBUSB_ERROR_TIMEOUT:
        return {UsbError::TimedOut, system};
    case LIBUSB_ERROR_PIPE:
        return {UsbError::Halted, system};
    case LIBUSB_ERROR_INTERRUPTED:
        return {UsbError::Aborted, system};
    case LIBUSB_ERROR_NO_MEM:
        return {UsbError::NoMemory, system};
    default:
        return {UsbError::Failed, system};
    }
}

UsbResult usbResultOfTransfer(int status)
{
    const auto system = std::uint32_t(status);
    switch (status) {
    case LIBUSB_TRANSFER_COMPLETED:
        return {};
    case LIBUSB_TRANSFER_TIMED_OUT:
        return {UsbError::TimedOut, system};
    case LIBUSB_TRANSFER_CANCELLED:
        return {UsbError::Aborted, system};
    case LIBUSB_TRANSFER_STALL:
        return {UsbError::Halted, system};
    case LIBUSB_TRANSFER_NO_DEVICE:
        return {UsbError::Gone, system};
    default: // LIBUSB_TRANSFER_ERROR, LIBUSB_TRANSFER_OVERFLOW
        return {UsbError::Failed, system};
    }
}
