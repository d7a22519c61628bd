#include "DmxSimulation.h"

#include "DmxAnalyzer.h"

#include <array>

using lux::Simulation;
using lux::SimulationLine;

DmxSimulated DmxSimulated::of(std::uint32_t number)
{
    static constexpr std::array<std::uint8_t, 4> otherCodes = {0x17, 0x55, 0xcc, 0xcf};
    static constexpr std::array<std::uint32_t, 5> sizes = {24, 48, 96, 120, 512};
    DmxSimulated made;
    made.slotCount = sizes[number % sizes.size()];
    if (number % 15 == 9) {
        made.slotCount += 2; // more than there may be
    }
    if (number % 6 == 5) {
        made.startCode = otherCodes[number / 6 % otherCodes.size()];
    }
    if (number % 7 == 6) {
        made.wrongSlot = 1 + number % made.slotCount;
    }
    made.shortMark = number % 11 == 10;
    return made;
}

/// A light that goes up and down along the slots. Zero is left out where a slot has no stop bits: that would be a
/// break.
std::uint8_t DmxSimulated::valueOf(std::uint32_t number, std::uint32_t slot)
{
    const std::uint32_t step = (number * 5 + slot * 3) & 0x1ffU;
    const std::uint32_t value = step < 0x100U ? step : 0x1ffU - step;
    return std::uint8_t(slot == of(number).wrongSlot ? value | 1U : value);
}

/// One packet, with breaks and marks from the shortest that a sender may make on (ANSI E1.11, table 6).
void DmxAnalyzer::simulate(Simulation &simulation)
{
    constexpr std::int64_t quarters = 4;
    const std::int64_t rate =
        m_settings.baudrate.value() != 0 ? m_settings.baudrate.value() : DmxSettings::standardRate;
    const bool idle = !m_settings.invert;
    SimulationLine &line = simulation.line(m_settings.rx, idle);
    if (simulation.sampleRate() < leastSamplesPerBit * rate) {
        simulation.hold(simulation.sampleRate()); // no bit could be told
        return;
    }
    const auto send = [&](bool mark, std::int64_t quarterBits) {
        line.set(mark == idle);
        simulation.holdTime(quarterBits, rate * quarters);
    };
    const auto sendSlot = [&](unsigned value, bool isRight) {
        send(false, quarters);
        for (unsigned i = 0; i < 8; ++i) {
            send((value >> i & 1U) != 0, quarters);
        }
        send(isRight, quarters);
        send(true, quarters);
    };
    const std::uint32_t number = m_sent++;
    const DmxSimulated packet = DmxSimulated::of(number);
    send(true, quarters * (10 + simulation.random(200)));
    send(false, quarters * (23 + simulation.random(20)));
    send(true, packet.shortMark ? quarters : quarters * (3 + simulation.random(10)));
    sendSlot(packet.startCode, true);
    for (std::uint32_t slot = 1; slot <= packet.slotCount; ++slot) {
        if (simulation.random(4) == 0) {
            send(true, quarters * simulation.random(12));
        }
        sendSlot(DmxSimulated::valueOf(number, slot), slot != packet.wrongSlot);
    }
}
