#pragma once

#include "DmxSettings.h"

#include <cstdint>
#include <span>

/// What was received: breaks, marks behind them, start codes and slots.
class DmxResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Break,
        Mark,  ///< from the break to the start code
        Start, ///< `data` is the start code
        Slot,  ///< `data` is the value, `extra` the number from 1
    };
    enum Flag : std::uint16_t {
        FramingError = 1,
        TooShort = 2, ///< shorter than a receiver must take it
        TooLong = 4,  ///< longer than a packet or a pause may be
        TooManySlots = 8,
    };

    explicit DmxResults(const DmxSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    [[nodiscard]] static bool has(const FrameData &frame, Flag flag) { return (frame.flags & flag) != 0; }
    void describeValue(const FrameData &frame, lux::FrameText &out) const;
    void exportPackets(lux::ExportWriter &out) const;
    void exportPacketTexts(lux::ExportWriter &out) const;

    Channel m_line;
};
