// A winusb.dll whose one device is that of a scripted bus: the driver's functions as the program calls them, for
// systems where there is no such driver or no such device. It lies beside the test, where the loader looks first.

#include "support/FakeUsb.h"

// The first declares what the other needs, so this is not the order of the alphabet.
// clang-format off
#include <windows.h>
#include <winusb.h>
// clang-format on

#include <algorithm>
#include <limits>
#include <list>
#include <thread>

namespace {

constexpr ULONG_PTR statusPending = 0x103;

std::unique_ptr<FakeUsb> bus;

/// A read under way, with a thread that waits for its end.
struct Read {
    std::unique_ptr<UsbReadSlot> slot;
    std::thread end;
};

struct Opened {
    UsbFile file = UsbFile::None;
    UsbInterface iface = UsbInterface::None;
    std::mutex mutex; ///< guards the next
    std::list<Read> reads;
};

/// What the driver answers where the bus answers this.
DWORD codeOf(UsbError error)
{
    switch (error) {
    case UsbError::None:
        return ERROR_SUCCESS;
    case UsbError::NotFound:
        return ERROR_INVALID_PARAMETER;
    case UsbError::Gone:
        return ERROR_BAD_COMMAND;
    case UsbError::TimedOut:
        return ERROR_SEM_TIMEOUT;
    case UsbError::Halted:
        return ERROR_GEN_FAILURE;
    case UsbError::Aborted:
        return ERROR_OPERATION_ABORTED;
    default:
        return ERROR_INVALID_FUNCTION;
    }
}

BOOL answer(const UsbResult &result)
{
    SetLastError(codeOf(result.error));
    return result.ok() ? TRUE : FALSE;
}

Opened &openedOf(WINUSB_INTERFACE_HANDLE handle)
{
    return *static_cast<Opened *>(handle);
}

ULONG_PTR stateOf(OVERLAPPED &overlapped)
{
    return std::atomic_ref(overlapped.Internal).load(std::memory_order_acquire);
}

void awaitEnd(const Opened &opened, UsbReadSlot &slot, OVERLAPPED &overlapped)
{
    std::uint32_t moved = 0;
    (void)bus->waitRead(slot, std::numeric_limits<int>::max());
    const UsbResult result = bus->readResult(opened.iface, slot, moved);
    overlapped.InternalHigh = moved;
    std::atomic_ref(overlapped.Internal).store(codeOf(result.error), std::memory_order_release);
    SetEvent(overlapped.hEvent); // from here on it may be gone
}

void joinReads(Opened &opened)
{
    const std::lock_guard lock(opened.mutex);
    for (Read &read : opened.reads) {
        read.end.join();
    }
    opened.reads.clear();
}

} // namespace

#define LUX_EXPORT extern "C" __declspec(dllexport)

/// A new bus, on which nothing is plugged in. Nothing of the last one may be open.
LUX_EXPORT FakeUsb *standInReset()
{
    bus = std::make_unique<FakeUsb>();
    return bus.get();
}

LUX_EXPORT BOOL __stdcall WinUsb_Initialize(HANDLE, PWINUSB_INTERFACE_HANDLE handle)
{
    auto opened = std::make_unique<Opened>();
    const std::string path = bus->devices.empty() ? std::string() : bus->devices.back().path;
    UsbResult result = bus->openFile(path.c_str(), opened->file);
    if (result.ok()) {
        result = bus->initInterface(opened->file, opened->iface);
    }
    *handle = result.ok() ? opened.release() : nullptr;
    return answer(result);
}

LUX_EXPORT BOOL __stdcall WinUsb_Free(WINUSB_INTERFACE_HANDLE handle)
{
    const std::unique_ptr<Opened> opened(&openedOf(handle));
    joinReads(*opened);
    bus->freeInterface(opened->iface);
    bus->closeFile(opened->file);
    return TRUE;
}

LUX_EXPORT BOOL __stdcall WinUsb_GetDescriptor(WINUSB_INTERFACE_HANDLE handle, UCHAR type, UCHAR index, USHORT language,
                                               PUCHAR buffer, ULONG length, PULONG moved)
{
    if (type != 1 || index != 0 || language != 0) {
        return answer({UsbError::NotFound});
    }
    std::uint32_t count = 0;
    const UsbResult result = bus->deviceDescriptor(openedOf(handle).iface, {buffer, length}, count);
    *moved = count;
    return answer(result);
}

LUX_EXPORT BOOL __stdcall WinUsb_QueryInterfaceSettings(WINUSB_INTERFACE_HANDLE handle, UCHAR setting,
                                                        PUSB_INTERFACE_DESCRIPTOR descriptor)
{
    int count = 0;
    const UsbResult result =
        setting == 0 ? bus->interfaceSettings(openedOf(handle).iface, count) : UsbResult{UsbError::NotFound};
    *descriptor = {};
    descriptor->bNumEndpoints = UCHAR(count);
    return answer(result);
}

LUX_EXPORT BOOL __stdcall WinUsb_QueryPipe(WINUSB_INTERFACE_HANDLE handle, UCHAR setting, UCHAR index,
                                           PWINUSB_PIPE_INFORMATION information)
{
    UsbPipe pipe;
    const UsbResult result = bus->queryPipe(openedOf(handle).iface, index, pipe);
    if (setting != 0 || !result.ok()) {
        SetLastError(ERROR_NO_MORE_ITEMS);
        return FALSE;
    }
    *information = {};
    information->PipeType = UsbdPipeTypeBulk;
    information->PipeId = pipe.id;
    information->MaximumPacketSize = pipe.maxPacket;
    return TRUE;
}

LUX_EXPORT BOOL __stdcall WinUsb_SetCurrentAlternateSetting(WINUSB_INTERFACE_HANDLE handle, UCHAR setting)
{
    return answer(setting == 0 ? bus->selectSetting(openedOf(handle).iface) : UsbResult{UsbError::NotFound});
}

LUX_EXPORT BOOL __stdcall WinUsb_SetPipePolicy(WINUSB_INTERFACE_HANDLE handle, UCHAR pipe, ULONG policy, ULONG length,
                                               PVOID value)
{
    // The time-out is a ULONG, all others are one byte; the driver insists on it.
    const bool isNumber = policy == PIPE_TRANSFER_TIMEOUT;
    if (length != (isNumber ? sizeof(ULONG) : sizeof(UCHAR))) {
        return answer({UsbError::Failed});
    }
    const ULONG number = isNumber ? *static_cast<ULONG *>(value) : *static_cast<UCHAR *>(value);
    return answer(bus->setPipePolicy(openedOf(handle).iface, pipe, UsbPolicy(policy), number));
}

LUX_EXPORT BOOL __stdcall WinUsb_ControlTransfer(WINUSB_INTERFACE_HANDLE handle, WINUSB_SETUP_PACKET packet,
                                                 PUCHAR buffer, ULONG length, PULONG moved, LPOVERLAPPED)
{
    if (length != packet.Length) {
        return answer({UsbError::NotFound});
    }
    std::uint32_t count = 0;
    const UsbSetup setup{packet.RequestType, packet.Request, packet.Value, packet.Index, packet.Length};
    const UsbResult result = bus->controlTransfer(openedOf(handle).iface, setup, buffer, count);
    *moved = count;
    return answer(result);
}

LUX_EXPORT BOOL __stdcall WinUsb_ReadPipe(WINUSB_INTERFACE_HANDLE handle, UCHAR pipe, PUCHAR buffer, ULONG length,
                                          PULONG, LPOVERLAPPED overlapped)
{
    Opened &opened = openedOf(handle);
    Read read;
    read.slot = bus->makeReadSlot();
    const UsbResult result = bus->queueRead(opened.iface, pipe, buffer, length, *read.slot);
    if (!result.ok()) {
        return answer(result);
    }
    overlapped->Internal = statusPending;
    ResetEvent(overlapped->hEvent);
    read.end = std::thread(awaitEnd, std::cref(opened), std::ref(*read.slot), std::ref(*overlapped));
    const std::lock_guard lock(opened.mutex);
    opened.reads.push_back(std::move(read));
    SetLastError(ERROR_IO_PENDING);
    return FALSE;
}

LUX_EXPORT BOOL __stdcall WinUsb_GetOverlappedResult(WINUSB_INTERFACE_HANDLE, LPOVERLAPPED overlapped, LPDWORD moved,
                                                     BOOL wait)
{
    if (wait) {
        WaitForSingleObject(overlapped->hEvent, INFINITE);
    }
    const ULONG_PTR state = stateOf(*overlapped);
    if (state == statusPending) {
        SetLastError(ERROR_IO_INCOMPLETE);
        return FALSE;
    }
    *moved = DWORD(overlapped->InternalHigh);
    SetLastError(DWORD(state));
    return state == ERROR_SUCCESS;
}

LUX_EXPORT BOOL __stdcall WinUsb_WritePipe(WINUSB_INTERFACE_HANDLE handle, UCHAR pipe, PUCHAR buffer, ULONG length,
                                           PULONG moved, LPOVERLAPPED)
{
    std::uint32_t count = 0;
    const UsbResult result = bus->writePipe(openedOf(handle).iface, pipe, {buffer, length}, count);
    *moved = count;
    return answer(result);
}

LUX_EXPORT BOOL __stdcall WinUsb_AbortPipe(WINUSB_INTERFACE_HANDLE handle, UCHAR pipe)
{
    Opened &opened = openedOf(handle);
    const UsbResult result = bus->abortPipe(opened.iface, pipe);
    joinReads(opened);
    return answer(result);
}

LUX_EXPORT BOOL __stdcall WinUsb_FlushPipe(WINUSB_INTERFACE_HANDLE handle, UCHAR pipe)
{
    return answer(bus->flushPipe(openedOf(handle).iface, pipe));
}

LUX_EXPORT BOOL __stdcall WinUsb_ResetPipe(WINUSB_INTERFACE_HANDLE handle, UCHAR pipe)
{
    return answer(bus->resetPipe(openedOf(handle).iface, pipe));
}
