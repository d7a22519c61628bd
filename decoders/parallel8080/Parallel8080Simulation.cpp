#include "Parallel8080Analyzer.h"

#include <cstdint>

using lux::ActiveLevel;
using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::uint32_t clashEvery = 16;

} // namespace

/// A command with some words of data, then a read of its state and of data, now and then with both strobes. The chip
/// select frames them.
void Parallel8080Analyzer::simulate(Simulation &simulation)
{
    const bool selected = m_settings.csPolarity == ActiveLevel::High;
    SimulationLine &select = simulation.line(m_settings.cs, !selected);
    const bool active = m_settings.strobePolarity == ActiveLevel::High;
    simulation.line(m_settings.wr, !active);
    simulation.line(m_settings.rd, !active);
    simulation.holdTime(2 + simulation.random(16), lux::strobedQuarters(simulation));
    select.set(selected);
    const std::uint32_t number = m_sent++;
    if (m_settings.wr.isDefined()) {
        access(simulation, true, false, number);
        for (std::uint32_t i = 0; i < number % lux::strobedWords; ++i) {
            access(simulation, true, true, number * lux::strobedWords + i);
        }
    }
    if (m_settings.rd.isDefined()) {
        access(simulation, false, false, ~number);
        access(simulation, false, true, number);
    }
    if (number % clashEvery == clashEvery - 1 && m_settings.wr.isDefined() && m_settings.rd.isDefined()) {
        SimulationLine &rd = simulation.line(m_settings.rd, !active);
        rd.set(active);
        access(simulation, true, true, number);
        rd.set(!active);
        simulation.holdTime(1, lux::strobedQuarters(simulation));
    }
    select.set(!selected);
}

void Parallel8080Analyzer::access(Simulation &simulation, bool isWrite, bool isData, std::uint32_t word)
{
    const bool active = m_settings.strobePolarity == ActiveLevel::High;
    SimulationLine &strobe = simulation.line(isWrite ? m_settings.wr : m_settings.rd, !active);
    simulation.line(m_settings.rs, true).set(isData);
    lux::driveStrobe(simulation, strobe, active, m_settings.data, word);
}
