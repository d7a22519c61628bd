#include "ParallelAnalyzer.h"

#include <algorithm>
#include <cstdint>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 1000000; ///< words/s
constexpr std::int64_t samplesPerWord = 8;
constexpr std::int64_t partsOfWord = 4;
constexpr std::uint32_t wordsOfBurst = 16;
constexpr std::uint32_t idleWords = 2;        ///< behind a burst, while the enable is inactive
constexpr std::uint32_t scatter = 2654435761; ///< an odd number, so that words differ in many bits

} // namespace

/// Bursts of words that count up in scattered steps; between two of them the enable is inactive and other words follow,
/// which are none. The lines change a quarter of a word ahead of the clock's edge.
void ParallelAnalyzer::simulate(Simulation &simulation)
{
    const std::int64_t rate =
        std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerWord)) * partsOfWord;
    const bool idleClock = m_settings.clockEdge == ClockEdge::Falling;
    const bool isDouble = m_settings.clockEdge == ClockEdge::Either;
    const bool active = isEnabledLevel(true);
    SimulationLine &clk = simulation.line(m_settings.clk, idleClock);
    SimulationLine &enable = simulation.line(m_settings.enable, !active);
    simulation.holdTime(partsOfWord + simulation.random(4), rate);
    const std::uint32_t words = wordsOfBurst + (m_settings.enable.isDefined() ? idleWords : 0);
    for (std::uint32_t i = 0; i < words; ++i) {
        enable.set(i < wordsOfBurst ? active : !active);
        const std::uint32_t word = i < wordsOfBurst ? m_sent++ * scatter : ~m_sent;
        lux::driveBus(simulation, m_settings.data, word);
        std::uint32_t bit = 0;
        for (const Channel &line : m_settings.address()) {
            simulation.line(line, false).set((m_sent >> (bit++ % 32) & 1U) != 0);
        }
        simulation.holdTime(1, rate);
        clk.toggle();
        simulation.holdTime(2, rate);
        if (!isDouble) {
            clk.toggle();
        }
        simulation.holdTime(1, rate);
    }
    enable.set(!active);
}
