#pragma once

#include "SmbusSettings.h"

#include <cstdint>
#include <span>
#include <string_view>

/// What went over the bus: transactions, with their conditions and bytes.
class SmbusResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Transaction, ///< `data` is a payload of all bytes; `extra` is the number of the second address, 0 for none
        Start,
        Restart,
        Stop,
        Address, ///< `data` is the byte with the direction
        Data,    ///< `line` is its Role
        Cut,     ///< a condition within a byte: `data` are the bits before it
        Timeout, ///< the clock is low for so long that devices let go
    };
    enum Role : std::uint8_t { Plain, Command, Pec };
    enum Flag : std::uint16_t {
        Nack = 1, ///< of a transaction: its last byte
        Read = 2,
        RightPec = 4,
        Broken = 8,        ///< a transaction that a cut byte or a time-out ends
        HeldByTarget = 16, ///< its clock is held low for longer than a target may
        HeldInByte = 32,   ///< that of one of its bytes for longer than a controller may
    };

    explicit SmbusResults(const SmbusSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    void describeTransaction(const FrameData &frame, lux::FrameText &out) const;
    void describeAddress(const FrameData &frame, lux::FrameText &out) const;
    void describeData(const FrameData &frame, lux::FrameText &out) const;
    void describeElement(const FrameData &frame, lux::FrameText &out) const;
    void exportTransactions(lux::ExportWriter &out) const;

    Channel m_scl;
    Channel m_sda;
};
