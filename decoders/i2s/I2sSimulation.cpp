#include "I2sAnalyzer.h"

#include <algorithm>
#include <cstdint>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 1000000; ///< Hz of the bit clock
constexpr std::int64_t samplesPerClock = 8;
constexpr std::int64_t partsOfClock = 2;
constexpr std::uint64_t usualBits = 16;
constexpr std::uint64_t usualSlots = 4;       ///< of TDM
constexpr std::uint32_t shortEvery = 23;      ///< frames: one lacks its last clock
constexpr std::uint32_t scatter = 2654435761; ///< an odd number, so that words differ in many bits

} // namespace

/// Frame after frame; the words count up in scattered steps, and now and then a frame lacks its last clock.
void I2sAnalyzer::simulate(Simulation &simulation)
{
    const auto bits = std::uint64_t(m_settings.bits.value());
    const std::uint64_t width = std::max({std::uint64_t(m_settings.slotWidth.value()), bits == 0 ? usualBits : bits});
    const std::uint64_t count = m_settings.isStereo()                 ? 2
                                : m_settings.slotCount.value() > 0    ? std::uint64_t(m_settings.slotCount.value())
                                : m_settings.format == I2sFormat::Tdm ? usualSlots
                                                                      : 1;
    sendFrame(simulation, count, width);
}

/// The lines change at the edge at which nothing is taken. In I2S, DSP A and TDM the word select is a clock early.
void I2sAnalyzer::sendFrame(Simulation &simulation, std::uint64_t slotCount, std::uint64_t width)
{
    const std::int64_t rate =
        std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerClock)) * partsOfClock;
    const bool isRise = m_settings.edge == I2sEdge::Rising;
    const bool isStereo = m_settings.isStereo();
    const bool isEarly = m_settings.format != I2sFormat::Left && m_settings.format != I2sFormat::Right &&
                         m_settings.format != I2sFormat::DspB;
    const std::uint64_t bits =
        m_settings.bits.value() > 0 ? std::uint64_t(m_settings.bits.value()) : std::min<std::uint64_t>(width, 64);
    const std::uint64_t before = m_settings.format == I2sFormat::Right ? width - bits : 0; ///< clocks ahead of a word
    SimulationLine &sck = simulation.line(m_settings.sck, !isRise);
    SimulationLine &ws = simulation.line(m_settings.ws, !m_settings.isLeftHigh());
    SimulationLine &sd = simulation.line(m_settings.sd, false);
    const bool isShort = (bits == width || !isStereo) && width > 1 && m_sent % shortEvery == shortEvery - 1;
    const std::uint64_t clocks = slotCount * width - std::uint64_t(isShort);
    if (m_sent == 0) {
        simulation.holdTime(2, rate); // the lines at rest
    }
    for (std::uint64_t i = 0; i < clocks; ++i) {
        const std::uint64_t shown = isEarly ? (i + 1) % clocks : i; ///< the clock whose level the word select has
        ws.set(isStereo ? (shown < width) == m_settings.isLeftHigh() : shown == 0);
        const std::uint32_t word = (m_sent * std::uint32_t(slotCount) + std::uint32_t(i / width)) * scatter;
        const std::uint64_t bit = i % width - before;
        const std::uint64_t place = m_settings.bitOrder == lux::BitOrder::LsbFirst ? bit : bits - 1 - bit;
        sd.set(bit < bits && place < 32 && (word >> place & 1U) != 0);
        sck.set(!isRise);
        simulation.holdTime(1, rate);
        sck.set(isRise);
        simulation.holdTime(1, rate);
    }
    ++m_sent;
}
