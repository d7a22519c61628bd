#include "Ps2Analyzer.h"
#include "Ps2Keys.h"
#include "common/Parity.h"

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t perSecond = 1000000; ///< times are microseconds
constexpr std::int64_t half = 40;           ///< of a clock
constexpr unsigned bitsOfByte = 8;

/// What is wrong with a byte.
struct Fault {
    bool parity = false;
    bool stop = false;
    bool start = false;
    unsigned clocks = 11;
};

/// Both ends of a simulated port.
class Port {
public:
    Port(Simulation &simulation, const Channel &clock, const Channel &data)
        : m_simulation(simulation), m_clock(simulation.line(clock, true)), m_data(simulation.line(data, true))
    {}

    void keyboard(std::uint32_t byte, const Fault &fault = {})
    {
        const bool parity = parityBit(byte, lux::Parity::Odd) != fault.parity;
        const std::uint32_t bits =
            std::uint32_t(fault.start) | byte << 1 | std::uint32_t(parity) << 9 | std::uint32_t(!fault.stop) << 10;
        for (unsigned i = 0; i < fault.clocks; ++i) {
            m_data.set((bits >> i & 1U) != 0);
            wait(half / 2);
            pulse();
            wait(half / 2);
        }
        m_data.set(true);
        wait(1000);
    }
    void host(std::uint32_t byte, bool isAnswered = true)
    {
        m_clock.set(false);
        wait(120);
        m_data.set(false);
        wait(10);
        m_clock.set(true);
        wait(500);
        const std::uint32_t bits = byte | std::uint32_t(parityBit(byte, lux::Parity::Odd)) << bitsOfByte | 1U << 9;
        for (unsigned i = 0; i < 10; ++i) {
            m_clock.set(false);
            wait(half / 4);
            m_data.set((bits >> i & 1U) != 0);
            wait(half - half / 4);
            m_clock.set(true);
            wait(half);
        }
        m_data.set(!isAnswered); // the keyboard's acknowledgement
        pulse();
        m_data.set(true);
        wait(1000);
    }
    void wait(std::int64_t microseconds) { m_simulation.holdTime(microseconds, perSecond); }

private:
    void pulse()
    {
        m_clock.set(false);
        wait(half);
        m_clock.set(true);
    }

    Simulation &m_simulation;
    SimulationLine &m_clock;
    SimulationLine &m_data;
};

enum Form : std::uint32_t { Make, Break, Extended, Leds, WrongParity, WrongStop, CutByte, SelfTest, NoAnswer, NoStart };

} // namespace

/// Keys, a host's commands and errors in turn, with a byte that counts up.
void Ps2Analyzer::simulate(Simulation &simulation)
{
    if (simulation.sampleRate() < std::int64_t(NeededSampleRate())) {
        simulation.hold(simulation.sampleRate()); // no clock could be told
        return;
    }
    Port port(simulation, m_settings.clock, m_settings.data);
    const std::uint32_t number = m_sent & 0xffU;
    port.wait(500 + simulation.random(5000));
    switch (m_sent % (NoStart + 1)) {
    case Make:
        port.keyboard(number & 0x7fU);
        break;
    case Break:
        port.keyboard(ps2::released);
        port.keyboard(number & 0x7fU);
        break;
    case Extended:
        port.keyboard(ps2::extended);
        port.keyboard(0x75);
        break;
    case Leds:
        for (const std::uint32_t byte : {ps2::setLeds, number & 7U}) {
            port.host(byte);
            port.keyboard(ps2::acknowledge);
        }
        break;
    case WrongParity:
        port.keyboard(number, {.parity = true});
        break;
    case WrongStop:
        port.keyboard(number, {.stop = true});
        break;
    case CutByte:
        port.keyboard(number, {.clocks = 5});
        break;
    case SelfTest:
        port.host(0xff);
        port.keyboard(ps2::acknowledge);
        port.keyboard(0xaa);
        break;
    case NoAnswer:
        port.host(0xee, false);
        break;
    default:
        port.keyboard(number, {.start = true});
        break;
    }
    ++m_sent;
}
