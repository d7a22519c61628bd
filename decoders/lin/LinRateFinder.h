#pragma once

#include "common/FilteredLine.h"

#include <array>
#include <cmath>
#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>
#include <cstdlib>

/// The edges behind a break that tell the sender's bit time (LIN 2.2A, 2.3.1.2): the five falling ones of 0x55, two
/// bits apart.
struct LinSync {
    static constexpr unsigned bits = 8; ///< from the first fall to the last

    lux::Sample first = 0; ///< the start bit's edge
    lux::Sample last = 0;  ///< the fifth fall
    lux::Sample end = 0;   ///< the rise to the stop bit

    /// Reads a sync field. The line stands at the rise that ends the break, and goes to the field's last rise.
    /// @param spike  samples: shorter pulses are not seen
    /// @return false, with the line where it was, when what follows is none; also at the capture's end
    [[nodiscard]] bool read(lux::ChannelReader &line, lux::Sample spike = 1)
    {
        std::array<lux::Sample, bits + 2> edges{};
        lux::FilteredLine steady(line, spike);
        for (lux::Sample &edge : edges) {
            if (!steady.hasEdge()) {
                return false;
            }
            edge = steady.nextEdge();
        }
        first = edges.front();
        last = edges[bits];
        end = edges[bits + 1];
        const lux::Sample eight = last - first;
        for (unsigned i = 0; i <= bits; ++i) {
            // Rises may be late by a part of a bit; a quarter of one, and the sample to which an edge is known.
            const lux::Sample off = std::abs((edges[i + 1] - first) * std::int64_t(bits) - eight * (i + 1));
            if (off > eight / 4 + lux::Sample(bits)) {
                return false;
            }
        }
        line.advanceTo(end);
        return true;
    }
};

/// Finds the bit rate of a LIN bus from its sync fields: a break, then edges that are equally far apart.
class LinRateFinder {
public:
    LinRateFinder(const lux::ChannelReader &line, std::int64_t sampleRate) : m_line(line), m_sampleRate(sampleRate) {}

    /// @return bits per second, a usual rate where one is near; 0 when there is no header
    [[nodiscard]] std::int64_t find() const
    {
        std::int64_t fields = 0;
        lux::Sample samples = 0;
        lux::ChannelReader line(m_line);
        line.waitForLevel(true);
        for (int pulses = 0; pulses < mostPulses && fields < enoughFields && line.edgesLeft() > 2; ++pulses) {
            const lux::Sample fall = line.nextEdge();
            const lux::Sample low = line.nextEdge() - fall;
            lux::ChannelReader ahead(line);
            LinSync sync;
            if (sync.read(ahead) && low * LinSync::bits >= (sync.last - sync.first) * leastBreakBits) {
                samples += sync.last - sync.first;
                ++fields;
            }
        }
        return fields == 0 ? 0 : usualRate(double(m_sampleRate) * double(fields * LinSync::bits) / double(samples));
    }

private:
    static constexpr int mostPulses = 20000;
    static constexpr std::int64_t enoughFields = 16;
    static constexpr std::int64_t leastBreakBits = 11;
    static constexpr double usualWithin = 0.015; ///< a rate so near to a usual one is that one

    [[nodiscard]] static std::int64_t usualRate(double measured)
    {
        for (const std::int64_t rate : {1200, 2400, 4800, 9600, 10400, 19200, 20000}) {
            if (std::abs(measured - double(rate)) < usualWithin * double(rate)) {
                return rate;
            }
        }
        return std::llround(measured);
    }

    const lux::ChannelReader &m_line;
    std::int64_t m_sampleRate;
};
