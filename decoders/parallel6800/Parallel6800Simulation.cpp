#include "Parallel6800Analyzer.h"

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
void Parallel6800Analyzer::simulate(Simulation &simulation)
{
    const bool selected = m_settings.csPolarity == ActiveLevel::High;
    SimulationLine &select = simulation.line(m_settings.cs, !selected);
    simulation.line(m_settings.e, m_settings.enablePolarity == ActiveLevel::Low);
    simulation.holdTime(2 + simulation.random(16), quartersOf(simulation));
    select.set(selected);
    const std::uint32_t number = m_sent++;
    access(simulation, true, false, number);
    for (std::uint32_t i = 0; i < number % mostWords; ++i) {
        access(simulation, true, true, number * mostWords + i);
    }
    if (m_settings.rw.isDefined()) {
        access(simulation, false, false, ~number);
        access(simulation, false, true, number);
    }
    select.set(!selected);
}

/// The word is there from the begin of the enable to a quarter of an access behind its end.
void Parallel6800Analyzer::access(Simulation &simulation, bool isWrite, bool isData, std::uint32_t word)
{
    const std::int64_t rate = quartersOf(simulation);
    const bool active = m_settings.enablePolarity == ActiveLevel::High;
    SimulationLine &enable = simulation.line(m_settings.e, !active);
    simulation.line(m_settings.rs, true).set(isData);
    simulation.line(m_settings.rw, true).set(!isWrite);
    simulation.holdTime(1, rate);
    enable.set(active);
    lux::driveBus(simulation, m_settings.data, word);
    simulation.holdTime(2, rate);
    enable.set(!active);
    simulation.holdTime(1, rate);
}
