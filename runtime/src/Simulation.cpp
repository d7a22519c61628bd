#include "corvanlux/analyzer/Simulation.h"

#include "DescriptorPrivate.h"
#include "Hidden.h"
#include "SimulationEnd.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <memory>
#include <vector>

namespace lux {

#if defined(_WIN32)
constexpr std::uint32_t Simulation::mostLines; // see AnalyzerResults::exportFailed
#endif
namespace detail {

constexpr std::int64_t longestRun = std::numeric_limits<std::int32_t>::max();

/// One line: its changes that are not handed out yet, and what was.
struct Track {
    Channel channel;
    std::vector<std::int64_t> changes; ///< positions, rising
    bool initialLevel = false;
    bool level = false;      ///< now
    bool takenLevel = false; ///< at `taken`
    std::int64_t taken = 0;  ///< handed out up to here

    void change(std::int64_t position)
    {
        if (!changes.empty() && changes.back() == position)
            changes.pop_back();
        else
            changes.push_back(position);
        level = !level;
    }

    /// Hands out the runs up to `end`, fewer when one is longer than a width can tell.
    void take(std::int64_t end, SimulationChannelDescriptor::Private &out)
    {
        out.widths.clear();
        std::size_t used = 0;
        while (taken < end) {
            const bool changesFirst = used < changes.size() && changes[used] < end;
            const std::int64_t runEnd = changesFirst ? changes[used] : end;
            if (runEnd > taken) {
                const std::int64_t width = std::min(runEnd - taken, longestRun);
                out.widths.push_back(std::uint32_t(width));
                out.currentLevel = takenLevel;
                taken += width;
                if (taken < runEnd)
                    break;
            }
            if (changesFirst) {
                takenLevel = !takenLevel;
                ++used;
            }
        }
        changes.erase(changes.begin(), changes.begin() + std::ptrdiff_t(used));
        out.data.begin = out.widths.data();
        out.data.end = out.data.begin + out.widths.size();
    }
};

} // namespace detail

using detail::Track;

struct LUX_HIDDEN Simulation::Private {
    /// A decoder that does so much for one element is in a loop without end.
    void countStep()
    {
        if (++steps > detail::mostSimulationSteps) [[unlikely]]
            throw detail::SimulationEnd();
    }
    std::uint32_t steps = 0; ///< since beginElement()
    std::int64_t rate = 1;
    std::int64_t position = 0;
    std::uint64_t fraction = 0; ///< of a sample, in parts of `parts`
    std::uint64_t parts = 1;
    std::int64_t taken = 0; ///< the end of the last block
    std::uint64_t randomState = 0x9E3779B97F4A7C15U;
    std::deque<Track> tracks;
    std::deque<SimulationLine> lines; ///< in step with `tracks`
    std::unique_ptr<SimulationChannelDescriptor[]> descriptors;
};

void SimulationLine::set(bool high)
{
    m_simulation->m_private->countStep();
    Track &track = m_simulation->m_private->tracks[m_index];
    if (track.level != high)
        track.change(m_simulation->m_private->position);
}

bool SimulationLine::level() const
{
    return m_simulation->m_private->tracks[m_index].level;
}

Simulation::Simulation(std::int64_t sampleRate) : m_private(new Private)
{
    m_private->rate = std::max<std::int64_t>(sampleRate, 1);
}

Simulation::~Simulation()
{
    delete m_private;
}

SimulationLine &Simulation::line(const Channel &channel, bool idleLevel)
{
    auto &tracks = m_private->tracks;
    const auto known = std::find_if(tracks.begin(), tracks.end(), [&channel](const Track &track) {
        return track.channel.channelIndex == channel.channelIndex;
    });
    if (known != tracks.end())
        return m_private->lines[std::size_t(known - tracks.begin())];
    Track track;
    track.channel = channel;
    track.initialLevel = track.level = track.takenLevel = idleLevel;
    track.taken = m_private->taken;
    tracks.push_back(track);
    SimulationLine line;
    line.m_simulation = this;
    line.m_index = std::uint32_t(tracks.size() - 1);
    m_private->lines.push_back(line);
    return m_private->lines.back();
}

std::int64_t Simulation::sampleRate() const
{
    return m_private->rate;
}

std::int64_t Simulation::position() const
{
    return m_private->position;
}

void Simulation::hold(std::int64_t samples)
{
    m_private->countStep();
    m_private->position += std::max<std::int64_t>(samples, 0);
}

void Simulation::holdTime(std::int64_t count, std::int64_t perSecond)
{
    m_private->countStep();
    constexpr std::int64_t limit = std::int64_t(1) << 40;
    const auto parts = std::uint64_t(std::clamp<std::int64_t>(perSecond, 1, limit));
    const auto whole = std::uint64_t(std::clamp<std::int64_t>(count, 0, limit));
    const auto rate = std::uint64_t(m_private->rate);
    if (parts != m_private->parts) {
        // The same part of a sample in other units; what is lost is below one of them.
        m_private->fraction =
            std::uint64_t(static_cast<long double>(m_private->fraction) * static_cast<long double>(parts) /
                          static_cast<long double>(m_private->parts));
        m_private->parts = parts;
    }
    // Seconds first, so that the products stay within 64 bits where a rate is below 2^24 times a part.
    m_private->position += std::int64_t(whole / parts * rate);
    std::uint64_t rest = whole % parts;
    const std::uint64_t atOnce = std::numeric_limits<std::uint64_t>::max() / 2 / rate;
    while (rest > 0) {
        const std::uint64_t step = std::min(rest, std::max<std::uint64_t>(atOnce, 1));
        m_private->fraction += step * rate;
        m_private->position += std::int64_t(m_private->fraction / parts);
        m_private->fraction %= parts;
        rest -= step;
    }
}

void Simulation::holdUntil(std::int64_t sample)
{
    m_private->countStep();
    m_private->position = std::max(m_private->position, sample);
}

std::uint32_t Simulation::random(std::uint32_t below)
{
    m_private->countStep();
    // xorshift64*: the same on every system
    std::uint64_t &state = m_private->randomState;
    state ^= state >> 12;
    state ^= state << 25;
    state ^= state >> 27;
    const auto high = std::uint32_t(state * 0x2545F4914F6CDD1DU >> 32);
    return below == 0 ? 0 : std::uint32_t(std::uint64_t(high) * below >> 32);
}

void Simulation::beginElement()
{
    m_private->steps = 0;
}

std::uint32_t Simulation::takeBlock(std::int64_t newestSample, SimulationChannelDescriptor **channels)
{
    if (m_private->descriptors == nullptr)
        m_private->descriptors = std::make_unique<SimulationChannelDescriptor[]>(mostLines);
    std::uint32_t count = 0;
    for (Track &track : m_private->tracks) {
        if (!track.channel.isDefined() || count == mostLines)
            continue;
        SimulationChannelDescriptor::Private &out = *m_private->descriptors[count++].internals();
        out.channel = track.channel;
        out.initialLevel = track.initialLevel;
        track.take(newestSample, out);
    }
    m_private->taken = std::max(m_private->taken, newestSample);
    *channels = m_private->descriptors.get();
    return count;
}

} // namespace lux
