#include "I2cAnalyzer.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t standardRate = 100000; ///< bits/s, UM10204, table 10
constexpr std::int64_t samplesPerBit = 16;
constexpr std::int64_t partsOfBit = 4;

/// The controller of a simulated bus.
class Controller {
public:
    Controller(Simulation &simulation, const Channel &scl, const Channel &sda)
        : m_simulation(simulation),
          m_scl(simulation.line(scl, true)),
          m_sda(simulation.line(sda, true)),
          m_rate(std::max<std::int64_t>(1, std::min(standardRate, simulation.sampleRate() / samplesPerBit)))
    {}

    void start()
    {
        m_sda.set(true);
        wait(1);
        m_scl.set(true);
        wait(2);
        m_sda.set(false);
        wait(2);
        m_scl.set(false);
        wait(1);
    }
    void stop()
    {
        m_sda.set(false);
        wait(1);
        m_scl.set(true);
        wait(2);
        m_sda.set(true);
        wait(2);
    }
    void bit(bool value)
    {
        m_sda.set(value);
        wait(1);
        m_scl.set(true);
        wait(2);
        m_scl.set(false);
        wait(1);
    }
    void byte(std::uint32_t value, bool nack = false)
    {
        for (unsigned i = 8; i > 0; --i) {
            bit((value >> (i - 1) & 1U) != 0);
        }
        bit(nack);
    }
    void bytes(std::initializer_list<std::uint32_t> values)
    {
        for (const std::uint32_t value : values) {
            byte(value);
        }
    }
    /// Lets quarters of a bit pass.
    void wait(std::int64_t parts) { m_simulation.holdTime(parts, m_rate * partsOfBit); }

private:
    Simulation &m_simulation;
    SimulationLine &m_scl;
    SimulationLine &m_sda;
    std::int64_t m_rate;
};

} // namespace

/// Messages with bytes that count up, of eight forms in turn.
void I2cAnalyzer::simulate(Simulation &simulation)
{
    enum Form : std::uint32_t {
        WriteBytes,
        ReadBytes,
        WriteThenRead,
        TenBitAddress,
        GeneralCall,
        NobodyThere,
        Slow,
        Broken
    };
    Controller bus(simulation, m_settings.scl, m_settings.sda);
    const std::uint32_t number = m_sent & 0xffU;
    bus.wait(16 + simulation.random(64));
    bus.start();
    switch (m_sent % (Broken + 1)) {
    case WriteBytes:
        bus.bytes({0xa0, 0x00, number});
        break;
    case ReadBytes:
        bus.bytes({0xa1, number});
        bus.byte(number ^ 0xffU, true);
        break;
    case WriteThenRead:
        bus.bytes({0x90, number});
        bus.start();
        bus.byte(0x91);
        bus.byte(number, true);
        break;
    case TenBitAddress:
        bus.bytes({0xf2, 0x34, number});
        break;
    case GeneralCall:
        bus.bytes({0x00, 0x06});
        break;
    case NobodyThere:
        bus.byte(0x42, true);
        break;
    case Slow:
        bus.byte(0xa0);
        bus.wait(40); // the target holds the clock
        bus.byte(number);
        break;
    default: // a stop within a byte
        bus.byte(0xa0);
        bus.bit(true);
        bus.bit(false);
        bus.bit(true);
        break;
    }
    bus.stop();
    ++m_sent;
}
