#include "ManchesterSimulation.h"

#include "ManchesterAnalyzer.h"

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t simulatedAutoRate = 20000;
constexpr std::uint32_t violationEvery = 6;
constexpr std::uint32_t remoteEvery = 8;
constexpr std::size_t trailer = 4;              ///< the number of this bit in a frame of a remote control
constexpr std::int64_t samplesOfViolation = 40; ///< a bit needs so many, so that it is no spike

/// Of a frame of a remote control, on a line that rests.
void sendLeader(Simulation &simulation, SimulationLine &line, std::int64_t rate)
{
    line.toggle();
    simulation.holdTime(6, 2 * rate);
    line.toggle();
    simulation.holdTime(2, 2 * rate);
}

} // namespace

ManchesterSimulated ManchesterSimulated::of(std::uint32_t number, bool hasRemotes)
{
    constexpr std::uint32_t preamble = 0xaa;
    ManchesterSimulated made;
    const auto add = [&made](std::uint32_t byte) {
        for (unsigned bit = 8; bit > 0; --bit) {
            made.bits.push_back((byte >> (bit - 1) & 1U) != 0);
        }
    };
    made.isRemote = hasRemotes && number % remoteEvery == remoteEvery - 1;
    if (made.isRemote) {
        made.bits = {true, false, false, false, number / remoteEvery % 2 == 0}; // start, mode 0, toggle
        add(4);
        add(number);
        return made;
    }
    made.hasViolation = number % violationEvery == violationEvery - 1;
    add(preamble);
    for (std::uint32_t i = 0; i <= number % 12; ++i) {
        add(number * 29 + i * 83 + 1);
    }
    return made;
}

/// Runs with pauses between them. All codes begin with a bit whose first edge can be seen.
void ManchesterAnalyzer::simulate(Simulation &simulation)
{
    std::int64_t rate = m_settings.bitrate.value() != 0 ? m_settings.bitrate.value() : simulatedAutoRate;
    while (m_settings.bitrate.value() == 0 && rate > 1 && simulation.sampleRate() < 2 * leastSamplesPerBit * rate) {
        rate /= 2;
    }
    const bool rest = m_settings.polarity == ManchesterPolarity::Low;
    SimulationLine &line = simulation.line(m_settings.data, rest);
    if (simulation.sampleRate() < leastSamplesPerBit * rate) {
        simulation.hold(simulation.sampleRate()); // no bit could be told
        return;
    }
    std::int64_t length = 1; // of half a bit
    const auto half = [&] { simulation.holdTime(length, 2 * rate); };
    const bool isAuto = m_settings.convention == ManchesterSense::Auto;
    const auto bit = [&](bool value) {
        switch (m_settings.decodeAs.value()) {
        case BiphaseCode::Manchester: {
            const bool rises = value == (isAuto ? rest : m_settings.convention == ManchesterSense::Rising);
            line.set(!rises);
            half();
            line.set(rises);
            break;
        }
        case BiphaseCode::Differential:
            line.set(line.level() == value);
            half();
            line.toggle();
            break;
        case BiphaseCode::Mark:
        case BiphaseCode::Space:
            line.toggle();
            half();
            line.set(line.level() != (value == (m_settings.decodeAs == BiphaseCode::Mark)));
            break;
        }
        half();
    };
    line.set(rest);
    simulation.holdTime(8 + simulation.random(20), 2 * rate);
    const bool hasRemotes = isAuto && m_settings.decodeAs == BiphaseCode::Manchester;
    const ManchesterSimulated run = ManchesterSimulated::of(m_sent++, hasRemotes);
    if (run.isRemote) {
        sendLeader(simulation, line, rate);
    }
    for (std::size_t i = 0; i < run.bits.size(); ++i) {
        length = run.isRemote && i == trailer ? 2 : 1;
        bit(run.bits[i]);
    }
    if (run.hasViolation && simulation.sampleRate() >= samplesOfViolation * rate) {
        line.toggle();
        simulation.holdTime(1, 6 * rate); // a third of half a bit
        line.toggle();
        half();
    } else if (m_settings.decodeAs == BiphaseCode::Mark || m_settings.decodeAs == BiphaseCode::Space) {
        line.toggle(); // ends the last bit
        half();
    }
    line.set(rest);
    simulation.holdTime(8, 2 * rate);
}
