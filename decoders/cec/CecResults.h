#pragma once

#include "CecSettings.h"

#include <cstdint>
#include <span>
#include <string_view>

/// What went over a CEC line: messages, each with its blocks.
class CecResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Message, ///< `data` is a payload of the blocks, `data2` their acknowledgements, the first one lowest
        Cut,     ///< a message that ends within a block or before its last one; `data`, `data2` as above
        Start,
        Block, ///< `data`; `line` is its Role
    };
    enum Role : std::uint8_t { Header, Opcode, Operand };
    enum Flag : std::uint16_t {
        Broadcast = 1,
        Last = 2,         ///< EOM
        Acknowledged = 4, ///< of a broadcast: nobody refuses it
        Timing = 8,       ///< a bit is neither a 0 nor a 1 by its length
        LineError = 16,   ///< a follower tells an error (CEC 7.4)
    };

    explicit CecResults(const CecSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    void describeMessage(const FrameData &frame, lux::FrameText &out) const;
    void describeBlock(const FrameData &frame, lux::FrameText &out) const;
    void exportMessages(lux::ExportWriter &out) const;

    Channel m_line;
};
