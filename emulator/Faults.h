#pragma once

#include "RecordMemory.h"
#include "Requests.h"

#include <optional>
#include <vector>

namespace emulator {

enum class FaultAction {
    Stall,   ///< answer STALL; a bulk end point stays halted until the host clears it
    Fail,    ///< the bus transaction breaks
    Shorten, ///< move only `amount` bytes of it
    Silence, ///< no answer; the bulk pipe stays silent until it is started again
    Delay,   ///< answer `amount` nanoseconds late
    Unplug,  ///< the device leaves the bus
    Replace, ///< control to the host: answer with `bytes` instead
    End      ///< bulk reads: the stream ends here
};

struct Fault {
    FaultAction action = FaultAction::Stall;
    std::uint64_t amount = 0;
    Bytes bytes{};
    bool repeats = false;
};

/// The script of what goes wrong. Each fault strikes once, unless `repeats` is set.
///
/// Transfers are the vendor requests and bulk writes of the host, counted together from 0 since the script was last
/// cleared; bytes of a bulk pipe are counted from 0 since it was last started (bulk reads: since the request that
/// starts them; bulk writes: since the FPGA image was announced).
class Faults {
public:
    /// Strikes at transfer `index`.
    void atTransfer(std::uint64_t index, Fault fault);
    /// Strikes at the request when it comes for the `nth` time, from 0; with `repeats` from then on.
    void atRequest(const requests::Request &request, std::uint64_t nth, Fault fault);
    /// Strikes when `offset` bytes of a bulk read have been sent.
    void atInByte(std::uint64_t offset, Fault fault);
    /// Strikes in the write that holds byte `offset`.
    void atOutByte(std::uint64_t offset, Fault fault);
    /// Every status word is this one.
    void setStatus(std::uint16_t word);
    /// Sends `value` as byte `offset` of each bulk read run.
    void patchIn(std::uint64_t offset, std::uint8_t value);
    /// The record of that index (from 0) in the read-back says 0 samples.
    void zeroCountAt(RecordFormat format, std::uint64_t record);
    /// The check bytes of that group in the read-back disagree.
    void wrongCheckAt(std::uint64_t group);
    /// A capture tells these numbers instead of its own.
    void setCaptureInfo(std::uint32_t recordCount, std::uint32_t triggerRecord, std::uint32_t endAddress);
    /// After its firmware was started the device stays away.
    void neverReturn() { m_neverReturns = true; }

    /// Takes all faults away, and counts from 0 again.
    void clear() { *this = Faults(); }
    /// Transfers so far.
    [[nodiscard]] std::uint64_t transfers() const { return m_transfers; }

    // ---- for the instrument --------------------------------------------------------------------------------------

    [[nodiscard]] std::optional<Fault> takeForRequest(const SetupPacket &setup);
    /// @param offset  of the write's first byte
    [[nodiscard]] std::optional<Fault> takeForOut(std::uint64_t offset, std::size_t length);
    /// Bytes from `offset` on before the next fault strikes.
    [[nodiscard]] std::uint64_t inBytesBefore(std::uint64_t offset) const;
    /// The fault that strikes when exactly `offset` bytes have been sent.
    [[nodiscard]] std::optional<Fault> takeForIn(std::uint64_t offset);
    /// Applies the patches to bytes that begin at `offset` of the run.
    void patch(std::uint64_t offset, std::span<std::uint8_t> bytes) const;
    [[nodiscard]] bool neverReturns() const { return m_neverReturns; }

private:
    struct Planned {
        Fault fault;
        std::uint64_t at = 0;
        bool spent = false;
    };
    struct PlannedRequest {
        requests::Request request{};
        Planned planned;
        std::uint64_t seen = 0;
    };
    struct Patch {
        std::uint64_t offset;
        std::uint8_t value;
        bool invert; ///< the byte's complement instead of `value`
    };

    [[nodiscard]] std::optional<Fault> takeAt(std::vector<Planned> &list, std::uint64_t at);

    std::vector<Planned> m_transferFaults;
    std::vector<PlannedRequest> m_requestFaults;
    std::vector<Planned> m_inFaults;
    std::vector<Planned> m_outFaults;
    std::vector<Patch> m_patches;
    std::uint64_t m_transfers = 0;
    bool m_neverReturns = false;
};

} // namespace emulator
