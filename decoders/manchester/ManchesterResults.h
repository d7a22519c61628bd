#pragma once

#include "ManchesterSettings.h"

#include <cstdint>
#include <span>
#include <string>

/// What was received: runs of bits, or words, and violations of the code.
class ManchesterResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Bits,      ///< `data` are kept bytes with a bit in each place, the first in the highest; `extra` how many
        Word,      ///< `data` is the value
        Part,      ///< the same of a run's last bits, which are fewer than a word: `extra`
        Violation, ///< half a bit is missing, or too many
        Leader,    ///< of an RC-6 frame
        Element,   ///< `data` is the value of a Field, in `line`, of an RC-6 frame; `extra` its bits
    };
    enum class Field : std::uint8_t { Start, Mode, Toggle, Address, Command, Customer, Data };

    explicit ManchesterResults(const ManchesterSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;

private:
    [[nodiscard]] std::string bitsOf(const FrameData &frame, std::size_t most) const;

    Channel m_line;
    unsigned m_wordBits;
    bool m_asBytes;
};
