#include "device/UsbPlatformWinUsb.h"

#include "device/UsbErrorsWindows.h"
#include "device/WinUsbDriver.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <dbt.h>
#include <iterator>
#include <mutex>
#include <setupapi.h>
#include <utility>
#include <vector>

namespace {

// {57BAA63D-5E5A-42F5-8CE5-EAF78B45BACF}
constexpr GUID instrumentClass = {0x57BAA63D, 0x5E5A, 0x42F5, {0x8C, 0xE5, 0xEA, 0xF7, 0x8B, 0x45, 0xBA, 0xCF}};

/// Why the last call failed; never "done".
UsbResult lastError()
{
    const DWORD code = GetLastError();
    return code != ERROR_SUCCESS ? usbResultOfWindows(code) : UsbResult{UsbError::Failed};
}

UsbResult resultOf(BOOL ok)
{
    return ok ? UsbResult{} : lastError();
}

struct Interface;

/// The event is reset by hand, unlike one for a single waiter: an abort on another thread waits for it as well.
struct Slot final : UsbReadSlot {
    explicit Slot(std::mutex &mutex_) : mutex(mutex_)
    {
        overlapped.hEvent = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    }
    ~Slot() override;

    std::mutex &mutex; ///< guards what follows, and Interface::queued
    OVERLAPPED overlapped{};
    bool holdsRead = false;  ///< false: idle
    Interface *of = nullptr; ///< whose read it is; null when the slot is idle, and when the interface has been freed
    std::uint8_t pipe = 0;
};

struct Interface {
    WINUSB_INTERFACE_HANDLE handle = nullptr;
    std::vector<Slot *> queued; ///< reads whose result has not been asked for

    void forget(Slot &slot)
    {
        queued.erase(std::remove(queued.begin(), queued.end(), &slot), queued.end());
        slot.of = nullptr;
    }
};

Slot::~Slot()
{
    {
        const std::lock_guard lock(mutex);
        if (of != nullptr) {
            of->forget(*this);
        }
    }
    if (overlapped.hEvent != nullptr) {
        CloseHandle(overlapped.hEvent);
    }
}

Interface &interfaceOf(UsbInterface iface)
{
    return *reinterpret_cast<Interface *>(iface);
}

HDEVINFO infoOf(UsbList list)
{
    return reinterpret_cast<HDEVINFO>(list);
}

HANDLE handleOf(UsbFile file)
{
    return reinterpret_cast<HANDLE>(file);
}

bool enumerate(UsbList list, int index, SP_DEVICE_INTERFACE_DATA &data)
{
    data = {};
    data.cbSize = sizeof(data);
    return index >= 0 &&
           SetupDiEnumDeviceInterfaces(infoOf(list), nullptr, &instrumentClass, DWORD(index), &data) != FALSE;
}

class UsbPlatformWinUsb final : public UsbPlatform {
public:
    explicit UsbPlatformWinUsb(std::unique_ptr<WinUsbDriver> driver) : m_driver(std::move(driver)) {}
    ~UsbPlatformWinUsb() override;

    UsbList openList() override;
    bool listHas(UsbList list, int index) override;
    UsbResult interfaceDetail(UsbList list, int index, std::span<char> room, std::size_t &needed) override;
    void freeList(UsbList list) override;

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
    /// Aborts the queued reads of `pipe`, or of all pipes for 0, and waits until the driver has let go of them.
    UsbResult endReads(Interface &of, std::uint8_t pipe);

    const std::unique_ptr<WinUsbDriver> m_driver;
    std::mutex m_mutex; ///< see Slot
    HDEVNOTIFY m_notification = nullptr;
};

UsbPlatformWinUsb::~UsbPlatformWinUsb()
{
    if (m_notification != nullptr) {
        UnregisterDeviceNotification(m_notification);
    }
}

UsbList UsbPlatformWinUsb::openList()
{
    const HDEVINFO info =
        SetupDiGetClassDevsA(&instrumentClass, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    return info == INVALID_HANDLE_VALUE ? UsbList::None : UsbList(reinterpret_cast<std::uintptr_t>(info));
}

bool UsbPlatformWinUsb::listHas(UsbList list, int index)
{
    SP_DEVICE_INTERFACE_DATA data;
    return enumerate(list, index, data);
}

UsbResult UsbPlatformWinUsb::interfaceDetail(UsbList list, int index, std::span<char> room, std::size_t &needed)
{
    constexpr std::size_t head = offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_A, DevicePath);
    needed = 0;
    SP_DEVICE_INTERFACE_DATA data;
    if (!enumerate(list, index, data)) {
        return index < 0 ? UsbResult{UsbError::NotFound} : lastError();
    }
    DWORD size = 0;
    if (!SetupDiGetDeviceInterfaceDetailA(infoOf(list), &data, nullptr, 0, &size, nullptr) &&
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return lastError();
    }
    if (size <= head) {
        return {UsbError::Failed};
    }
    if (room.size() < size - head) {
        needed = size - head;
        return usbResultOfWindows(ERROR_INSUFFICIENT_BUFFER);
    }
    // Whole records, so that the memory is aligned for one, and never less than the fixed part.
    std::vector<SP_DEVICE_INTERFACE_DETAIL_DATA_A> detail(size / sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A) + 1);
    detail[0].cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A);
    if (!SetupDiGetDeviceInterfaceDetailA(infoOf(list), &data, detail.data(), size, nullptr, nullptr)) {
        return lastError();
    }
    needed = size - head;
    std::memcpy(room.data(), reinterpret_cast<const char *>(detail.data()) + head, needed);
    return {};
}

void UsbPlatformWinUsb::freeList(UsbList list)
{
    if (list != UsbList::None) {
        SetupDiDestroyDeviceInfoList(infoOf(list));
    }
}

UsbResult UsbPlatformWinUsb::openFile(const char *path, UsbFile &file)
{
    const HANDLE handle = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OVERLAPPED, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        file = UsbFile::None;
        return lastError();
    }
    file = UsbFile(reinterpret_cast<std::uintptr_t>(handle));
    return {};
}

void UsbPlatformWinUsb::closeFile(UsbFile file)
{
    if (file != UsbFile::None) {
        CloseHandle(handleOf(file));
    }
}

UsbResult UsbPlatformWinUsb::initInterface(UsbFile file, UsbInterface &iface)
{
    iface = UsbInterface::None;
    auto made = std::make_unique<Interface>();
    if (!m_driver->initialize(handleOf(file), &made->handle)) {
        return lastError();
    }
    iface = UsbInterface(reinterpret_cast<std::uintptr_t>(made.release()));
    return {};
}

void UsbPlatformWinUsb::freeInterface(UsbInterface iface)
{
    if (iface == UsbInterface::None) {
        return;
    }
    const std::unique_ptr<Interface> freed(&interfaceOf(iface));
    (void)endReads(*freed, 0);
    m_driver->free(freed->handle);
    const std::lock_guard lock(m_mutex);
    while (!freed->queued.empty()) {
        freed->forget(*freed->queued.back());
    }
}

UsbResult UsbPlatformWinUsb::deviceDescriptor(UsbInterface iface, std::span<std::uint8_t> room, std::uint32_t &moved)
{
    constexpr UCHAR deviceType = 1;
    ULONG length = 0;
    const UsbResult result = resultOf(
        m_driver->getDescriptor(interfaceOf(iface).handle, deviceType, 0, 0, room.data(), ULONG(room.size()), &length));
    moved = result.ok() ? length : 0;
    return result;
}

UsbResult UsbPlatformWinUsb::interfaceSettings(UsbInterface iface, int &count)
{
    USB_INTERFACE_DESCRIPTOR descriptor{};
    const UsbResult result = resultOf(m_driver->queryInterfaceSettings(interfaceOf(iface).handle, 0, &descriptor));
    count = result.ok() ? descriptor.bNumEndpoints : 0;
    return result;
}

UsbResult UsbPlatformWinUsb::queryPipe(UsbInterface iface, int index, UsbPipe &pipe)
{
    if (index < 0 || index > 0xFF) {
        return {UsbError::NotFound};
    }
    WINUSB_PIPE_INFORMATION information{};
    const UsbResult result = resultOf(m_driver->queryPipe(interfaceOf(iface).handle, 0, UCHAR(index), &information));
    if (result.ok()) {
        pipe = {information.PipeId, information.MaximumPacketSize};
    }
    return result;
}

UsbResult UsbPlatformWinUsb::selectSetting(UsbInterface iface)
{
    return resultOf(m_driver->setCurrentAlternateSetting(interfaceOf(iface).handle, 0));
}

UsbResult UsbPlatformWinUsb::setPipePolicy(UsbInterface iface, std::uint8_t pipe, UsbPolicy policy, std::uint32_t value)
{
    ULONG number = value;
    UCHAR flag = value != 0 ? 1 : 0;
    const bool isNumber = policy == UsbPolicy::TransferTimeout;
    return resultOf(m_driver->setPipePolicy(interfaceOf(iface).handle, pipe, ULONG(policy),
                                            isNumber ? sizeof(number) : sizeof(flag),
                                            isNumber ? static_cast<void *>(&number) : static_cast<void *>(&flag)));
}

UsbResult UsbPlatformWinUsb::controlTransfer(UsbInterface iface, const UsbSetup &setup, std::uint8_t *data,
                                             std::uint32_t &moved)
{
    WINUSB_SETUP_PACKET packet{};
    packet.RequestType = setup.requestType;
    packet.Request = setup.request;
    packet.Value = setup.value;
    packet.Index = setup.index;
    packet.Length = setup.length;
    ULONG length = 0;
    const UsbResult result =
        resultOf(m_driver->controlTransfer(interfaceOf(iface).handle, packet, data, setup.length, &length, nullptr));
    moved = result.ok() ? length : 0;
    return result;
}

UsbResult UsbPlatformWinUsb::writePipe(UsbInterface iface, std::uint8_t pipe, std::span<const std::uint8_t> data,
                                       std::uint32_t &moved)
{
    ULONG length = 0;
    // The driver takes one kind of pointer for both directions; from this one it only reads.
    const UsbResult result =
        resultOf(m_driver->writePipe(interfaceOf(iface).handle, pipe, const_cast<std::uint8_t *>(data.data()),
                                     ULONG(data.size()), &length, nullptr));
    moved = length;
    return result;
}

std::unique_ptr<UsbReadSlot> UsbPlatformWinUsb::makeReadSlot()
{
    auto slot = std::make_unique<Slot>(m_mutex);
    return slot->overlapped.hEvent != nullptr ? std::move(slot) : nullptr;
}

UsbResult UsbPlatformWinUsb::queueRead(UsbInterface iface, std::uint8_t pipe, std::uint8_t *buffer, std::uint32_t size,
                                       UsbReadSlot &slot)
{
    Interface &of = interfaceOf(iface);
    Slot &own = static_cast<Slot &>(slot);
    const std::lock_guard lock(m_mutex);
    if (own.of != nullptr) {
        own.of->forget(own);
    }
    own.holdsRead = false;
    const HANDLE event = own.overlapped.hEvent;
    own.overlapped = {};
    own.overlapped.hEvent = event;
    ResetEvent(event);
    if (!m_driver->readPipe(of.handle, pipe, buffer, size, nullptr, &own.overlapped) &&
        GetLastError() != ERROR_IO_PENDING) {
        return lastError();
    }
    own.holdsRead = true;
    own.of = &of;
    own.pipe = pipe;
    of.queued.push_back(&own);
    return {};
}

bool UsbPlatformWinUsb::waitRead(UsbReadSlot &slot, int ms)
{
    Slot &own = static_cast<Slot &>(slot);
    {
        const std::lock_guard lock(m_mutex);
        if (!own.holdsRead) {
            return false;
        }
    }
    return WaitForSingleObject(own.overlapped.hEvent, DWORD(ms)) == WAIT_OBJECT_0;
}

UsbResult UsbPlatformWinUsb::readResult(UsbInterface iface, UsbReadSlot &slot, std::uint32_t &moved)
{
    moved = 0;
    Slot &own = static_cast<Slot &>(slot);
    const std::lock_guard lock(m_mutex);
    if (!own.holdsRead) {
        return {UsbError::NotFound};
    }
    if (own.of == nullptr) {
        own.holdsRead = false;
        return {UsbError::Aborted};
    }
    DWORD length = 0;
    const UsbResult result =
        resultOf(m_driver->getOverlappedResult(interfaceOf(iface).handle, &own.overlapped, &length, FALSE));
    if (result.error == UsbError::Pending) {
        return result;
    }
    own.of->forget(own);
    own.holdsRead = false;
    if (result.ok()) {
        moved = length;
    }
    return result;
}

UsbResult UsbPlatformWinUsb::endReads(Interface &of, std::uint8_t pipe)
{
    std::vector<Slot *> ending;
    {
        const std::lock_guard lock(m_mutex);
        std::copy_if(of.queued.begin(), of.queued.end(), std::back_inserter(ending),
                     [pipe](const Slot *slot) { return pipe == 0 || slot->pipe == pipe; });
    }
    UsbResult result;
    if (pipe != 0) {
        result = resultOf(m_driver->abortPipe(of.handle, pipe));
    } else {
        for (const Slot *slot : ending) {
            (void)m_driver->abortPipe(of.handle, slot->pipe);
        }
    }
    // The driver signals each event after its last touch of the buffer.
    for (Slot *slot : ending) {
        WaitForSingleObject(slot->overlapped.hEvent, INFINITE);
    }
    return result;
}

UsbResult UsbPlatformWinUsb::abortPipe(UsbInterface iface, std::uint8_t pipe)
{
    return pipe != 0 ? endReads(interfaceOf(iface), pipe) : UsbResult{UsbError::NotFound};
}

UsbResult UsbPlatformWinUsb::flushPipe(UsbInterface iface, std::uint8_t pipe)
{
    return resultOf(m_driver->flushPipe(interfaceOf(iface).handle, pipe));
}

UsbResult UsbPlatformWinUsb::resetPipe(UsbInterface iface, std::uint8_t pipe)
{
    return resultOf(m_driver->resetPipe(interfaceOf(iface).handle, pipe));
}

bool UsbPlatformWinUsb::registerHotplug(std::uintptr_t window, std::function<void()>)
{
    DEV_BROADCAST_DEVICEINTERFACE_W filter{};
    filter.dbcc_size = sizeof(filter);
    filter.dbcc_devicetype = DBT_DEVTYP_DEVICEINTERFACE;
    filter.dbcc_classguid = instrumentClass;
    if (m_notification == nullptr) {
        m_notification =
            RegisterDeviceNotificationW(reinterpret_cast<HANDLE>(window), &filter, DEVICE_NOTIFY_WINDOW_HANDLE);
        return m_notification != nullptr;
    }
    return false;
}

} // namespace

std::unique_ptr<UsbPlatform> makeUsbPlatformWinUsb()
{
    auto driver = std::make_unique<WinUsbDriver>();
    if (!driver->isComplete()) {
        return nullptr;
    }
    return std::make_unique<UsbPlatformWinUsb>(std::move(driver));
}
