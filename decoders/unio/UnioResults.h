#pragma once

#include "UnioSettings.h"

#include <cstdint>
#include <span>

/// What went over a UNI/O bus: standby pulses, start headers, bytes.
class UnioResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Standby,
        Header,
        Byte, ///< `line` is its Role
        Cut,  ///< `extra` bits of a byte and no more; `data` are these
    };
    /// What a byte is for.
    enum Role : std::uint8_t { Device, Command, AddressHigh, AddressLow, Data, Status };
    enum Flag : std::uint16_t {
        Mak = 1, ///< the controller goes on
        Sak = 2, ///< the device acknowledges
    };

    explicit UnioResults(const UnioSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    void describeByte(const FrameData &frame, lux::FrameText &out) const;
    void exportMessages(lux::ExportWriter &out) const;

    Channel m_line;
};
