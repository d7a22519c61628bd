#pragma once

#include "DsiLane.h"
#include "DsiPacket.h"
#include "DsiSettings.h"

#include <cstdint>
#include <span>

/// What the lanes did.
class DsiResults final : public lux::Results {
public:
    enum Kind : std::uint8_t { Entry, Byte, Packet, Cut, Turnaround, UltraLowPower, Burst };
    enum Flag : std::uint16_t {
        EccWrong = 1,
        EccCorrected = 2,
        ChecksumWrong = 4,
        Long = 8,
        FromPeripheral = 16,
        HasHead = 32,
    };
    struct PacketContent {
        std::uint32_t head = 0;  ///< as sent, the identifier is the lowest byte
        std::uint32_t fixed = 0; ///< the same with a wrong bit corrected
        std::span<const std::uint8_t> payload;
        std::uint16_t flags = 0;
    };

    explicit DsiResults(const DsiSettings &settings);

    // For the worker.
    [[nodiscard]] static FrameData frameOf(const DsiElement &element, std::size_t lane);
    [[nodiscard]] FrameData packetFrame(const PacketContent &content, lux::Sample first, lux::Sample last);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    [[nodiscard]] static bool has(const FrameData &frame, Flag flag) { return (frame.flags & flag) != 0; }
    [[nodiscard]] std::span<const std::uint8_t> payloadOf(const FrameData &frame) const;
    [[nodiscard]] bool isShownOn(const FrameData &frame, const Channel &channel) const;
    void describeEntry(const FrameData &frame, lux::FrameText &out) const;
    void describePacket(const FrameData &frame, lux::FrameText &out) const;
    void exportPackets(lux::ExportWriter &out) const;

    std::array<DsiSettings::Lane, DsiSettings::mostLanes> m_lanes;
};
