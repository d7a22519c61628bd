#pragma once

#include "Instrument.h"

#include <list>
#include <optional>
#include <vector>

namespace emulator {

/// One transfer of a host, from its submission to its completion.
struct Urb {
    enum class Kind { Control, BulkIn, BulkOut };

    std::uint64_t key = 0; ///< the owner's name for it
    Kind kind = Kind::Control;
    std::uint8_t endpoint = 0;         ///< address with its direction bit; 0 for control
    SetupPacket setup;                 ///< Control
    std::span<std::uint8_t> buffer{};  ///< the owner's, until completion: what is sent, or room for what comes
    std::size_t actual = 0;            ///< bytes moved
    Outcome outcome = Outcome::NotYet; ///< NotYet until it is complete
};

/// What a host controller does between the programs of a host and an instrument: holds the transfers, serves each end
/// point's in order, and completes them. The part that all faces of an instrument have in common.
///
/// Like the instrument without I/O, threads and clock, and used under the same lock as it. Transfers are bound to the
/// arrival under which they were submitted: when the device leaves, all that are pending complete with Gone.
class UrbQueue {
public:
    explicit UrbQueue(Instrument &instrument) : m_instrument(instrument), m_generation(instrument.generation()) {}

    void submit(Urb urb);
    /// Takes a pending transfer back. @return it, with what it had moved; nothing if it is not pending any more
    std::optional<Urb> cancel(std::uint64_t key);
    /// Moves what can be moved now.
    /// @param room  stop behind so many bytes, so that a lock is not held for long
    /// @return completed transfers, in the order of their completion
    std::vector<Urb> pump(std::size_t room = 1 << 20);

    /// No transfer is pending.
    [[nodiscard]] bool empty() const { return m_pending.empty(); }
    /// The last pump() stopped for lack of room, or transfers wait for one: call again at once.
    [[nodiscard]] bool wantsMore() const { return m_wantsMore; }
    /// The fewest bulk reads that were still pending when one had been filled; -1 before the first. Below 1 a host has
    /// left the instrument without a read.
    [[nodiscard]] int fewestReadsLeft() const { return m_fewestReadsLeft; }
    void forgetFewest() { m_fewestReadsLeft = -1; }

private:
    struct Pending {
        Urb urb;
        bool executed = false;            ///< control and bulk out: the instrument has been asked
        Outcome answer = Outcome::NotYet; ///< ... and answers this; NotYet for never
        std::uint64_t readyAt = 0;        ///< ns: when the answer arrives
    };

    void serve(Pending &pending, std::size_t &room);
    void serveRead(Pending &pending, std::size_t &room);
    void noteRead();

    Instrument &m_instrument;
    unsigned m_generation;
    std::list<Pending> m_pending;
    bool m_wantsMore = false;
    int m_fewestReadsLeft = -1;
};

} // namespace emulator
