#pragma once

#include "I2sSettings.h"

#include <cstdint>
#include <span>

/// The samples of a serial audio bus: `data` is the word, `extra` its slot (upper half) and its bits (lower half). Of a
/// frame that is too short `data2` has the clocks, at its last word.
class I2sResults final : public lux::Results {
public:
    enum Kind : std::uint8_t { Word };
    enum Flag : std::uint16_t {
        WrongCount = 1, ///< other than the usual number of bits
        ShortFrame = 2, ///< the last word of a frame with fewer clocks than its slots need
    };

    explicit I2sResults(const I2sSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    [[nodiscard]] lux::ShortText number(const FrameData &frame, DisplayBase base) const;
    void exportWave(lux::ExportWriter &out) const;

    bool m_isStereo;
    bool m_isSigned;
    unsigned m_firstSlot;
    std::int64_t m_bits;
};
