#pragma once

#include "BusLines.h"
#include "MessageExport.h"

#include <algorithm>
#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <span>
#include <string_view>

// A processor's bus whose accesses are told by strobes: what the two kinds of it share.

namespace lux {

/// The level at which a line is active.
enum class ActiveLevel : std::uint8_t { Low, High };

/// The bits of a word: as set, or a byte or 16 bits, whichever the lines need.
/// @param set  0 for what the lines need
[[nodiscard]] inline unsigned strobedBits(std::int32_t set, const BusLineSettings &data)
{
    constexpr unsigned bitsOfByte = 8;
    constexpr unsigned bitsOfWord = 16;
    if (set != 0) {
        return unsigned(set);
    }
    return data.width() <= bitsOfByte ? bitsOfByte : bitsOfWord;
}

/// A line that is active while an access goes on. Never leaves the decode at the data's end.
class Strobe {
public:
    /// @param line  as it is at the capture's begin, which may lie within an access
    Strobe(const ChannelReader &line, ActiveLevel active) : m_line(line), m_activeHigh(active == ActiveLevel::High) {}

    [[nodiscard]] bool isActive() const { return m_line.exists() && m_line.level() == m_activeHigh; }
    [[nodiscard]] bool hasEdge() const { return m_line.hasEdge(); }
    [[nodiscard]] Sample peekEdge() const { return m_line.hasEdge() ? m_line.peekEdge() : INT64_MAX; }
    /// Goes to the next edge, one that begins an access or ends one. @return whether it ends one
    bool advance()
    {
        const Sample edge = m_line.nextEdge();
        if (isActive()) {
            m_first = edge;
            return false;
        }
        m_end = edge;
        return true;
    }
    [[nodiscard]] Sample first() const { return m_first; } ///< of the present access, or of the last one
    [[nodiscard]] Sample end() const { return m_end; }     ///< the sample at which the last access ended, -1 for none

private:
    ChannelReader m_line;
    bool m_activeHigh;
    Sample m_first = 0;
    Sample m_end = -1;
};

/// The accesses of a bus: `data` is the word.
class StrobedBusResults : public Results {
public:
    enum Kind : std::uint8_t {
        Write,
        Read,
        Clash, ///< both strobes at once
    };
    enum Flag : std::uint16_t { Data = 1 }; ///< the register select is high
    enum Export : std::uint32_t { WrittenData = 1, ReadData = 2, Commands = 3 };

    static void addExports(auto &&add)
    {
        add(WrittenData, "Written data", "Binary file", "bin");
        add(ReadData, "Read data", "Binary file", "bin");
        add(Commands, "Commands with their data", "Text file", "txt");
        add(Commands, "Commands with their data", "CSV file", "csv");
    }

protected:
    /// @param width  bits of a word @param hasSelect  whether there is a register select
    StrobedBusResults(unsigned width, bool hasSelect) : m_width(std::max(1U, width)), m_hasSelect(hasSelect) {}

    void describe(const FrameData &frame, FrameText &out) const override
    {
        const ShortText word = out.number(frame.data, m_width);
        if (frame.kind == Clash) {
            out.add("!");
            out.add("Clash");
            out.add("Write and read at once, ", word);
            return;
        }
        const bool isWrite = frame.kind == Write;
        const bool isData = (frame.flags & Data) != 0;
        const char *what = !m_hasSelect ? "" : isData ? "data " : isWrite ? "command " : "status ";
        out.add(word);
        out.add(isWrite ? "W " : "R ", word);
        out.add(isWrite ? "Write " : "Read ", what, word);
    }
    void values(const FrameData &frame, FrameValues &out) const override
    {
        static constexpr const char *kinds[] = {"write", "read", "clash"};
        out.kind(kinds[frame.kind]);
        if (m_hasSelect) {
            out.flag("rs", (frame.flags & Data) != 0);
        } else {
            out.none("rs");
        }
        out.number("v", frame.data);
    }
    [[nodiscard]] std::span<const char *const> columns() const override
    {
        static constexpr const char *names[] = {"rs", "v"};
        return names;
    }
    void exportFile(ExportWriter &out, std::uint32_t optionId) const override
    {
        switch (optionId) {
        case WrittenData:
            exportWords(out, Write);
            break;
        case ReadData:
            exportWords(out, Read);
            break;
        case Commands:
            exportCommands(out);
            break;
        default:
            exportFrames(out);
            break;
        }
    }

private:
    /// The words of data, each in as many bytes as it needs, the highest byte first. Commands and states are left out.
    void exportWords(ExportWriter &out, Kind kind) const
    {
        constexpr unsigned bitsOfByte = 8;
        const std::uint64_t count = frameCount();
        for (std::uint64_t i = 0; i < count; ++i) {
            const FrameData one = frame(i);
            if (one.kind == kind && (!m_hasSelect || (one.flags & Data) != 0)) {
                out.big(one.data, (m_width + bitsOfByte - 1) / bitsOfByte);
            }
            out.progress(i, count);
        }
    }
    /// A line for each command: time, the command, then what was written and, with "<", what was read:
    /// "0.000012 0x2A 0x00 0xEF".
    void exportCommands(ExportWriter &out) const
    {
        FrameText numbers;
        numbers.start(FrameText::Purpose::Tabular, Channel(), out.base());
        MessageExport messages(out);
        const std::uint64_t count = frameCount();
        for (std::uint64_t i = 0; i < count; ++i) {
            const FrameData one = frame(i);
            const bool isCommand = m_hasSelect && one.kind == Write && (one.flags & Data) == 0;
            if (i == 0 || isCommand) {
                messages.begin(one);
            }
            messages.add(one, one.kind == Write ? "" : one.kind == Read ? "<" : "!", numbers.number(one.data, m_width));
            out.progress(i, count);
        }
        messages.end();
    }

    unsigned m_width;
    bool m_hasSelect;
};

/// What is read when a strobe ends: the word and the register select, as they are right before that edge, up to which
/// they must be held; and whether the device is selected then.
class StrobedBus {
public:
    StrobedBus(const ChannelReader &select, ActiveLevel active, const ChannelReader &registerSelect)
        : m_select(select), m_registerSelect(registerSelect), m_activeHigh(active == ActiveLevel::High)
    {}
    [[nodiscard]] BusLines &data() { return m_data; }
    /// Adds the access, unless it is one of another device.
    /// @param first  of the strobe @param end  the sample of the edge that ends it
    /// @return false when it is
    bool add(StrobedBusResults &results, Sample first, Sample end, StrobedBusResults::Kind kind)
    {
        const Sample taken = end - 1;
        if (m_select.exists() && m_select.levelAt(taken) != m_activeHigh) {
            return false;
        }
        results.add({.firstSample = first,
                     .lastSample = end,
                     .data = m_data.at(taken),
                     .kind = kind,
                     .flags = std::uint16_t(m_registerSelect.levelAt(taken) ? StrobedBusResults::Data : 0)});
        return true;
    }

private:
    ChannelReader m_select;
    ChannelReader m_registerSelect;
    BusLines m_data;
    bool m_activeHigh;
};

// ---- simulation -----------------------------------------------------------------------------------------------------

constexpr std::uint32_t strobedWords = 8; ///< words of data behind a simulated command are fewer

/// Quarters of a simulated access in a second.
[[nodiscard]] inline std::int64_t strobedQuarters(const Simulation &simulation)
{
    constexpr std::int64_t usualRate = 2000000; // accesses/s
    constexpr std::int64_t samplesPerAccess = 8;
    constexpr std::int64_t partsOfAccess = 4;
    return std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerAccess)) * partsOfAccess;
}

/// A simulated access: the word is there from the strobe's begin to a quarter of an access behind its end.
inline void driveStrobe(Simulation &simulation, SimulationLine &strobe, bool active, const BusLineSettings &data,
                        std::uint32_t word)
{
    const std::int64_t quarters = strobedQuarters(simulation);
    simulation.holdTime(1, quarters);
    strobe.set(active);
    driveBus(simulation, data, word);
    simulation.holdTime(2, quarters);
    strobe.set(!active);
    simulation.holdTime(1, quarters);
}

} // namespace lux
