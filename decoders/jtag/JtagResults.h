#pragma once

#include "JtagSettings.h"
#include "JtagState.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// What went through a test access port. Shifts: `extra` is the number of bits, `data` TDI and `data2` TDO, or payloads
/// of them when there are more than 64. States: `extra` is the state, `data` its clocks.
class JtagResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        ShiftIr,
        ShiftDr,
        Cut, ///< a shift that TRST ends
        State,
    };

    explicit JtagResults(const JtagSettings &settings);

    /// Bits as bytes, the lowest first.
    [[nodiscard]] static std::vector<std::uint8_t> packed(std::span<const std::uint64_t> words);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    enum class Line : std::uint8_t { Tdi, Tdo };

    [[nodiscard]] std::string digits(const FrameData &frame, Line line, lux::BitOrder order) const;
    [[nodiscard]] std::string number(const FrameData &frame, Line line, DisplayBase base) const;
    void describeLine(const FrameData &frame, Line line, lux::FrameText &out) const;
    void describeShift(const FrameData &frame, lux::FrameText &out) const;
    void exportVectors(lux::ExportWriter &out) const;
    void exportShift(lux::ExportWriter &out, const FrameData &frame) const;

    Channel m_tms;
    Channel m_tdi;
    Channel m_tdo;
    lux::BitOrder m_order;
};
