#include "UnioAnalyzer.h"
#include "UnioTimes.h"

#include <algorithm>
#include <initializer_list>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 50000; ///< bits/s; 10 to 100 kbit/s
constexpr std::int64_t leastRate = 10000;
constexpr std::int64_t samplesPerBit = 8;
constexpr std::int64_t microseconds = 1000000; ///< a second

/// The controller and a device of a simulated bus.
class Bus {
public:
    Bus(Simulation &simulation, const Channel &line)
        : m_simulation(simulation),
          m_line(simulation.line(line, true)),
          m_rate(std::clamp(simulation.sampleRate() / samplesPerBit, leastRate, usualRate))
    {}

    void bit(bool value)
    {
        m_line.set(!value);
        m_simulation.holdTime(1, 2 * m_rate);
        m_line.set(value);
        m_simulation.holdTime(1, 2 * m_rate);
    }
    /// The line stays for as long as a bit.
    void noBit() { m_simulation.holdTime(1, m_rate); }
    void header()
    {
        m_line.set(true);
        wait(20);
        m_line.set(false);
        wait(40);
        bits(unio::header, 8);
        bit(true);
        noBit();
    }
    void byte(std::uint32_t value, bool isLast = false, bool isAnswered = true)
    {
        bits(value, 8);
        bit(!isLast);
        if (isAnswered) {
            bit(true);
        } else {
            noBit();
        }
    }
    /// @param last  the last one ends the message
    void bytes(std::initializer_list<std::uint32_t> values, bool last = true)
    {
        std::size_t left = values.size();
        for (const std::uint32_t value : values) {
            byte(value, --left == 0 && last);
        }
    }
    void bits(std::uint32_t value, unsigned count)
    {
        for (unsigned i = count; i > 0; --i) {
            bit((value >> (i - 1) & 1U) != 0);
        }
    }
    void standby(std::int64_t time)
    {
        m_line.set(true);
        wait(time);
    }

private:
    void wait(std::int64_t time) { m_simulation.holdTime(time, microseconds); }

    Simulation &m_simulation;
    SimulationLine &m_line;
    std::int64_t m_rate;
};

} // namespace

/// Commands of a memory and errors in turn, with data that counts up.
void UnioAnalyzer::simulate(Simulation &simulation)
{
    enum Form : std::uint32_t { Enable, Write, Read, ReadStatus, NobodyThere, CutByte };
    constexpr std::uint32_t device = 0xa0;
    if (simulation.sampleRate() < unio::leastSampleRate) {
        simulation.hold(simulation.sampleRate()); // no bit could be told
        return;
    }
    Bus bus(simulation, m_settings.line);
    const std::uint32_t number = m_sent & 0xffU;
    bus.standby(620 + simulation.random(2000));
    bus.header();
    switch (m_sent % (CutByte + 1)) {
    case Enable:
        bus.bytes({device, 0x96});
        bus.header();
        bus.bytes({device, 0x91});
        break;
    case Write:
        bus.bytes({device, 0x6c, 0x00, 0x10, number});
        break;
    case Read:
        bus.bytes({device, 0x03, 0x00, 0x10, number, number ^ 0xffU});
        break;
    case ReadStatus:
        bus.bytes({device, 0x05, number & 0x0fU});
        break;
    case NobodyThere:
        bus.byte(device, true, false);
        break;
    default:
        bus.bytes({device, 0x06}, false);
        bus.bits(number, 5);
        break;
    }
    ++m_sent;
}
