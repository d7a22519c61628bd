#include "Parallel6800Analyzer.h"

#include <cstdint>

using lux::ActiveLevel;
using lux::Simulation;
using lux::SimulationLine;

/// A command with some words of data, then a read of its state and of data. The chip select frames them.
void Parallel6800Analyzer::simulate(Simulation &simulation)
{
    const bool selected = m_settings.csPolarity == ActiveLevel::High;
    SimulationLine &select = simulation.line(m_settings.cs, !selected);
    simulation.line(m_settings.e, m_settings.enablePolarity == ActiveLevel::Low);
    simulation.holdTime(2 + simulation.random(16), lux::strobedQuarters(simulation));
    select.set(selected);
    const std::uint32_t number = m_sent++;
    access(simulation, true, false, number);
    for (std::uint32_t i = 0; i < number % lux::strobedWords; ++i) {
        access(simulation, true, true, number * lux::strobedWords + i);
    }
    if (m_settings.rw.isDefined()) {
        access(simulation, false, false, ~number);
        access(simulation, false, true, number);
    }
    select.set(!selected);
}

void Parallel6800Analyzer::access(Simulation &simulation, bool isWrite, bool isData, std::uint32_t word)
{
    const bool active = m_settings.enablePolarity == ActiveLevel::High;
    SimulationLine &enable = simulation.line(m_settings.e, !active);
    simulation.line(m_settings.rs, true).set(isData);
    simulation.line(m_settings.rw, true).set(!isWrite);
    lux::driveStrobe(simulation, enable, active, m_settings.data, word);
}
