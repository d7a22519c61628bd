#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

// Names of what is open. 0 is none; the value means something to the platform only.
enum class UsbList : std::uintptr_t { None = 0 };
enum class UsbFile : std::uintptr_t { None = 0 };
enum class UsbInterface : std::uintptr_t { None = 0 };

/// What an operation of the platform comes to. Each implementation turns its system's codes into these in one place.
enum class UsbError {
    None,     ///< done
    TooSmall, ///< the room given does not hold the answer
    NotFound, ///< there is no such interface, end point or device
    Refused,  ///< somebody else holds the device, or the user may not open it
    Gone,     ///< the device has left the bus
    TimedOut, ///< the pipe's time-out has passed
    Halted,   ///< the device refused the request, or the pipe is halted until it is reset
    Aborted,  ///< abortPipe() ended it
    Pending,  ///< the read is still under way
    NoMemory, ///< the system lacks memory
    Failed,   ///< anything else
};

/// The outcome of an operation.
struct UsbResult {
    UsbError error = UsbError::None;
    std::uint32_t system = 0; ///< the system's own code, for diagnosis only; 0 when there is none

    [[nodiscard]] bool ok() const { return error == UsbError::None; }
    bool operator==(const UsbResult &) const = default;
};

/// The setup packet of a control transfer (USB 2.0, 9.3).
struct UsbSetup {
    std::uint8_t requestType = 0; ///< bit 7: device to host
    std::uint8_t request = 0;
    std::uint16_t value = 0;
    std::uint16_t index = 0;
    std::uint16_t length = 0; ///< bytes of the data stage

    [[nodiscard]] bool isIn() const { return (requestType & 0x80) != 0; }
    /// As it goes over the wire: 8 bytes, little-endian.
    [[nodiscard]] std::array<std::uint8_t, 8> wire() const
    {
        const auto low = [](std::uint16_t v) { return std::uint8_t(v & 0xFF); };
        const auto high = [](std::uint16_t v) { return std::uint8_t(v >> 8); };
        return {requestType, request, low(value), high(value), low(index), high(index), low(length), high(length)};
    }
    bool operator==(const UsbSetup &) const = default;
};

struct UsbPipe {
    std::uint8_t id = 0; ///< end point address, bit 7: device to host
    std::uint16_t maxPacket = 0;
};

/// What can be set on a pipe; the numbers are those of the Windows driver.
enum class UsbPolicy : std::uint32_t {
    TransferTimeout = 3,   ///< ms, 0 for none
    AllowPartialReads = 5, ///< 1: a packet may be longer than what is left of a read
    AutoFlush = 6,         ///< what is then done with the rest: 1 dropped, 0 kept
    RawIo = 7,             ///< 1: reads go to the controller as they are, several at a time
};

/// The place of one asynchronous read. Made by the platform that uses it, and used by one thread at a time beside
/// abortPipe(). Idle, or holding one read from queueRead() until its result has been asked for or the next is queued.
/// It goes before its platform, and never while its read is under way.
class UsbReadSlot {
public:
    virtual ~UsbReadSlot() = default;
};

/// What the transport needs of the operating system: one operation for each thing asked, and no logic.
///
/// Chosen when the program starts (makeUsbPlatform()), or made by a test. Lives longer than all that it has opened, and
/// is destroyed on the thread that made it, when nothing is open and no operation is under way.
///
/// Threads: the operations of finding and opening are called by one thread at a time, registerHotplug() on the main
/// thread only. All that take a UsbInterface may be called from any thread and by several at a time; an interface is
/// freed by whoever uses it last, on that thread, while no operation on it is under way. A device that leaves the bus
/// makes every operation on it answer an error, mostly Gone, at once or when its time-out has passed; it never makes
/// one hang or crash.
///
/// Two more questions to the system have a file of their own for each system, since they are asked where there is no
/// transport: the physical memory (acquisition/PhysicalMemory.h) and the system's version (device/HostSystem.h).
class UsbPlatform {
public:
    virtual ~UsbPlatform() = default;

    // ---- finding. One thread at a time; may block for the time that the system needs to look at its devices.

    /// Takes a list of the instruments' interfaces that are present now; it does not change afterwards.
    /// @return the list, to be freed with freeList(); None when it cannot be had, which means the same as an empty one
    [[nodiscard]] virtual UsbList openList() = 0;
    /// @return true when the list has an entry `index`, from 0. Entries are without gaps. Never blocks.
    [[nodiscard]] virtual bool listHas(UsbList list, int index) = 0;
    /// The path of an entry, by which openFile() finds it: equal as long as the device stays on the bus, and not equal
    /// to that of any device present at the same time. A device that comes back may have another one.
    /// @param room    filled with the path and a final 0; may be empty
    /// @param needed  out, bytes that the path and its 0 take; 0 when the answer is neither None nor TooSmall
    /// @return None; TooSmall with nothing written (the normal answer to an empty `room`); NotFound for an index that
    ///         the list does not have; NoMemory, Failed
    [[nodiscard]] virtual UsbResult interfaceDetail(UsbList list, int index, std::span<char> room,
                                                    std::size_t &needed) = 0;
    /// Frees a list. None is allowed.
    virtual void freeList(UsbList list) = 0;

    // ---- opening. One thread at a time, except for freeing; may block until the device answers or the system gives
    // up.

    /// Opens the device of a path for reading and writing.
    /// @param file  out, to be closed with closeFile(); None unless the answer is None
    /// @return None; NotFound or Gone for a path that is no more; Refused, NoMemory, Failed. Legal next:
    /// initInterface()
    ///         or closeFile().
    [[nodiscard]] virtual UsbResult openFile(const char *path, UsbFile &file) = 0;
    /// Closes a file whose interface has been freed. None is allowed. Any thread.
    virtual void closeFile(UsbFile file) = 0;
    /// Takes hold of the device's interface. Waits up to 1 s for a system that announces devices before they are ready.
    /// @param iface  out, to be freed with freeInterface() before its file is closed; None unless the answer is None
    /// @return None, NotFound, Refused, Gone, NoMemory, Failed. One interface per file.
    [[nodiscard]] virtual UsbResult initInterface(UsbFile file, UsbInterface &iface) = 0;
    /// Releases an interface. Reads that are still queued are ended first, as by abortPipe(). None is allowed. Any
    /// thread; legal once no other operation on it is under way.
    virtual void freeInterface(UsbInterface iface) = 0;

    // ---- what the device is. Any thread; may block for one control transfer.

    /// The device descriptor (USB 2.0, 9.6.1).
    /// @param moved  out, bytes written to `room`, also when fewer than asked
    /// @return None, Gone, TimedOut, Failed
    [[nodiscard]] virtual UsbResult deviceDescriptor(UsbInterface iface, std::span<std::uint8_t> room,
                                                     std::uint32_t &moved) = 0;
    /// Alternate setting 0: the number of its end points, without the control pipe.
    /// @return None, NotFound, Gone, Failed; `count` is 0 unless it is None
    [[nodiscard]] virtual UsbResult interfaceSettings(UsbInterface iface, int &count) = 0;
    /// End point `index` of alternate setting 0, from 0.
    /// @return None; NotFound for an index that there is not; Gone, Failed
    [[nodiscard]] virtual UsbResult queryPipe(UsbInterface iface, int index, UsbPipe &pipe) = 0;

    // ---- setting up. Any thread; the first may block for one control transfer, the second never blocks.

    /// Selects alternate setting 0, while no read is queued.
    /// @return None, NotFound, Gone, Failed
    virtual UsbResult selectSetting(UsbInterface iface) = 0;
    /// Sets one policy of one pipe; 0x00 and 0x80 are the control pipe. It counts for transfers that start afterwards.
    /// @return None; NotFound for a pipe that the device does not have; Failed for a policy that the pipe does not take
    virtual UsbResult setPipePolicy(UsbInterface iface, std::uint8_t pipe, UsbPolicy policy, std::uint32_t value) = 0;

    // ---- transfers. Any thread.

    /// One control transfer. Blocks until it is done or the time-out of pipe 0x80 (in) or 0x00 (out) has passed.
    /// @param data   setup.length bytes: sent, or filled; null when that is 0
    /// @param moved  out, bytes of the data stage that were moved
    /// @return None, also when fewer bytes were moved than asked; Halted for a request that the device refuses; Gone,
    ///         TimedOut, NoMemory, Failed. After each the next transfer is legal.
    [[nodiscard]] virtual UsbResult controlTransfer(UsbInterface iface, const UsbSetup &setup, std::uint8_t *data,
                                                    std::uint32_t &moved) = 0;
    /// Writes to a bulk pipe. Blocks until all is written or the pipe's time-out has passed.
    /// @param moved  out, bytes that the device took, also when the answer is an error
    /// @return None, also when fewer bytes were moved than asked; NotFound for a pipe that is none; Halted, Gone,
    ///         TimedOut, NoMemory, Failed
    [[nodiscard]] virtual UsbResult writePipe(UsbInterface iface, std::uint8_t pipe, std::span<const std::uint8_t> data,
                                              std::uint32_t &moved) = 0;

    // ---- asynchronous reads: several may be queued on a pipe, and are filled in the order in which they were queued.

    /// Makes a place for reads, idle. Null when the system refuses. Any thread.
    [[nodiscard]] virtual std::unique_ptr<UsbReadSlot> makeReadSlot() = 0;
    /// Queues a read of `size` bytes, above 0, into an idle slot; what it held before is forgotten. Never blocks.
    /// The buffer belongs to the platform until waitRead() has told that the read has ended, or abortPipe() returned.
    /// A read ends when it is full, when the device sends a packet that is not full (an empty one too), on an error, or
    /// when the pipe's time-out has passed.
    /// @return None: the slot holds the read, and waitRead() is legal. NotFound, Gone, NoMemory, Failed: the slot is
    ///         idle, the buffer untouched.
    [[nodiscard]] virtual UsbResult queueRead(UsbInterface iface, std::uint8_t pipe, std::uint8_t *buffer,
                                              std::uint32_t size, UsbReadSlot &slot) = 0;
    /// Blocks until the slot's read has ended, at most `ms` milliseconds. An end wakes it at once, whatever it is.
    /// @return true when the read has ended; false after the time, and at once for an idle slot
    [[nodiscard]] virtual bool waitRead(UsbReadSlot &slot, int ms) = 0;
    /// What became of the slot's read. Never blocks.
    /// @param moved  out, bytes received; 0 when the answer is not None
    /// @return None, also for an empty packet (0 bytes); Pending, while it has not ended; TimedOut, Aborted, Halted,
    ///         Gone, Failed. NotFound for an idle slot. The slot is idle after every answer but Pending.
    [[nodiscard]] virtual UsbResult readResult(UsbInterface iface, UsbReadSlot &slot, std::uint32_t &moved) = 0;
    /// Ends all reads that are queued on a pipe: they answer Aborted unless they had ended before. When it returns,
    /// whatever it answers, no buffer of theirs is touched any more. Blocks for as long as the system needs to take the
    /// reads back, some ms. Waiting threads wake up. Harmless when nothing is queued.
    /// @return None, NotFound, Gone, Failed
    virtual UsbResult abortPipe(UsbInterface iface, std::uint8_t pipe) = 0;
    /// Drops bytes that the system has received on a pipe and nobody has asked for. While no read is queued; some ms.
    /// @return None, NotFound, Gone, Failed
    virtual UsbResult flushPipe(UsbInterface iface, std::uint8_t pipe) = 0;
    /// Clears a halt of a pipe and starts its data toggle anew, at both ends. While no read is queued; blocks for one
    /// control transfer.
    /// @return None, NotFound, Gone, Failed
    virtual UsbResult resetPipe(UsbInterface iface, std::uint8_t pipe) = 0;

    // ---- coming and going

    /// Asks to be told when an instrument arrives or leaves, from now until the platform is destroyed. Once, on the
    /// main thread.
    /// @param window   where a system that tells windows sends its messages; others do not look at it
    /// @param changed  what the others call for each arrival and each removal, once or more, in any order with those of
    ///                 other devices and on a thread of theirs; it must only pass the word on. Devices that are present
    ///                 already are not told.
    /// @return true when changes will be told
    [[nodiscard]] virtual bool registerHotplug(std::uintptr_t window, std::function<void()> changed) = 0;
};
