#pragma once

#include "UsbResults.h"

#include <array>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

/// Puts packets together: transactions (Universal Serial Bus Specification 2.0, 8.5) and the stages of control
/// transfers (8.5.3). A transaction's frame stands before those of its packets, which wait here until it is over.
class UsbTransactions {
public:
    /// @param timeout  samples; no answer comes later (8.7.2) @param lowTimeout  the same behind packets of low speed
    UsbTransactions(UsbResults &results, lux::Sample timeout, lux::Sample lowTimeout)
        : m_results(results), m_timeout(timeout), m_lowTimeout(lowTimeout)
    {}

    /// @return whether sync pattern, identifier and check are right
    bool add(const UsbPacket &packet);
    /// Something that is no packet.
    void add(const FrameData &frame);
    /// A bus reset ends all transfers.
    void reset() { m_transfers.clear(); }
    /// No packet begins before `sample`: tells whether an open transaction could still go on.
    void timePasses(lux::Sample sample);
    /// The capture ends: a transaction that may go on is none.
    void finish() { flush(); }

private:
    struct Transfer {
        std::array<std::uint8_t, 8> setup{};
        std::vector<std::uint8_t> data;
        std::uint8_t dataPid = 0; ///< of the last data packet, the SETUP's to begin with
    };
    static constexpr std::size_t mostData = 65536;

    void open(const UsbPacket &packet, const FrameData &frame);
    void close();
    void flush();
    void control();

    UsbResults &m_results;
    lux::Sample m_timeout;
    lux::Sample m_lowTimeout;
    std::vector<FrameData> m_packets; ///< of the open transaction
    bool m_isLowSpeed = false;        ///< so are its packets
    /// A PRE behind a packet of low speed: its data or the next token follows (8.6.5).
    std::optional<FrameData> m_preamble;
    UsbResults::Parts m_parts;
    std::vector<std::uint8_t> m_data;
    std::unordered_map<std::uint8_t, Transfer> m_transfers; ///< of the endpoint 0 of each address
};
