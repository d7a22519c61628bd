#pragma once

#include "MidiParser.h"
#include "MidiSettings.h"

#include <array>
#include <cstdint>
#include <span>

/// What was received: messages, real-time bytes, and bytes that make no message.
class MidiResults final : public lux::Results {
public:
    enum Kind : std::uint8_t { Message, RealTime, Error };
    enum Flag : std::uint16_t {
        Running = 1, ///< the status byte was left out
        Kept = 2,    ///< the bytes are a payload
        FramingError = 4,
    };

    explicit MidiResults(const MidiSettings &settings);

    /// For the worker: a frame with these bytes.
    [[nodiscard]] FrameData made(Kind kind, std::span<const std::uint8_t> bytes, std::uint8_t status, unsigned flags);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    /// The bytes of a frame, which are in its word when there are few.
    struct Bytes {
        std::array<std::uint8_t, 8> few{};
        std::span<const std::uint8_t> kept;
        std::size_t count = 0;
        [[nodiscard]] std::span<const std::uint8_t> all() const
        {
            return kept.empty() ? std::span<const std::uint8_t>(few.data(), count) : kept;
        }
    };

    // The words of a frame: `data` the bytes or their payload, `data2` the status byte, `extra` how many bytes.
    [[nodiscard]] static bool has(const FrameData &frame, Flag flag) { return (frame.flags & flag) != 0; }
    [[nodiscard]] Bytes bytesOf(const FrameData &frame) const;
    void describeMessage(const FrameData &frame, lux::FrameText &out) const;
    void describeChannelMessage(std::uint8_t status, std::span<const std::uint8_t> data, bool isRunning,
                                lux::FrameText &out) const;
    void describeCommon(std::uint8_t status, std::span<const std::uint8_t> data, lux::FrameText &out) const;
    void exportMidiFile(lux::ExportWriter &out) const;
    void writeEvents(lux::ExportWriter &out) const;
    void writeEvent(lux::ExportWriter &out, const FrameData &frame) const;

    Channel m_line;
};
