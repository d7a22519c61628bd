#pragma once

#include "CanFrame.h"
#include "CanSettings.h"

#include <cstdint>
#include <span>
#include <string_view>

/// What was received: frames, frames that were broken, error and overload frames.
class CanResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Whole, ///< a data or remote frame up to its CRC delimiter at least
        Cut,   ///< a frame that an error or the capture's end breaks before
        Error,
        Overload,
    };
    enum Flag : std::uint16_t {
        HasId = 1,
        Extended = 2,
        Remote = 4,
        Fd = 8,
        RateSwitch = 16,
        ErrorPassive = 32,
        CrcWrong = 64,
        StuffCountWrong = 128,
        Acknowledged = 256,
    };

    explicit CanResults(const CanSettings &settings);

    /// For the worker: keeps a frame, or what there is of it.
    void addFrame(const CanFrame &frame, CanFault fault, lux::Sample first, lux::Sample last);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    // The words of a frame: `data` its bytes, `data2` identifier and check, `extra` length code, length and fault.
    [[nodiscard]] static bool has(const FrameData &frame, Flag flag) { return (frame.flags & flag) != 0; }
    [[nodiscard]] static std::uint32_t idOf(const FrameData &frame) { return std::uint32_t(frame.data2); }
    [[nodiscard]] static std::uint32_t crcOf(const FrameData &frame) { return std::uint32_t(frame.data2 >> 32); }
    [[nodiscard]] static std::uint8_t codeOf(const FrameData &frame) { return std::uint8_t(frame.extra); }
    [[nodiscard]] static std::uint8_t lengthOf(const FrameData &frame) { return std::uint8_t(frame.extra >> 8); }
    [[nodiscard]] static CanFault faultOf(const FrameData &frame) { return CanFault(frame.extra >> 16 & 0xffU); }
    [[nodiscard]] std::span<const std::uint8_t> dataOf(const FrameData &frame) const;
    [[nodiscard]] static bool isDelivered(const FrameData &frame);
    void describeFrame(const FrameData &frame, lux::FrameText &out) const;
    void describeCut(const FrameData &frame, lux::FrameText &out) const;
    void exportCandump(lux::ExportWriter &out) const;
    void exportPcap(lux::ExportWriter &out) const;
    void writeCandumpLine(lux::ExportWriter &out, const FrameData &frame) const;
    void writePacket(lux::ExportWriter &out, const FrameData &frame) const;

    Channel m_line;
};
