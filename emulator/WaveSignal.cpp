#include "WaveSignal.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace emulator {

namespace {

constexpr int analogPeriod = 256;

// Noise is made in stretches that are known by their number, so that a far position costs no walk from the start.
constexpr std::int64_t stretch = std::int64_t(1) << 28;
constexpr std::int64_t longestInStretches = stretch / 4; // noise with longer runs than that is walked

std::int64_t endOf(std::int64_t start, std::int64_t width)
{
    return width >= never - start ? never : start + std::max<std::int64_t>(width, 1);
}

/// xorshift32 (G. Marsaglia, "Xorshift RNGs", 2003)
std::uint32_t nextRandom(std::uint32_t &state)
{
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

/// The seed of stretch `number` of noise: never 0, and that of the noise for the first.
std::uint32_t seedOfStretch(std::uint32_t seed, std::int64_t number)
{
    std::uint32_t state = seed ^ (std::uint32_t(number) * 0x9E3779B9U);
    return state == 0 ? 1 : state;
}

} // namespace

WaveSignal::Wave WaveSignal::Wave::constant(bool level)
{
    Wave wave;
    wave.startLevel = level;
    return wave;
}

WaveSignal::Wave WaveSignal::Wave::square(std::int64_t half, bool startLevel, std::int64_t delay)
{
    Wave wave;
    wave.kind = Kind::Square;
    wave.widths = {half};
    wave.startLevel = startLevel;
    wave.delay = delay;
    return wave;
}

WaveSignal::Wave WaveSignal::Wave::pattern(std::vector<std::int64_t> widths, bool startLevel)
{
    Wave wave;
    wave.kind = widths.empty() ? Kind::Constant : Kind::Pattern;
    wave.widths = std::move(widths);
    wave.startLevel = startLevel;
    return wave;
}

WaveSignal::Wave WaveSignal::Wave::noise(std::uint32_t seed, std::int64_t shortest, std::int64_t longest)
{
    Wave wave;
    wave.kind = Kind::Noise;
    wave.seed = seed == 0 ? 1 : seed;
    wave.shortest = std::max<std::int64_t>(shortest, 1);
    wave.longest = std::max(longest, wave.shortest);
    return wave;
}

WaveSignal::Wave WaveSignal::Wave::pulse(std::int64_t position, std::int64_t width, bool level)
{
    Wave wave = pattern({position, width, never}, !level);
    return wave;
}

WaveSignal::WaveSignal(std::int64_t rate, const std::vector<Wave> &waves) : m_rate(rate)
{
    for (const Wave &wave : waves) {
        if (m_tracks.size() < maxChannels) {
            Track track;
            track.wave = wave;
            rewind(track);
            m_present |= 1U << m_tracks.size();
            m_tracks.push_back(std::move(track));
        }
    }
}

std::vector<WaveSignal::Wave> WaveSignal::counter(int channels, std::int64_t half)
{
    std::vector<Wave> waves;
    waves.reserve(std::size_t(channels));
    for (int i = 0; i < channels; ++i) {
        waves.push_back(Wave::square(half << i));
    }
    return waves;
}

void WaveSignal::rewind(Track &track)
{
    track.level = track.wave.startLevel;
    track.begin = 0;
    track.index = 0;
    track.random = track.wave.seed;
    track.end = track.wave.kind == Kind::Constant ? never : endOf(track.wave.delay, nextWidth(track));
    const bool inStretches = track.wave.kind == Kind::Noise && track.wave.longest <= longestInStretches;
    track.stretchEnd = inStretches ? stretch : never;
}

/// To the first run of the stretch that holds `position`. It is at the start level, and joined to the run before if
/// that has the same.
void WaveSignal::enterStretch(Track &track, std::int64_t position)
{
    const std::int64_t number = position / stretch;
    track.level = track.wave.startLevel;
    track.begin = number * stretch;
    track.random = seedOfStretch(track.wave.seed, number);
    track.end = endOf(track.begin, nextWidth(track));
    track.stretchEnd = number < never / stretch ? track.begin + stretch : never;
}

/// To the next run.
void WaveSignal::step(Track &track)
{
    if (track.end == track.stretchEnd) {
        enterStretch(track, track.end);
        return;
    }
    track.level = !track.level;
    track.begin = track.end;
    track.end = endOf(track.begin, nextWidth(track));
    // No run may come to be shorter than the shortest.
    if (track.end > track.stretchEnd - track.wave.shortest && track.stretchEnd != never) {
        track.end = track.stretchEnd;
    }
}

std::int64_t WaveSignal::nextWidth(Track &track)
{
    const Wave &wave = track.wave;
    if (wave.kind == Kind::Noise) {
        const auto choices = std::uint64_t(wave.longest - wave.shortest) + 1;
        return wave.shortest + std::int64_t(nextRandom(track.random) % choices);
    }
    const std::int64_t width = wave.widths[track.index];
    if (++track.index == wave.widths.size()) {
        track.index = 0;
    }
    return width;
}

void WaveSignal::advance(Track &track, std::int64_t position)
{
    if (position >= track.stretchEnd) {
        enterStretch(track, position);
    } else {
        step(track); // what reading forward takes
    }
    if (track.end <= position && track.wave.kind == Kind::Square) {
        // Jumps over the whole periods.
        const std::int64_t half = std::max<std::int64_t>(track.wave.widths[0], 1);
        const std::int64_t halves = (position - track.end) / half + 1;
        track.level = track.level != ((halves & 1) != 0);
        track.begin = track.end + (halves - 1) * half;
        track.end = endOf(track.begin, half);
    }
    while (track.end <= position) {
        step(track);
    }
}

SignalRun WaveSignal::at(std::int64_t position, std::uint32_t mask)
{
    SignalRun run;
    for (std::uint32_t left = mask & m_present; left != 0; left &= left - 1) {
        const auto i = std::size_t(std::countr_zero(left));
        if (position < m_begins[i] || position >= m_ends[i]) {
            Track &track = m_tracks[i];
            if (position < track.begin) {
                rewind(track);
            }
            if (track.end <= position) {
                advance(track, position);
            }
            m_begins[i] = track.begin;
            m_ends[i] = track.end;
            m_levels = track.level ? m_levels | 1U << i : m_levels & ~(1U << i);
        }
        run.end = std::min(run.end, m_ends[i]);
    }
    run.levels = m_levels & mask;
    return run;
}

std::int8_t WaveSignal::analogAt(int channel, const SampleMoment &moment)
{
    const auto phase = int(moment.position % analogPeriod);
    if (channel != 0) {
        return std::int8_t(phase - analogPeriod / 2);
    }
    constexpr double amplitude = 100;
    return std::int8_t(std::lround(amplitude * std::sin(2 * std::numbers::pi * phase / analogPeriod)));
}

} // namespace emulator
