#pragma once

#include "UsbPacket.h"
#include "UsbSettings.h"

#include <cstdint>
#include <span>
#include <string>

/// What was sent on the bus: packets, the states between them, and transactions out of packets.
class UsbResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Packet,
        KeepAlive,
        Reset,
        Suspend,
        Resume,
        Error, ///< what breaks a packet: `extra` is the UsbEnd
        Transaction,
    };
    enum Flag : std::uint16_t {
        SyncWrong = 1,
        CrcWrong = 2, ///< also of a packet that is too short for its check
        Inline = 4,   ///< up to eight bytes are in `data` itself
        Short = 8,    ///< no whole packet identifier
        LowSpeed = 16,
    };
    enum class Stage : std::uint8_t { None, Setup, Data, Status };
    /// A token, data and a handshake (8.5).
    struct Parts {
        std::uint8_t token = 0;
        std::uint8_t dataPid = 0;   ///< 0 for none
        std::uint8_t handshake = 0; ///< 0 for none
        std::uint8_t address = 0;
        std::uint8_t endpoint = 0;
        Stage stage = Stage::None;
    };

    explicit UsbResults(const UsbSettings &settings);

    // For the worker.
    [[nodiscard]] FrameData frameOf(const UsbPacket &packet);
    /// @param bytes  the data; of a status stage the SETUP's eight bytes and all data of the request
    [[nodiscard]] FrameData frameOf(const Parts &parts, std::span<const std::uint8_t> bytes, lux::Sample first,
                                    lux::Sample last);
    [[nodiscard]] static bool isRight(const FrameData &packet)
    {
        return (packet.flags & (SyncWrong | CrcWrong | Short)) == 0;
    }

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    /// The bytes of a packet from its identifier on, or those of a transaction.
    class Bytes {
    public:
        Bytes(const UsbResults &results, const FrameData &frame);
        [[nodiscard]] std::span<const std::uint8_t> all() const { return m_all; }

    private:
        std::uint8_t m_own[8] = {};
        std::span<const std::uint8_t> m_all;
    };

    [[nodiscard]] static bool has(const FrameData &frame, Flag flag) { return (frame.flags & flag) != 0; }
    [[nodiscard]] static Parts partsOf(const FrameData &frame);
    void describePacket(const FrameData &frame, lux::FrameText &out) const;
    void describeTransaction(const FrameData &frame, lux::FrameText &out) const;
    void packetValues(const FrameData &frame, lux::FrameValues &out) const;
    void transactionValues(const FrameData &frame, lux::FrameValues &out) const;
    void exportPcap(lux::ExportWriter &out) const;
    void exportTransactions(lux::ExportWriter &out) const;

    Channel m_dp;
    Channel m_dm;
};
