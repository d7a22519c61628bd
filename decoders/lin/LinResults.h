#pragma once

#include "LinSettings.h"

#include <cstdint>
#include <span>

/// What was received: frames, breaks without a header, wake-up signals.
class LinResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Whole,  ///< a header with its answer, or without one
        Break,  ///< a break behind which no header comes
        WakeUp, ///< a dominant pulse outside of frames
    };
    enum Flag : std::uint16_t {
        ParityWrong = 1,
        ChecksumWrong = 2, ///< neither the one that the settings ask for
        FramingError = 4,
        NoSync = 8, ///< of a break: no sync field follows
    };

    explicit LinResults(const LinSettings &settings);

    /// For the worker: keeps a frame.
    void addFrame(const LinFrame &frame, lux::Sample first, lux::Sample last);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    // The words of a frame: `data` the answer's first eight bytes, `data2` identifier and the ninth, `extra` their
    // count.
    [[nodiscard]] static bool has(const FrameData &frame, Flag flag) { return (frame.flags & flag) != 0; }
    [[nodiscard]] static LinFrame unpacked(const FrameData &frame);
    void describeFrame(const FrameData &frame, lux::FrameText &out) const;
    void exportPcap(lux::ExportWriter &out) const;
    void writePacket(lux::ExportWriter &out, const FrameData &frame) const;

    const LinSettings &m_settings;
    Channel m_line;
};
