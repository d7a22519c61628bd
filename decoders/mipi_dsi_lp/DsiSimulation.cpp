#include "DsiAnalyzer.h"

#include <algorithm>
#include <array>
#include <tuple>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 10000000; ///< states/s: T_LPX is at least 50 ns (D-PHY 1.1, table 14)
constexpr std::int64_t samplesPerState = 4;
constexpr std::uint32_t rounds = 10;

/// A lane in low-power mode.
class Lane {
public:
    Lane(Simulation &simulation, const DsiSettings::Lane &lines)
        : m_simulation(simulation),
          m_p(simulation.line(lines.p, true)),
          m_n(simulation.line(lines.n, true)),
          m_rate(std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerState)))
    {}

    void state(bool p, bool n, std::int64_t count = 1)
    {
        m_p.set(p);
        m_n.set(n);
        m_simulation.holdTime(count, m_rate);
    }
    void stop(std::int64_t count) { state(true, true, count); }
    void bit(bool one)
    {
        state(one, !one);
        state(false, false);
    }
    void enter(std::uint8_t code)
    {
        state(true, false);
        state(false, false);
        state(false, true);
        state(false, false);
        for (unsigned i = 8; i > 0; --i) {
            bit((code >> (i - 1) & 1U) != 0);
        }
    }
    void byte(std::uint32_t value)
    {
        for (unsigned i = 0; i < 8; ++i) {
            bit((value >> i & 1U) != 0);
        }
    }
    void leave()
    {
        state(true, false);
        stop(4);
    }
    void turnaround()
    {
        state(true, false);
        state(false, false);
        state(true, false);
        state(false, false, 4); // the other side drives the lane
        state(true, false);
        stop(4);
    }
    void burst()
    {
        state(false, true);
        state(false, false, 40);
        stop(4);
    }
    /// @param damage  changes the check @param flipped  changes the head, of which the check knows nothing
    void packet(std::uint32_t head, std::uint8_t damage = 0, std::uint32_t flipped = 0)
    {
        for (unsigned shift = 0; shift < dsi::checkedBits; shift += 8) {
            byte((head ^ flipped) >> shift);
        }
        byte(std::uint32_t(dsi::eccOf(head) ^ damage));
    }
    void payload(std::span<const std::uint8_t> bytes, std::uint32_t damage)
    {
        for (const std::uint8_t one : bytes) {
            byte(one);
        }
        const std::uint32_t sum = lux::Crc<dsi::checksum>::of(bytes) ^ damage;
        byte(sum);
        byte(sum >> 8);
    }

private:
    Simulation &m_simulation;
    SimulationLine &m_p;
    SimulationLine &m_n;
    std::int64_t m_rate;
};

constexpr std::uint32_t shortWrite = 0x15;
constexpr std::uint32_t longWrite = 0x39;

using Payload = std::array<std::uint8_t, 5>;
constexpr std::uint32_t longHead = longWrite | std::uint32_t(std::tuple_size_v<Payload>) << 8;

Payload payloadOf(std::uint32_t number)
{
    return {0x2a, std::uint8_t(number), std::uint8_t(number >> 8), 0xff, 0x00};
}

/// Each error in turn.
void sendWrong(Lane &lane, std::uint32_t number)
{
    const std::uint32_t shortHead = shortWrite | (number & 0xffffU) << 8;
    switch (number % rounds) {
    case 6: // two wrong bits
        lane.enter(dsi::lowPowerData);
        lane.packet(shortHead, 0x03);
        break;
    case 7: // one, which can be corrected
        lane.enter(dsi::lowPowerData);
        lane.packet(shortHead, 0, 0x800000);
        break;
    case 8:
        lane.enter(dsi::lowPowerData);
        lane.packet(longHead);
        lane.payload(payloadOf(number), 1);
        break;
    default: // a burst, and a packet that ends early
        lane.burst();
        lane.enter(dsi::lowPowerData);
        lane.packet(longHead);
        lane.byte(number);
        break;
    }
    lane.leave();
}

} // namespace

/// Packets with parameters that count up, triggers, states and turnarounds, and now and then each error.
void DsiAnalyzer::simulate(Simulation &simulation)
{
    const std::uint32_t number = m_sent++;
    const Payload bytes = payloadOf(number);
    const auto lines = m_settings.lines();
    Lane lane(simulation, lines[0]);
    for (std::size_t i = 1; i < std::size_t(m_settings.lanes.value()); ++i) {
        Lane(simulation, lines[i]).stop(0);
    }
    lane.stop(8 + simulation.random(64));
    switch (number % rounds) {
    case 0:
        lane.enter(dsi::lowPowerData);
        lane.packet(shortWrite | 0x36U << 8 | (number & 0xffU) << 16);
        lane.leave();
        break;
    case 1: // two packets in one transmission
        lane.enter(dsi::lowPowerData);
        lane.packet(longHead);
        lane.payload(bytes, 0);
        lane.packet(0x08 | 0x0f0fU << 8);
        lane.leave();
        break;
    case 2:
        lane.enter(number % (2 * rounds) == 2 ? dsi::resetTrigger : dsi::tearingTrigger);
        lane.leave();
        break;
    case 3:
        lane.enter(dsi::ultraLowPower);
        lane.state(false, false, 200);
        lane.leave();
        break;
    case 4: // there and back
        lane.turnaround();
        lane.enter(dsi::acknowledgeTrigger);
        lane.leave();
        lane.turnaround();
        break;
    case 5: // the other lanes
        for (std::size_t i = 1; i < std::size_t(m_settings.lanes.value()); ++i) {
            Lane other(simulation, lines[i]);
            other.enter(dsi::ultraLowPower);
            other.state(false, false, 100);
            other.leave();
            other.burst();
        }
        lane.enter(number % (2 * rounds) == 5 ? dsi::ultraLowPower : dsi::acknowledgeTrigger);
        lane.leave();
        break;
    default:
        sendWrong(lane, number);
        break;
    }
}
