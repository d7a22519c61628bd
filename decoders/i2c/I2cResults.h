#pragma once

#include "I2cSettings.h"

#include <cstdint>
#include <span>

/// What went over the bus: conditions, addresses, data.
class I2cResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Start,
        Restart,
        Stop,
        Address, ///< `data` is the byte with the direction
        Data,
        Cut, ///< a condition within a byte: `data` are the bits before it
    };
    enum Flag : std::uint16_t {
        Nack = 1,
        Read = 2,
        Stretched = 4, ///< the clock was held low; `extra` tells for how many samples
        TenBit = 8, ///< the second byte of a 10-bit address, or its first one for a read; `data2` is the whole address
        LostStop = 16,    ///< a repeated start after the bus was idle
        GeneralCall = 32, ///< the byte that tells what a general call asks
    };

    /// The upper five bits of the first byte of a 10-bit address, 11110XX (UM10204, 3.1.11).
    static constexpr std::uint32_t tenBitPrefix = 0x1e;

    explicit I2cResults(const I2cSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    void describeAddress(const FrameData &frame, lux::FrameText &out) const;
    void describeData(const FrameData &frame, lux::FrameText &out) const;
    [[nodiscard]] lux::ShortText addressText(const FrameData &frame, const lux::FrameText &out) const;
    [[nodiscard]] lux::ShortText stretchText(const FrameData &frame) const;
    void exportBytes(lux::ExportWriter &out) const;
    void exportMessages(lux::ExportWriter &out) const;

    Channel m_sda;
    I2cAddressFormat m_addressFormat;
};
