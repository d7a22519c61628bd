#pragma once

#include "UrbQueue.h"
#include "device/UsbPlatform.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A bus in this process: emulated instruments, the time that passes for them, and a thread that moves their data.
///
/// Owned by the test, and outlives the platforms over it. Any thread may use it; an instrument itself is reached only
/// through with(), which holds the bus's one lock.
class EmulatedBus {
public:
    /// @param timeScale  the instruments' time passes so many times faster than the real one
    explicit EmulatedBus(double timeScale = 1.0);
    ~EmulatedBus();
    EmulatedBus(const EmulatedBus &) = delete;
    EmulatedBus &operator=(const EmulatedBus &) = delete;

    /// Adds an instrument, which is not plugged in yet. @return its index
    int add(const emulator::InstrumentOptions &options, std::shared_ptr<emulator::LogicSignal> signal = nullptr);
    void plug(int index = 0);
    void unplug(int index = 0);
    /// Calls `job` with an instrument under the lock. It must not call the bus.
    template<class Job>
    auto with(int index, const Job &job)
    {
        const Turn turn(*this);
        return job(*m_ports[std::size_t(index)]->instrument);
    }
    template<class Job>
    auto with(const Job &job)
    {
        return with(0, job);
    }
    /// The fewest bulk reads that were still queued when one was completed; -1 before the first. Below 1 the host has
    /// left the instrument without a read.
    [[nodiscard]] int fewestReadsLeft(int index = 0);
    /// Tells each arrival twice, as some systems do.
    void announceTwice() { m_announcements = 2; }

private:
    friend class UsbPlatformEmulated;
    using Clock = std::chrono::steady_clock;

    /// A port of the bus. Its device is another one for the host after each arrival.
    struct Port {
        std::unique_ptr<emulator::Instrument> instrument;
        std::unique_ptr<emulator::UrbQueue> urbs;
        unsigned toldGeneration = 0; ///< what the host was last told of
        bool toldAttached = false;
    };
    /// What a transfer became. Shared by the pump and whoever waits.
    struct Transfer {
        bool ended = false;
        UsbError error = UsbError::Pending;
        std::size_t moved = 0;
        Clock::time_point deadline = Clock::time_point::max();
        std::uint64_t key = 0;
        int port = 0;
        std::uintptr_t owner = 0; ///< the interface that it was submitted through
        std::uint8_t endpoint = 0;
    };
    /// The lock, with precedence over the pump, which would else take it again before anybody wakes up.
    class Turn {
    public:
        explicit Turn(EmulatedBus &bus) : m_bus(bus)
        {
            m_bus.m_callers.fetch_add(1, std::memory_order_relaxed);
            m_lock = std::unique_lock(m_bus.m_mutex);
        }
        ~Turn()
        {
            m_lock.unlock();
            m_bus.m_callers.fetch_sub(1, std::memory_order_relaxed);
            m_bus.m_wake.notify_one();
        }
        Turn(const Turn &) = delete;
        Turn &operator=(const Turn &) = delete;
        std::unique_lock<std::mutex> &lock() { return m_lock; }

    private:
        EmulatedBus &m_bus;
        std::unique_lock<std::mutex> m_lock;
    };

    // All under the lock.
    void submit(const std::shared_ptr<Transfer> &transfer, emulator::Urb urb);
    void end(const std::shared_ptr<Transfer> &transfer, UsbError error, std::size_t moved);
    /// Takes back what is under way. `moved` then tells what had come.
    void cancel(const std::shared_ptr<Transfer> &transfer, UsbError error);
    void advance();
    bool pumpOnce();
    void endLate(Clock::time_point now);
    [[nodiscard]] int noteChanges(Port &port) const;
    [[nodiscard]] bool isPresent(int port, unsigned generation) const;

    void run();

    std::mutex m_mutex;
    std::atomic<int> m_callers{0};  ///< threads that hold the lock or wait for it, the pump not counted
    std::condition_variable m_wake; ///< for the pump: there is something to do
    std::condition_variable m_transferEnded;
    std::vector<std::unique_ptr<Port>> m_ports;
    std::map<std::uint64_t, std::shared_ptr<Transfer>> m_transfers; ///< under way, by key
    std::uint64_t m_lastKey = 0;
    std::function<void()> m_changed; ///< the host's; called without the lock
    bool m_calling = false;          ///< ... just now
    const double m_timeScale;
    Clock::time_point m_lastTick;
    std::atomic<int> m_announcements{1};
    bool m_stop = false;
    std::thread m_pump;
};

/// The program's view of an EmulatedBus: one of the platforms that it can be run with.
class UsbPlatformEmulated final : public UsbPlatform {
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
    using Turn = EmulatedBus::Turn;

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
