#pragma once

#include "ParallelSettings.h"

#include <cstdint>
#include <span>

/// The words of a bus: `data` is the word, `data2` the address.
class ParallelResults final : public lux::Results {
public:
    explicit ParallelResults(const ParallelSettings &settings);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    unsigned m_width;
    unsigned m_addressWidth;
};
