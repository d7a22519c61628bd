#pragma once

#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

/// Builds closed captures for the tests of the view: capture().channels(2).samples(1000).pulses(0, {10, 20}).build().
class WaveCapture {
public:
    WaveCapture &channels(int count, int analog = 0)
    {
        m_channels = count;
        m_analog = analog;
        return *this;
    }
    WaveCapture &samples(std::int64_t count)
    {
        m_samples = count;
        return *this;
    }
    WaveCapture &rate(std::int64_t hz)
    {
        m_rate = hz;
        return *this;
    }
    WaveCapture &trigger(std::int64_t pos)
    {
        m_trigger = pos;
        return *this;
    }
    /// The channel is low at first, and changes after each width.
    WaveCapture &pulses(int chn, std::vector<std::int32_t> widths)
    {
        m_pulses.push_back({chn, std::move(widths)});
        return *this;
    }
    /// The channel changes at each sample from 1 on.
    WaveCapture &dense(int chn) { return pulses(chn, std::vector<std::int32_t>(std::size_t(m_samples - 1), 1)); }

    [[nodiscard]] std::unique_ptr<SmpData> build() const
    {
        auto data = std::make_unique<SmpData>(m_channels, m_analog);
        fill(*data);
        return data;
    }
    /// Puts this capture in the place of what `data` holds. Analog sample i is i modulo 256, less 128.
    void fill(SmpData &data) const
    {
        memBudget = std::int64_t(1) << 40;
        const std::vector<std::uint8_t> enable(std::size_t(data.chnCount), 1);
        data.begin(0, m_rate, enable);
        for (const Pulses &channel : m_pulses) {
            std::int64_t pos = 0;
            (void)data.addPulses(channel.widths, channel.chn, pos);
        }
        for (int i = 0; i < data.aChnCount; ++i) {
            SmpAChnBuffer *buffer = SmpWriter(data).aChnBuf(i);
            buffer->count = std::int32_t(std::min<std::int64_t>(m_samples, SmpAChnBuffer::capacity));
            for (int s = 0; s < buffer->count; ++s) {
                buffer->samples[s] = std::int8_t(s % 256 - 128);
            }
        }
        SmpWriter(data).setSmpCount(m_samples);
        SmpWriter(data).setTrgPos(m_trigger);
        data.finish(m_samples);
    }

private:
    struct Pulses {
        int chn;
        std::vector<std::int32_t> widths;
    };
    int m_channels = 1;
    int m_analog = 0;
    std::int64_t m_samples = 1000;
    std::int64_t m_rate = 1'000'000;
    std::int64_t m_trigger = 0;
    std::vector<Pulses> m_pulses;
};

inline WaveCapture capture()
{
    return {};
}
