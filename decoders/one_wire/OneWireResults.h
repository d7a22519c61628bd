#pragma once

#include "OneWireSettings.h"

#include <cstdint>
#include <span>
#include <string_view>

/// What went over a 1-Wire bus: resets, bytes, searches.
class OneWireResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Reset,  ///< with the presence pulse, if there is one
        Byte,   ///< `line` is its Role
        Search, ///< `data` the code that was chosen, `data2` where devices differed
        Rest,   ///< `data` is a payload of the bits as '0' and '1' that a reset or the capture's end cut off
    };
    /// What a byte is for.
    enum Role : std::uint8_t {
        Plain, ///< not known: the reset before is not in the capture
        Command,
        Code,    ///< `extra` is its number; number 7 is the check and has the whole code in `data2`
        Function ///< the device's own command, and its data
    };
    enum Flag : std::uint16_t {
        Present = 1,
        Overdrive = 2,
        LongPresence = 4, ///< held low for longer than a device may
        CrcError = 8,
        Alarm = 16,    ///< a search for devices with an alarm
        NoDevice = 32, ///< nobody answered a search, at least in the end
    };
    static constexpr unsigned codeBytes = 8;

    explicit OneWireResults(const OneWireSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    void describeReset(const FrameData &frame, lux::FrameText &out) const;
    void describeByte(const FrameData &frame, lux::FrameText &out) const;
    void describeSearch(const FrameData &frame, lux::FrameText &out) const;
    void exportMessages(lux::ExportWriter &out) const;
    [[nodiscard]] std::string_view restOf(const FrameData &frame) const;

    Channel m_line;
};
