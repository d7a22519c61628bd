#pragma once

#include "UrbQueue.h"
#include "usbip/UsbIpWire.h"

#include <deque>
#include <map>
#include <memory>

namespace emulator::usbip {

/// One connection: an operation, and after an import the transfers of a host. Bytes in, bytes out, no socket.
class Session {
public:
    /// @param device  not owned; used only from within the calls below
    /// @param taken   somebody else has imported the device
    Session(Instrument &device, bool taken) : m_device(device), m_urbs(device), m_taken(taken) {}

    /// The other side is a host that has imported the device already.
    void startImported();
    /// Takes what has come over the connection.
    void receive(std::span<const std::uint8_t> bytes);
    /// Moves data between the host and the device. To be called after receive() and each time that time has passed.
    void pump();

    /// The next bytes to send; empty when there are none for now.
    [[nodiscard]] std::span<const std::uint8_t> output() const;
    /// So many of them were sent.
    void sent(std::size_t bytes);

    /// The device was imported over this connection.
    [[nodiscard]] bool imported() const { return m_wasImported; }
    /// It was, and that device is still there.
    [[nodiscard]] bool holdsDevice() const;
    /// Close the connection once there is no more output.
    [[nodiscard]] bool finished() const { return m_state == State::Finished; }
    /// There is work that does not wait for time or the other side: call pump() at once.
    [[nodiscard]] bool wantsPump() const { return m_state == State::Imported && m_urbs.wantsMore() && !isFull(); }
    /// Transfers are pending.
    [[nodiscard]] bool waits() const { return !m_urbs.empty(); }

    /// The longest transfer that is taken, bytes.
    static constexpr std::uint32_t longestTransfer = 64 << 20;

private:
    enum class State { Operation, Imported, Finished };

    /// A block of bytes to send: a head, alone or with the data of a transfer to the host behind it.
    struct Block {
        std::unique_ptr<std::uint8_t[]> bytes;
        std::size_t size = 0;
    };
    /// A transfer under way. Its data stand behind room for a head, so that they are sent from where they are.
    struct Transfer {
        Block block;
        bool toHost = false;
    };

    [[nodiscard]] std::size_t takeOperation();
    [[nodiscard]] std::size_t takeCommand();
    void submit(const Head &head, std::span<const std::uint8_t> data);
    void unlink(const Head &head);
    void answer(const Urb &urb, Outcome outcome);
    void send(std::span<const std::uint8_t> bytes);
    void finish();
    /// More output waits than is good for the memory.
    [[nodiscard]] bool isFull() const { return m_waiting > outputLimit; }

    static constexpr std::size_t outputLimit = 8 << 20;

    Instrument &m_device;
    UrbQueue m_urbs;
    const bool m_taken;
    State m_state = State::Operation;
    bool m_wasImported = false;
    unsigned m_generation = 0;                     ///< of the imported device
    Bytes m_input;                                 ///< what came and is not whole yet
    std::map<std::uint64_t, Transfer> m_transfers; ///< by sequence number
    std::deque<Block> m_output;
    std::size_t m_sent = 0;    ///< bytes of the first block
    std::size_t m_waiting = 0; ///< bytes of all
};

} // namespace emulator::usbip
