#include "MdioAnalyzer.h"

#include <algorithm>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 1000000; ///< bits/s; up to 2.5 MHz by IEEE 802.3-2018, 22.2.2.13
constexpr std::int64_t samplesPerBit = 8;
constexpr std::int64_t partsOfBit = 4;
constexpr unsigned preambleBits = 32;

/// The station and the PHYs of a simulated interface.
class Station {
public:
    Station(Simulation &simulation, const Channel &clock, const Channel &data)
        : m_simulation(simulation),
          m_clock(simulation.line(clock, false)),
          m_data(simulation.line(data, true)),
          m_rate(std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerBit)))
    {}

    /// The highest bit first.
    void bits(std::uint32_t value, unsigned count)
    {
        for (unsigned i = count; i > 0; --i) {
            m_data.set((value >> (i - 1) & 1U) != 0);
            wait(1);
            m_clock.set(true);
            wait(2);
            m_clock.set(false);
            wait(1);
        }
    }
    void frame(std::uint32_t head, std::uint32_t turnaround, std::uint32_t data, unsigned preamble = preambleBits)
    {
        bits(~0U, preamble);
        bits(head, 14);
        bits(turnaround, 2);
        bits(data, 16);
        m_data.set(true);
    }
    /// Lets quarters of a bit pass.
    void wait(std::int64_t parts) { m_simulation.holdTime(parts, m_rate * partsOfBit); }

private:
    Simulation &m_simulation;
    SimulationLine &m_clock;
    SimulationLine &m_data;
    std::int64_t m_rate;
};

/// Start, operation, port, and register or device.
std::uint32_t headOf(std::uint32_t start, std::uint32_t operation, std::uint32_t port, std::uint32_t place)
{
    return start << 12 | operation << 10 | port << 5 | place;
}

} // namespace

/// Frames of both clauses and errors in turn, with data that counts up.
void MdioAnalyzer::simulate(Simulation &simulation)
{
    enum Form : std::uint32_t {
        Write,
        Read,
        Address,
        Read45,
        PostRead,
        Write45,
        NoAnswer,
        NoPreamble,
        NoOperation,
        WrongTurnaround
    };
    constexpr std::uint32_t good = 2;
    constexpr std::uint32_t port = 5;
    Station station(simulation, m_settings.clock, m_settings.data);
    const std::uint32_t number = m_sent & 0xffffU;
    const std::uint32_t place = m_sent & 0x1fU;
    station.wait(16 + simulation.random(200));
    switch (m_sent % (WrongTurnaround + 1)) {
    case Write:
        station.frame(headOf(1, 1, port, place), good, number);
        break;
    case Read:
        station.frame(headOf(1, 2, port, place), good, number);
        break;
    case Address:
        station.frame(headOf(0, 0, port, 3), good, number);
        break;
    case Read45:
        station.frame(headOf(0, 3, port, 3), good, number);
        break;
    case PostRead:
        station.frame(headOf(0, 2, port, 3), good, number);
        break;
    case Write45:
        station.frame(headOf(0, 1, port, 3), good, number);
        break;
    case NoAnswer:
        station.frame(headOf(1, 2, port + 1, place), 3, 0xffff);
        break;
    case NoPreamble:
        station.frame(headOf(1, 1, port, place), good, number, 1);
        break;
    case NoOperation:
        station.frame(headOf(1, 3, port, place), good, number);
        break;
    default:
        station.frame(headOf(1, 1, port, place), 3, number);
        break;
    }
    ++m_sent;
}
