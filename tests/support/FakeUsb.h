#pragma once

#include "device/UsbPlatform.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

/// A device as a FakeUsb shows it. As made here it runs its firmware at high speed.
struct FakeUsbDevice {
    std::string path = "fake:1";
    std::uint16_t vendor = 0x77A1;
    std::uint16_t product = 0x01A1;
    std::uint16_t bcdUsb = 0x0200;
    std::vector<UsbPipe> pipes = {{0x02, 512}, {0x86, 512}};
    bool opens = true;
    bool initialises = true;
    std::uint32_t descriptorLength = 18;
    bool tellsSettings = true;
};

/// How a queued read ends; see FakeUsb::reads.
struct FakeRead {
    enum Kind { Full, Bytes, Fail, Silence } kind = Full;
    std::uint32_t bytes = 0;           ///< of Bytes, at most the read's size
    UsbError error = UsbError::Failed; ///< of Fail
    static FakeRead full() { return {}; }
    static FakeRead of(std::uint32_t n) { return {Bytes, n, {}}; }
    static FakeRead fail(UsbError e) { return {Fail, 0, e}; }
    static FakeRead silence() { return {Silence, 0, {}}; }
};

/// A bus by a script. Reads are filled with the count of bytes sent so far, in the order in which they were queued, one
/// entry of `reads` each and only when somebody waits; a wait of Silence is over at once. Every operation is counted
/// and may be made to fail, and what no caller may do is noted in `misuse`. Any thread, as the contract tells.
class FakeUsb final : public UsbPlatform {
public:
    ~FakeUsb() override;

    // ---- the script; under no lock, so set it while no other thread is in an operation, or use the functions below
    std::vector<FakeUsbDevice> devices;
    std::deque<FakeRead> reads; ///< when used up: as `whenUsedUp`
    FakeRead whenUsedUp = FakeRead::silence();
    bool holds = false;                     ///< Silence lets real time pass, and ends with a pipe's time-out
    int patience = 1;                       ///< ... so many times as long as that, where nobody may wait for it
    std::vector<std::uint8_t> slotsRefused; ///< by number of the slot made, from 0
    bool hotplugWorks = true;
    std::uint32_t writeLimit = 0xFFFFFFFF; ///< bytes that a bulk write moves at most
    /// Answers control transfers; the default fills with 0x5A and moves all.
    std::function<UsbResult(const UsbSetup &, std::uint8_t *, std::uint32_t &)> onControl;
    /// Replaces the answer of interfaceDetail().
    std::function<UsbResult(int, std::span<char>, std::size_t &)> onDetail;

    std::function<void()> onClose; ///< a file has been closed

    int failAt = 0; ///< operation, counted from 1, that fails; 0 for none
    UsbResult failWith{UsbError::Failed, 31};
    bool failShort = false; ///< a transfer that fails moves a byte less instead
    int unplugAt = 0;       ///< operation before which all devices leave the bus

    void plug(const FakeUsbDevice &device);
    void unplug();      ///< all of them; their reads end
    void hideDevices(); ///< takes all off the list, while nothing else tells that they have gone
    void push(const FakeRead &read);
    void halt(); ///< of the bulk IN pipe, until it is reset

    // ---- what happened
    int operations = 0; ///< that can fail
    std::vector<std::string> calls;
    std::vector<std::string> misuse;
    std::vector<std::uint32_t> readSizes;      ///< of each queued read
    std::vector<const std::uint8_t *> buffers; ///< of each queued read
    std::vector<std::uint32_t> writeSizes;     ///< of each bulk write
    std::vector<UsbSetup> setups;
    int fewestLeft = 1000; ///< reads still queued when one ended, the last of a run included
    int waitsTimedOut = 0; ///< of those that let real time pass
    std::map<std::uintptr_t, std::vector<std::string>> lists; ///< open ones, with their paths
    std::set<std::uintptr_t> filesOpen;
    std::set<std::uintptr_t> interfacesOpen;
    std::function<void()> changed; ///< of registerHotplug()
    std::uint64_t sent = 0;        ///< bytes of the stream
    [[nodiscard]] int count(const std::string &call) const;
    [[nodiscard]] bool allFreed() const { return lists.empty() && filesOpen.empty() && interfacesOpen.empty(); }

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
    bool registerHotplug(std::uintptr_t window, std::function<void()> told) override;

private:
    struct Slot;
    using Lock = std::unique_lock<std::mutex>;

    UsbResult enter(const std::string &call);
    UsbResult enter(const std::string &call, UsbInterface iface);
    const FakeUsbDevice *deviceOf(const std::string &path) const;
    const FakeUsbDevice *deviceOf(UsbInterface iface);
    void unplugLocked();
    void end(Slot &slot, UsbError error, std::uint32_t bytes);
    void endOldest(const FakeRead &read);
    void endAll(UsbError error);
    bool hasPipe(UsbInterface iface, std::uint8_t pipe);

    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::deque<Slot *> m_queued;
    std::map<std::uintptr_t, std::string> m_pathOfFile;
    std::map<std::uintptr_t, std::string> m_pathOfInterface;
    std::uintptr_t m_lastHandle = 0;
    int m_slotsMade = 0;
    std::uint32_t m_readTimeout = 0; ///< ms
    bool m_halted = false;
    bool m_hidden = false;
};
