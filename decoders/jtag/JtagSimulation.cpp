#include "JtagAnalyzer.h"

#include <algorithm>
#include <cstdint>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 1000000; ///< Hz of TCK
constexpr std::int64_t samplesPerClock = 8;
constexpr std::int64_t partsOfClock = 2;
constexpr unsigned bitsOfIr = 5;
constexpr unsigned bitsOfDr = 32;
constexpr unsigned bitsOfChain = 100; ///< more than a word
constexpr std::uint32_t resetEvery = 16;
constexpr std::uint32_t longEvery = 7;
constexpr std::uint32_t cutEvery = 11;
constexpr unsigned bitsOfCut = 3;

} // namespace

/// A reset now and then, an instruction, then data, with a pause in the middle of each. Where there is TRST it cuts a
/// shift now and then.
void JtagAnalyzer::simulate(Simulation &simulation)
{
    simulation.line(m_settings.tck, false);
    simulation.line(m_settings.trst, true);
    const std::uint32_t number = m_sent++;
    if (number % resetEvery == 0) {
        lead(simulation, {1, 1, 1, 1, 1, 0});
    }
    if (m_settings.trst.isDefined() && number % cutEvery == cutEvery - 1) {
        cut(simulation, number);
    }
    scan(simulation, true, bitsOfIr, number);
    scan(simulation, false, number % longEvery == 0 ? bitsOfChain : bitsOfDr, number);
    for (std::uint32_t i = simulation.random(8); i > 0; --i) {
        lead(simulation, {0});
    }
}

/// From Run-Test/Idle and back; TDO is the inverse of TDI.
void JtagAnalyzer::scan(Simulation &simulation, bool isIr, unsigned bits, std::uint32_t value)
{
    lead(simulation, {1});
    if (isIr) {
        lead(simulation, {1});
    }
    lead(simulation, {0, 0});
    for (unsigned i = 0; i < bits; ++i) {
        const bool isOne = i < bitsOfDr && (value >> i & 1U) != 0;
        const bool isMiddle = i == bits / 2;
        clock(simulation, isMiddle || i + 1 == bits, isOne, !isOne);
        if (isMiddle) {
            lead(simulation, {0, 0, 1, 0});
        }
    }
    lead(simulation, {1, 0});
}

/// From Run-Test/Idle into a shift, which TRST ends, and back.
void JtagAnalyzer::cut(Simulation &simulation, std::uint32_t value)
{
    lead(simulation, {1, 0, 0});
    for (unsigned i = 0; i < bitsOfCut; ++i) {
        const bool isOne = (value >> i & 1U) != 0;
        clock(simulation, false, isOne, !isOne);
    }
    SimulationLine &trst = simulation.line(m_settings.trst, true);
    trst.set(false);
    lead(simulation, {1});
    trst.set(true);
    lead(simulation, {0});
}

void JtagAnalyzer::lead(Simulation &simulation, std::initializer_list<int> tms)
{
    for (const int level : tms) {
        clock(simulation, level != 0, false, true);
    }
}

/// The lines change at the falling edge of TCK.
void JtagAnalyzer::clock(Simulation &simulation, bool tms, bool tdi, bool tdo)
{
    const std::int64_t rate =
        std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerClock)) * partsOfClock;
    simulation.line(m_settings.tck, false).set(false);
    simulation.line(m_settings.tms, true).set(tms);
    simulation.line(m_settings.tdi, false).set(tdi);
    simulation.line(m_settings.tdo, true).set(tdo);
    simulation.holdTime(1, rate);
    simulation.line(m_settings.tck, false).set(true);
    simulation.holdTime(1, rate);
}
