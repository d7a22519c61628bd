#pragma once

#include "Ps2Settings.h"

#include <cstdint>
#include <span>
#include <string_view>

/// What went over a PS/2 port: bytes of the keyboard and of the host.
class Ps2Results final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Byte,  ///< from the keyboard
        Host,  ///< to the keyboard
        Short, ///< `extra` clocks and no more; `data` are the bits behind the start bit
    };
    /// What a byte is for.
    enum Role : std::uint8_t {
        Key,      ///< the last byte of a key's code, which `extra` has with its prefix
        Prefix,   ///< a part of a key's code
        Response, ///< what the keyboard says else
        Identity,
        Command,
        Argument, ///< `extra` is the command
    };
    enum Flag : std::uint16_t {
        ParityError = 1,
        FramingError = 2, ///< the stop bit is low
        Released = 4,     ///< the key is let go
        NoAcknowledge = 8,
    };

    explicit Ps2Results(const Ps2Settings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    [[nodiscard]] lux::ShortText meaningOf(const FrameData &frame, const lux::FrameText &out) const;
    void describeByte(const FrameData &frame, lux::FrameText &out) const;
    void exportKeys(lux::ExportWriter &out) const;

    Channel m_data;
    Ps2CodeSet m_codeSet;
};
