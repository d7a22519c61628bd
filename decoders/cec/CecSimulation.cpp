#include "CecAnalyzer.h"

#include <initializer_list>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t perSecond = 1000000;     ///< times are microseconds
constexpr std::int64_t leastDoubtRate = 100000; ///< Hz; below, what lies between a 1 and a 0 cannot be told from both

/// The devices of a simulated line.
class Devices {
public:
    Devices(Simulation &simulation, const Channel &line) : m_simulation(simulation), m_line(simulation.line(line, true))
    {}

    void start() { pulse(3700, 4500); }
    void bit(bool value) { pulse(value ? 600 : 1500, 2400); }
    void block(std::uint32_t value, bool isLast, bool acknowledge)
    {
        for (unsigned i = 8; i > 0; --i) {
            bit((value >> (i - 1) & 1U) != 0);
        }
        bit(isLast);
        bit(acknowledge);
    }
    /// @param low  the level of the acknowledgements: a directed message is acknowledged by a 0
    void message(std::initializer_list<std::uint32_t> blocks, bool low = true)
    {
        start();
        std::size_t left = blocks.size();
        for (const std::uint32_t value : blocks) {
            block(value, --left == 0, !low);
        }
    }
    void pulse(std::int64_t low, std::int64_t length)
    {
        m_line.set(false);
        wait(low);
        m_line.set(true);
        wait(length - low);
    }
    void wait(std::int64_t microseconds) { m_simulation.holdTime(microseconds, perSecond); }

private:
    Simulation &m_simulation;
    SimulationLine &m_line;
};

} // namespace

/// Messages and errors in turn, with an operand that counts up.
void CecAnalyzer::simulate(Simulation &simulation)
{
    enum Form : std::uint32_t { Poll, NobodyThere, Key, Broadcast, Refused, NotTaken, CutBlock, LineError, WrongTime };
    if (simulation.sampleRate() < std::int64_t(NeededSampleRate())) {
        simulation.hold(simulation.sampleRate()); // no bit could be told
        return;
    }
    Devices devices(simulation, m_settings.line);
    const std::uint32_t number = m_sent & 0xffU;
    devices.wait(12000 + simulation.random(20000)); // five bits at least (CEC 9.1)
    switch (m_sent % (WrongTime + 1)) {
    case Poll:
        devices.message({0x45});
        break;
    case NobodyThere:
        devices.message({0x48}, false);
        break;
    case Key:
        devices.message({0x05, 0x44, number});
        break;
    case Broadcast:
        devices.message({0x4f, 0x82, 0x10, number}, false);
        break;
    case Refused:
        devices.message({0x5f, 0x72, number}, true);
        break;
    case NotTaken: // the sender stops behind a block without acknowledgement
        devices.start();
        devices.block(0x50, false, false);
        devices.block(number, false, true);
        break;
    case CutBlock:
        devices.start();
        devices.block(0x50, false, false);
        devices.bit(true);
        break;
    case LineError:
        devices.start();
        devices.block(0x50, false, false);
        devices.bit(true);
        devices.pulse(3400, 3400);
        break;
    default: // a poll whose second bit is longer than a 1 and shorter than a 0
        devices.start();
        devices.bit(false);
        devices.pulse(simulation.sampleRate() >= leastDoubtRate ? 1030 : 600, 2400);
        for (const bool value : {false, false, false, true, false, true, true, false}) {
            devices.bit(value);
        }
        break;
    }
    ++m_sent;
}
