#pragma once

#include "UartSettings.h"

#include <cstdint>
#include <span>
#include <string_view>

/// What was received: characters, breaks, pauses.
class UartResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Byte,  ///< `data` is the character
        Break, ///< the line was away from idle for longer than a character
        Idle,
    };
    enum Flag : std::uint16_t {
        ParityError = 1,
        FramingError = 2,
        Address = 4, ///< the ninth bit marks it
    };
    enum Line : std::uint8_t { Rx, Tx };

    explicit UartResults(const UartSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    [[nodiscard]] Channel channelOf(const FrameData &frame) const { return frame.line == Rx ? m_rx : m_tx; }
    [[nodiscard]] std::string_view lineName(const FrameData &frame, const lux::FrameText &out) const;
    void describeByte(const FrameData &frame, lux::FrameText &out) const;
    void exportBytes(lux::ExportWriter &out, Line line) const;

    Channel m_rx;
    Channel m_tx;
    unsigned m_dataBits;
};
