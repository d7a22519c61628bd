#pragma once

#include "SwiSettings.h"

#include <cstdint>
#include <span>

/// What went over the wire: wake pulses, flags, blocks with their bytes.
class SwiResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Wake,
        Flag,
        Byte,  ///< `line` is its Role
        Block, ///< `data` is a payload of all bytes, with count and CRC
        Cut,   ///< a block that is not complete; `data` is a payload of what there is
    };
    enum Role : std::uint8_t { Data, Count, Opcode, Check, Unknown };
    enum FlagBit : std::uint16_t {
        FromDevice = 1,
        CrcError = 2,
    };

    explicit SwiResults(const SwiSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    void describeByte(const FrameData &frame, lux::FrameText &out) const;
    void describeBlock(const FrameData &frame, lux::FrameText &out) const;
    void exportBlocks(lux::ExportWriter &out) const;
    [[nodiscard]] std::span<const std::uint8_t> contentOf(const FrameData &frame) const;

    Channel m_line;
};
