#include "Parallel8080Analyzer.h"

#include <algorithm>
#include <cstdint>

using lux::ActiveLevel;
using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 2000000; ///< accesses/s
constexpr std::int64_t samplesPerAccess = 8;
constexpr std::int64_t partsOfAccess = 4;
constexpr std::uint32_t mostWords = 8;

/// Quarters of an access in a second.
std::int64_t quartersOf(const Simulation &simulation)
{
    return std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerAccess)) * partsOfAccess;
}

} // namespace

/// A command with some words of data, then a read of its state and of data. The chip select frames them.
void Parallel8080Analyzer::simulate(Simulation &simulation)
{
    const bool selected = m_settings.csPolarity == ActiveLevel::High;
    SimulationLine &select = simulation.line(m_settings.cs, !selected);
    const bool active = m_settings.strobePolarity == ActiveLevel::High;
    simulation.line(m_settings.wr, !active);
    simulation.line(m_settings.rd, !active);
    simulation.holdTime(2 + simulation.random(16), quartersOf(simulation));
    select.set(selected);
    const std::uint32_t number = m_sent++;
    if (m_settings.wr.isDefined()) {
        access(simulation, true, false, number);
        for (std::uint32_t i = 0; i < number % mostWords; ++i) {
            access(simulation, true, true, number * mostWords + i);
        }
    }
    if (m_settings.rd.isDefined()) {
        access(simulation, false, false, ~number);
        access(simulation, false, true, number);
    }
    select.set(!selected);
}

/// The word is there from the strobe's begin to a quarter of an access behind its end.
void Parallel8080Analyzer::access(Simulation &simulation, bool isWrite, bool isData, std::uint32_t word)
{
    const std::int64_t rate = quartersOf(simulation);
    const bool active = m_settings.strobePolarity == ActiveLevel::High;
    SimulationLine &strobe = simulation.line(isWrite ? m_settings.wr : m_settings.rd, !active);
    simulation.line(m_settings.rs, true).set(isData);
    simulation.holdTime(1, rate);
    strobe.set(active);
    lux::driveBus(simulation, m_settings.data, word);
    simulation.holdTime(2, rate);
    strobe.set(!active);
    simulation.holdTime(1, rate);
}
