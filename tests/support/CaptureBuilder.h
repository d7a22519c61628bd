#pragma once

#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <cstdint>
#include <vector>

/// Fills a store with square waves of known edges: channel c starts at level c % 2 and changes every
/// `period` * (c + 1) samples.
struct CaptureBuilder {
    std::int64_t samples = 100000;
    std::int64_t rate = 100000000; // Hz
    std::int64_t period = 100;     // samples between two transitions of channel 0
    std::int64_t trigger = 0;

    void fill(SmpData &data) const
    {
        const std::vector<std::uint8_t> enable(std::size_t(data.chnCount), 1);
        data.begin(0, rate, enable);
        for (int chn = 0; chn < data.chnCount; ++chn) {
            if (chn % 2 != 0) {
                SmpWriter(data).setStartLevel(chn, true);
            }
            const std::int64_t width = period * (chn + 1);
            const std::vector<std::int32_t> widths(std::size_t((samples - 1) / width), std::int32_t(width));
            std::int64_t pos = 0;
            (void)data.addPulses(widths, chn, pos);
        }
        SmpWriter(data).setSmpCount(samples);
        SmpWriter(data).setTrgPos(trigger);
        data.finish(samples); // from here on others may read
    }
};
