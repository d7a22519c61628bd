#pragma once

#include "CanReceiver.h"
#include "CanSettings.h"

#include <cstdint>
#include <vector>

/// Finds the bit rates of a line from its own frames: the rate at which most of them have a right check.
///
/// Each rate is tried on the first frames of the capture: some milliseconds, whatever its length.
class CanRateFinder {
public:
    CanRateFinder(const lux::ChannelReader &line, std::int64_t sampleRate, const CanSettings &settings)
        : m_line(line), m_sampleRate(sampleRate), m_settings(settings)
    {}

    /// @return bits/s, a usual rate where one is near; 0 when there is none to be found
    [[nodiscard]] std::int64_t findRate() const;
    /// The rate behind a recessive BRS. @return 0 when no frame has one
    [[nodiscard]] std::int64_t findDataRate(std::int64_t rate) const;

private:
    struct Score {
        int sound = 0;    ///< frames with a right check
        int switched = 0; ///< frames with another bit rate in their data
        int broken = 0;
        [[nodiscard]] bool isBetterThan(const Score &other) const
        {
            const int mine = 2 * sound + switched - broken;
            const int its = 2 * other.sound + other.switched - other.broken;
            return mine > its && sound + switched > 0;
        }
    };

    [[nodiscard]] Score tryRates(std::int64_t rate, std::int64_t dataRate) const;
    [[nodiscard]] std::int64_t measuredRate() const;
    [[nodiscard]] std::int64_t measuredDataRate(std::int64_t rate) const;
    /// Of pulses that are whole bits. @param widths  are put in order
    [[nodiscard]] std::int64_t rateOf(std::vector<lux::Sample> &widths) const;

    const lux::ChannelReader &m_line;
    std::int64_t m_sampleRate;
    const CanSettings &m_settings;
};
