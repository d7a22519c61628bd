#include "IrNecSimulation.h"

#include "IrNecAnalyzer.h"

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t carrierRate = 38000;  ///< Hz
constexpr std::int64_t samplesPerPeriod = 6; ///< fewer cannot show a carrier
constexpr std::int64_t perSecond = 1000000;

} // namespace

/// A key in five elements: the frame and repeats. Plain and extended addresses take turns.
IrNecSimulated IrNecSimulated::of(std::uint32_t number)
{
    constexpr std::uint32_t perKey = 5;
    const std::uint32_t key = number / perKey;
    IrNecSimulated made;
    made.isRepeat = number % perKey != 0;
    const std::uint32_t address = key * 37 & 0xffU;
    const std::uint32_t second = key % 3 == 2 ? (address + 1) & 0xffU : ~address & 0xffU;
    const std::uint32_t command = key * 11 & 0xffU;
    const std::uint32_t complement = key % 7 == 6 ? command : ~command & 0xffU;
    made.bits = address | second << 8 | command << 16 | complement << 24;
    if (key % 5 == 4) {
        made.sent = 10;
    }
    return made;
}

void IrNecAnalyzer::simulate(Simulation &simulation)
{
    const bool active = m_settings.polarity == IrPolarity::High;
    const bool hasCarrier =
        m_settings.carrier == IrCarrier::On && simulation.sampleRate() >= samplesPerPeriod * carrierRate;
    SimulationLine &line = simulation.line(m_settings.ir, !active);
    // Times are whole in units of 7.8125 us: a bit's mark has 562.5 us.
    constexpr std::int64_t unitsPerSecond = 128000;
    constexpr std::int64_t unitsPerBit = 72;
    const auto space = [&](std::int64_t bits) {
        line.set(!active);
        simulation.holdTime(bits * unitsPerBit, unitsPerSecond);
    };
    const auto mark = [&](std::int64_t bits) {
        if (!hasCarrier) {
            line.set(active);
            simulation.holdTime(bits * unitsPerBit, unitsPerSecond);
            return;
        }
        const std::int64_t periods = bits * unitsPerBit * carrierRate / unitsPerSecond;
        for (std::int64_t i = 0; i < periods; ++i) {
            line.set(active);
            simulation.holdTime(1, 3 * carrierRate);
            line.set(!active);
            simulation.holdTime(2, 3 * carrierRate);
        }
    };
    const IrNecSimulated next = IrNecSimulated::of(m_sent++);
    line.set(!active);
    simulation.holdTime(40000 + simulation.random(5000), perSecond);
    mark(16);
    space(next.isRepeat ? 4 : 8);
    for (unsigned i = 0; !next.isRepeat && i < next.sent; ++i) {
        mark(1);
        space((next.bits >> i & 1U) != 0 ? 3 : 1);
    }
    mark(1);
    line.set(!active);
}
