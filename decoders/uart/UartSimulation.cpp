#include "UartAnalyzer.h"

#include <algorithm>

using lux::BitGrid;
using lux::Parity;
using lux::Simulation;
using lux::SimulationLine;

namespace {

// What is sent counts up, and of every so many characters one is special.
constexpr std::uint32_t parityErrorEvery = 17;
constexpr std::uint32_t framingErrorEvery = 61;
constexpr std::uint32_t breakEvery = 251;
constexpr std::uint32_t pauseEvery = 16;
constexpr std::uint32_t addressEvery = 16;

constexpr std::int64_t simulatedAutoRate = 115200;
constexpr std::int64_t samplesPerBit = 16; ///< at least, where the rate is ours to choose

bool isOneOf(std::uint32_t number, std::uint32_t every)
{
    return number % every == every - 1;
}

} // namespace

std::int64_t UartAnalyzer::simulatedRate(std::int64_t sampleRate) const
{
    if (m_settings.baudrate.value() != 0) {
        return m_settings.baudrate.value();
    }
    std::int64_t rate = simulatedAutoRate;
    while (rate > 1 && rate * samplesPerBit > sampleRate) {
        rate /= 2; // the usual rates below are about halves
    }
    return rate;
}

std::uint32_t UartAnalyzer::nextToSend() const
{
    const std::uint32_t dataBits = unsigned(m_settings.dataBits.value());
    if (m_settings.addressBit) {
        return (m_sent & 0xffU) | (m_sent % addressEvery == 0 ? 0x100U : 0U);
    }
    return m_sent & ((1U << dataBits) - 1U);
}

/// Characters that count up, now and then with an error or after a pause; RX and TX take turns.
void UartAnalyzer::simulate(Simulation &simulation)
{
    const std::int64_t rate = simulatedRate(simulation.sampleRate());
    SimulationLine &rx = simulation.line(m_settings.rx, m_settings.format(m_settings.invertRx).idleHigh);
    SimulationLine &tx = simulation.line(m_settings.tx, m_settings.format(m_settings.invertTx).idleHigh);
    if (simulation.sampleRate() < leastSamplesPerBit * rate) {
        simulation.hold(simulation.sampleRate()); // no character could be told
        return;
    }
    const bool both = m_settings.rx.isDefined() && m_settings.tx.isDefined();
    const bool isOnRx = both ? m_sent / pauseEvery % 2 == 0 : m_settings.rx.isDefined();
    SimulationLine &line = isOnRx ? rx : tx;
    const lux::AsyncFormat format = m_settings.format(isOnRx ? m_settings.invertRx : m_settings.invertTx);
    const auto send = [&](bool bit, std::int64_t quarters) {
        line.set(bit == format.idleHigh);
        simulation.holdTime(quarters, rate * BitGrid::quarters);
    };
    const std::uint32_t data = nextToSend();
    const bool isBreak = isOneOf(m_sent, breakEvery);
    const bool parity = parityBit(data, format.parity) != isOneOf(m_sent, parityErrorEvery);
    const bool stop = !isOneOf(m_sent, framingErrorEvery) || data == 0; // that would be a break

    if (m_sent % pauseEvery == 0) {
        send(true, BitGrid::quarters * (20 + std::int64_t(simulation.random(40))));
    }
    send(false, BitGrid::quarters);
    for (unsigned i = 0; i < format.dataBits; ++i) {
        const unsigned bit = format.order == lux::BitOrder::LsbFirst ? i : format.dataBits - 1 - i;
        send(!isBreak && (data >> bit & 1U) != 0, BitGrid::quarters);
    }
    if (format.parity != Parity::None) {
        send(!isBreak && parity, BitGrid::quarters);
    }
    if (isBreak || !stop) {
        send(false, BitGrid::quarters * (isBreak ? 12 : 1));
        send(true, BitGrid::quarters);
    }
    send(true, format.stopQuarters + simulation.random(3) * BitGrid::quarters);
    ++m_sent;
}
