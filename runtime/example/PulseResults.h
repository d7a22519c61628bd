#pragma once

#include "PulseSettings.h"

#include <corvanlux/analyzer/DecoderResults.h>

/// A pulse: from its first to its last sample, `data` its width in samples.
enum class PulseKind : std::uint8_t { Pulse, TooLong };

class PulseResults : public lux::Results {
public:
    explicit PulseResults(const PulseSettings &settings) : m_settings(settings) {}

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;

private:
    const PulseSettings &m_settings;
};
