#pragma once

#include <algorithm>
#include <corvanlux/analyzer/ChannelReader.h>
#include <corvanlux/analyzer/DecoderSettings.h>
#include <corvanlux/analyzer/Simulation.h>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace lux {

/// The lines of a bus as settings, "d0" to "d31": line i is bit i of a word. Each may be missing; it is low then.
class BusLineSettings {
public:
    static constexpr unsigned most = 32;

    /// @param count  lines, at most `most`
    BusLineSettings(Settings &owner, unsigned count)
    {
        for (unsigned i = 0; i < count && i < most; ++i) {
            const std::string number = std::to_string(i);
            m_lines.emplace_back(owner, ("d" + number).c_str(), ("D" + number).c_str(), "A data line",
                                 Presence::Optional);
        }
    }
    /// The channel of a line; undefined where there is none.
    [[nodiscard]] Channel operator[](unsigned line) const
    {
        return line < m_lines.size() ? m_lines[line].value() : Channel();
    }
    /// The bits of a word: up to the highest line that is there. 0 without a line.
    [[nodiscard]] unsigned width() const
    {
        unsigned count = unsigned(m_lines.size());
        while (count > 0 && !m_lines[count - 1].isDefined()) {
            --count;
        }
        return count;
    }

private:
    std::deque<ChannelSetting> m_lines; ///< a setting stays where it was made
};

/// The lines of a bus, read together as a number: the first one is its lowest bit.
class BusLines {
public:
    /// Adds the line of the next bit; one that is not there is low.
    void add(const ChannelReader &line)
    {
        if (line.exists()) {
            m_lines.push_back({line, std::uint64_t(1) << m_count});
        }
        ++m_count;
    }
    /// The word at `sample`, to which the lines go forward. Leaves the decode at the data's end.
    [[nodiscard]] std::uint64_t at(Sample sample)
    {
        if (sample >= m_pos && sample < m_next) {
            return m_word;
        }
        m_word = 0;
        m_next = INT64_MAX;
        for (Line &line : m_lines) {
            m_word |= line.reader.levelAt(sample) ? line.bit : 0;
            m_next = std::min(m_next, line.reader.peekEdge());
        }
        m_pos = sample;
        return m_word;
    }

private:
    struct Line {
        ChannelReader reader;
        std::uint64_t bit;
    };

    std::vector<Line> m_lines;
    unsigned m_count = 0;
    std::uint64_t m_word = 0;
    Sample m_pos = 0;
    Sample m_next = 0; ///< the first sample at which the word may be another one
};

/// Drives the lines of a simulated bus: bit i on line i.
inline void driveBus(Simulation &simulation, const BusLineSettings &lines, std::uint64_t word)
{
    for (unsigned i = 0; i < lines.width(); ++i) {
        simulation.line(lines[i], false).set((word >> i & 1U) != 0);
    }
}

} // namespace lux
