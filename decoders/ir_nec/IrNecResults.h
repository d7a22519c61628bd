#pragma once

#include "IrNecSettings.h"

#include <array>
#include <cstdint>
#include <span>

/// What was received: frames, repeats, frames that break off.
class IrNecResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Whole,  ///< `data` has the 32 bits in the order of time, the first in the lowest
        Repeat, ///< `data` those of the frame that is repeated
        Cut,    ///< `extra` bits were received
    };
    enum Flag : std::uint16_t { Known = 1 /**< of a repeat: what is repeated was received */ };

    /// The four bytes of a frame in the order of time.
    struct Code {
        std::array<std::uint8_t, 4> bytes;
        explicit Code(std::uint64_t bits)
            : bytes{std::uint8_t(bits), std::uint8_t(bits >> 8), std::uint8_t(bits >> 16), std::uint8_t(bits >> 24)}
        {}
        /// The second byte is no complement of the first: it is the address's higher half.
        [[nodiscard]] bool isExtended() const { return bytes[0] != std::uint8_t(~bytes[1]); }
        [[nodiscard]] std::uint16_t address() const
        {
            return isExtended() ? std::uint16_t(bytes[1] << 8 | bytes[0]) : std::uint16_t(bytes[0]);
        }
        [[nodiscard]] std::uint8_t command() const { return bytes[2]; }
        [[nodiscard]] bool isCommandRight() const { return bytes[2] == std::uint8_t(~bytes[3]); }
    };

    explicit IrNecResults(const IrNecSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;

private:
    void describeCode(const FrameData &frame, lux::FrameText &out) const;

    Channel m_line;
};
