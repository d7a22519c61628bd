#pragma once

#include "CaptureConfig.h"
#include "Sampler.h"

namespace emulator {

/// Looks for the sample on which the trigger condition holds: every level channel at its level, and every edge channel
/// (the instruments take one) moving in its direction from the sample before. The first sample of a run has no sample
/// before it, so it is no edge. Without a channel that takes part the condition always holds.
class TriggerUnit {
public:
    TriggerUnit() = default;
    /// Searches from sample `from` on; the levels before it count as the sample before.
    TriggerUnit(const TriggerConfig &config, std::int64_t from) : m_config(config), m_at(from) {}

    /// Goes on with the search up to sample `to` (not included), at most `runs` steps.
    /// @return the trigger's sample, or -1 if it has not come yet
    [[nodiscard]] std::int64_t search(const Sampler &sampler, std::int64_t to, std::int64_t runs);
    /// The first sample that was not looked at yet.
    [[nodiscard]] std::int64_t position() const { return m_at; }

private:
    [[nodiscard]] bool levelsMatch(std::uint32_t levels) const;
    [[nodiscard]] bool edgesMatch(std::uint32_t before, std::uint32_t levels) const;

    TriggerConfig m_config;
    std::int64_t m_at = 0;
};

} // namespace emulator
