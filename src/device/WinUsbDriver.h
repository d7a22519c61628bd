#pragma once

// The first declares what the other needs, so this is not the order of the alphabet.
// clang-format off
#include <windows.h>
#include <winusb.h>
// clang-format on

/// The driver's functions, found when the program runs: a system without the driver is no reason not to start.
class WinUsbDriver final {
public:
    WinUsbDriver() : m_library(LoadLibraryW(L"winusb.dll"))
    {
        m_complete = m_library != nullptr && find(initialize, "WinUsb_Initialize") && find(free, "WinUsb_Free") &&
                     find(getDescriptor, "WinUsb_GetDescriptor") &&
                     find(queryInterfaceSettings, "WinUsb_QueryInterfaceSettings") &&
                     find(queryPipe, "WinUsb_QueryPipe") &&
                     find(setCurrentAlternateSetting, "WinUsb_SetCurrentAlternateSetting") &&
                     find(setPipePolicy, "WinUsb_SetPipePolicy") && find(controlTransfer, "WinUsb_ControlTransfer") &&
                     find(readPipe, "WinUsb_ReadPipe") && find(getOverlappedResult, "WinUsb_GetOverlappedResult") &&
                     find(writePipe, "WinUsb_WritePipe") && find(abortPipe, "WinUsb_AbortPipe") &&
                     find(flushPipe, "WinUsb_FlushPipe") && find(resetPipe, "WinUsb_ResetPipe");
    }
    ~WinUsbDriver()
    {
        if (m_library != nullptr) {
            FreeLibrary(m_library);
        }
    }
    WinUsbDriver(const WinUsbDriver &) = delete;
    WinUsbDriver &operator=(const WinUsbDriver &) = delete;

    [[nodiscard]] bool isComplete() const { return m_complete; }

    decltype(&WinUsb_Initialize) initialize = nullptr;
    decltype(&WinUsb_Free) free = nullptr;
    decltype(&WinUsb_GetDescriptor) getDescriptor = nullptr;
    decltype(&WinUsb_QueryInterfaceSettings) queryInterfaceSettings = nullptr;
    decltype(&WinUsb_QueryPipe) queryPipe = nullptr;
    decltype(&WinUsb_SetCurrentAlternateSetting) setCurrentAlternateSetting = nullptr;
    decltype(&WinUsb_SetPipePolicy) setPipePolicy = nullptr;
    decltype(&WinUsb_ControlTransfer) controlTransfer = nullptr;
    decltype(&WinUsb_ReadPipe) readPipe = nullptr;
    decltype(&WinUsb_GetOverlappedResult) getOverlappedResult = nullptr;
    decltype(&WinUsb_WritePipe) writePipe = nullptr;
    decltype(&WinUsb_AbortPipe) abortPipe = nullptr;
    decltype(&WinUsb_FlushPipe) flushPipe = nullptr;
    decltype(&WinUsb_ResetPipe) resetPipe = nullptr;

private:
    template<typename Function>
    bool find(Function &function, const char *name)
    {
        // By way of a pointer to void: the compiler warns of a cast between kinds of functions.
        function = reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(m_library, name)));
        return function != nullptr;
    }

    HMODULE m_library;
    bool m_complete = false;
};
