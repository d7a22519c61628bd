#pragma once

#include "MdioSettings.h"

#include <cstdint>
#include <span>
#include <string_view>

/// The frames of a management interface.
class MdioResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Access, ///< `data` are the 16 bits
        Error,  ///< an operation that there is not; `data` are the 14 bits from the start on
    };
    enum Operation : std::uint8_t { Write, Read, SetAddress, PostRead };
    enum Flag : std::uint16_t {
        Clause45 = 1,
        NoAnswer = 2,        ///< nobody drives the turnaround of a read
        TurnaroundError = 4, ///< of a write
        AddressKnown = 8,    ///< clause 45: `data2` is the register's address, from a frame before
    };
    /// A frame's `extra`: the port in the upper five bits of ten, the register or device in the lower ones.
    static constexpr unsigned addressBits = 5;

    explicit MdioResults(const MdioSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;

private:
    [[nodiscard]] lux::ShortText placeText(const FrameData &frame, const lux::FrameText &out) const;

    Channel m_data;
};
