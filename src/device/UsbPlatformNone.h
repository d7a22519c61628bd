#pragma once

#include "device/UsbPlatform.h"

/// A platform on which there are no devices: what a program without a USB library has. Nothing opens, nothing changes.
class UsbPlatformNone final : public UsbPlatform {
public:
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
};
