#pragma once

#include "SpiSettings.h"

#include <cstdint>
#include <span>

/// What was transferred: words of both lines.
class SpiResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Word, ///< `data` is MOSI, `data2` MISO
        Cut,  ///< a word that ended early; `extra` tells its bits
    };
    enum Flag : std::uint16_t { FirstOfTransfer = 1 };

    explicit SpiResults(const SpiSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    enum class Line : std::uint8_t { Mosi, Miso };

    void describeLine(const FrameData &frame, Line line, lux::FrameText &out) const;
    void describeWord(const FrameData &frame, lux::FrameText &out) const;
    void exportWords(lux::ExportWriter &out, Line line) const;
    void exportTransfers(lux::ExportWriter &out) const;

    Channel m_mosi;
    Channel m_miso;
    unsigned m_bits;
};
