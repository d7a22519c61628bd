#pragma once

#include "device/UsbPlatform.h"
#include "platform/EmulatedBus.h"

#include <functional>
#include <map>
#include <vector>

/// The program's view of an EmulatedBus: one of the platforms that it can be run with.
class UsbPlatformEmulated : public UsbPlatform {
public:
    /// @param bus  not owned, outlives this
    explicit UsbPlatformEmulated(EmulatedBus &bus) : m_bus(bus) {}
    ~UsbPlatformEmulated() override;

    /// Nothing that was opened is open any more.
    [[nodiscard]] bool allFreed();

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
    struct Slot;
    /// A device under one of its arrivals.
    struct Device {
        int port = 0;
        unsigned generation = 0;
    };
    struct Interface {
        Device device;
        std::map<std::uint8_t, std::uint32_t> timeouts; ///< ms by pipe, 0 for none
        std::vector<UsbPipe> pipes;
    };
    using Turn = InstrumentBus::Turn;

    // All under the lock.
    [[nodiscard]] Interface *find(UsbInterface iface);
    [[nodiscard]] bool isPresent(const Interface &iface) const;
    [[nodiscard]] const UsbPipe *findPipe(const Interface &iface, std::uint8_t pipe) const;
    [[nodiscard]] EmulatedBus::Clock::time_point deadline(const Interface &iface, std::uint8_t pipe) const;

    UsbResult transfer(UsbInterface iface, emulator::Urb urb, std::uint8_t timeoutPipe, std::uint32_t &moved);

    EmulatedBus &m_bus;
    std::map<std::uintptr_t, std::vector<Device>> m_lists;
    std::map<std::uintptr_t, Device> m_files;
    std::map<std::uintptr_t, Interface> m_interfaces;
    std::uintptr_t m_lastHandle = 0;
};
