#include "SpiAnalyzer.h"

#include <algorithm>
#include <cstdint>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 1000000; ///< bits/s
constexpr std::int64_t samplesPerBit = 8;
constexpr std::int64_t partsOfBit = 2;
constexpr std::uint32_t wordsOfTransfer = 4;
constexpr std::uint32_t cutEvery = 13; ///< transfers

std::int64_t simulatedRate(std::int64_t sampleRate)
{
    return std::max<std::int64_t>(1, std::min(usualRate, sampleRate / samplesPerBit));
}

} // namespace

/// Transfers of four words: MOSI counts up, MISO answers with the inverse. Now and then the last word is cut.
void SpiAnalyzer::simulate(Simulation &simulation)
{
    const bool isActiveHigh = m_settings.csPolarity == SpiSelect::High;
    const std::int64_t rate = simulatedRate(simulation.sampleRate());
    SimulationLine &select = simulation.line(m_settings.select(), !isActiveHigh);
    simulation.line(m_settings.clk, m_settings.cpol.value() != 0);
    simulation.line(m_settings.mosi, false);
    simulation.line(m_settings.miso, false);

    simulation.holdTime(4 + simulation.random(16), rate);
    const bool isRestartable = m_settings.select().isDefined();
    select.set(isActiveHigh);
    simulation.holdTime(1, rate);
    const auto bits = unsigned(m_settings.word.value());
    for (std::uint32_t i = 0; i < wordsOfTransfer; ++i) {
        sendWord(simulation, bits);
        ++m_sent;
    }
    if (isRestartable && m_sent / wordsOfTransfer % cutEvery == 0) {
        sendWord(simulation, bits - 1);
    }
    simulation.holdTime(1, rate);
    select.set(!isActiveHigh);
}

/// The first bits of the word whose number is next. With CPHA 0 a bit is there half a clock before the leading edge.
void SpiAnalyzer::sendWord(Simulation &simulation, unsigned bits)
{
    const bool idleLevel = m_settings.cpol.value() != 0;
    const bool trailing = m_settings.cpha.value() != 0;
    const auto width = unsigned(m_settings.word.value());
    const std::int64_t perSecond = simulatedRate(simulation.sampleRate()) * partsOfBit;
    SimulationLine &clk = simulation.line(m_settings.clk, idleLevel);
    SimulationLine &mosi = simulation.line(m_settings.mosi, false);
    SimulationLine &miso = simulation.line(m_settings.miso, false);
    for (unsigned i = 0; i < bits; ++i) {
        const unsigned bit = m_settings.bitOrder == lux::BitOrder::LsbFirst ? i : width - 1 - i;
        const bool isOne = (std::uint64_t(m_sent) >> bit & 1U) != 0;
        if (trailing) {
            clk.set(!idleLevel);
        }
        mosi.set(isOne);
        miso.set(!isOne);
        simulation.holdTime(1, perSecond);
        clk.set(trailing ? idleLevel : !idleLevel);
        simulation.holdTime(1, perSecond);
        if (!trailing) {
            clk.set(idleLevel);
        }
    }
    simulation.holdTime(1, perSecond);
}
