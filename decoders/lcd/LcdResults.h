#pragma once

#include "LcdSettings.h"

#include <cstdint>
#include <span>

/// What a display is told and asked: `data` is the byte, `data2` the address of data, `line` its memory (LcdRam),
/// `extra` the halves that are selected.
class LcdResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Command,
        Data,
        Status, ///< busy flag and address counter
        Read,
        Nibble, ///< half a byte whose other half is missing
    };
    enum Flag : std::uint16_t { Extended = 1 }; ///< the extended instruction set

    explicit LcdResults(const LcdSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    void describeCommand(const FrameData &frame, lux::FrameText &out) const;
    void describeStatus(const FrameData &frame, lux::FrameText &out) const;
    void describeData(const FrameData &frame, lux::FrameText &out) const;
    [[nodiscard]] lux::ShortText half(const FrameData &frame) const;
    void exportText(lux::ExportWriter &out) const;

    LcdController m_controller;
};
