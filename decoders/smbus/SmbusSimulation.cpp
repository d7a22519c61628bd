#include "SmbusAnalyzer.h"
#include "SmbusProtocol.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <vector>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t standardRate = 100000; ///< bits/s, SMBus 3.1, table 13, the 100 kHz class
constexpr std::int64_t samplesPerBit = 16;
constexpr std::int64_t partsOfBit = 4;

/// The controller and the devices of a simulated bus.
class Bus {
public:
    Bus(Simulation &simulation, const Channel &scl, const Channel &sda)
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
        m_sent.clear();
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
        m_sent.push_back(std::uint8_t(value));
    }
    void bytes(std::initializer_list<std::uint32_t> values)
    {
        for (const std::uint32_t value : values) {
            byte(value);
        }
    }
    /// The packet error code over what was sent since the last stop.
    void pec(bool nack = false, std::uint32_t error = 0) { byte(smbus::Pec::of(m_sent) ^ error, nack); }
    /// Lets quarters of a bit pass.
    void wait(std::int64_t parts) { m_simulation.holdTime(parts, m_rate * partsOfBit); }
    void holdClock(std::int64_t milliseconds) { m_simulation.holdTime(milliseconds, 1000); }

private:
    Simulation &m_simulation;
    SimulationLine &m_scl;
    SimulationLine &m_sda;
    std::int64_t m_rate;
    std::vector<std::uint8_t> m_sent;
};

} // namespace

/// Transactions with data that counts up, of the bus protocols in turn.
void SmbusAnalyzer::simulate(Simulation &simulation)
{
    enum Form : std::uint32_t {
        Quick,
        SendByte,
        WriteWord,
        ReadByte,
        BlockRead,
        ProcessCall,
        HostNotify,
        AlertResponse,
        WrongPec,
        NobodyThere,
        Broken,
        ClockHeld
    };
    constexpr std::uint32_t device = 0x5a;
    constexpr std::uint32_t write = device << 1;
    constexpr std::uint32_t read = write | 1U;
    Bus bus(simulation, m_settings.scl, m_settings.sda);
    const std::uint32_t number = m_sent & 0xffU;
    bus.wait(16 + simulation.random(64));
    bus.start();
    switch (m_sent % (ClockHeld + 1)) {
    case Quick:
        bus.byte(write);
        break;
    case SendByte:
        bus.bytes({write, number});
        bus.pec();
        break;
    case WriteWord:
        bus.bytes({write, 0x20, 0x12, number});
        bus.pec();
        break;
    case ReadByte:
    case WrongPec:
        bus.bytes({write, 0x21});
        bus.start();
        bus.bytes({read, number});
        bus.pec(true, m_sent % (ClockHeld + 1) == WrongPec ? 1 : 0);
        break;
    case BlockRead:
        bus.bytes({write, 0x22});
        bus.start();
        bus.bytes({read, 3, 0x31, 0x32, number});
        bus.pec(true);
        break;
    case ProcessCall:
        bus.bytes({write, 0x23, 0x01, number});
        bus.start();
        bus.bytes({read, 0x10, number ^ 0xffU});
        bus.pec(true);
        break;
    case HostNotify:
        bus.bytes({smbus::hostAddress << 1, write, 0x34, number});
        break;
    case AlertResponse:
        bus.byte(smbus::alertAddress << 1 | 1U);
        bus.byte(write, true);
        break;
    case NobodyThere:
        bus.byte(0x42, true);
        break;
    case Broken:
        bus.byte(write);
        bus.bit(true);
        bus.bit(false);
        bus.bit(true);
        break;
    default: // devices let go, and the controller starts anew
        bus.bytes({write, number});
        bus.holdClock(36);
        break;
    }
    bus.stop();
    ++m_sent;
}
