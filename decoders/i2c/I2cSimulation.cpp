#include "I2cAnalyzer.h"
#include "common/StartStopSender.h"

#include <cstdint>

using lux::Simulation;

namespace {

/// A message of the simulation.
enum Form : std::uint32_t {
    WriteBytes,
    ReadBytes,
    WriteThenRead,
    TenBitAddress,
    GeneralCall,
    NobodyThere,
    Slow,
    LostStop,
    Broken
};

} // namespace

/// Messages with bytes that count up, of nine forms in turn.
void I2cAnalyzer::simulate(Simulation &simulation)
{
    lux::StartStopSender bus(simulation, m_settings.scl, m_settings.sda);
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
        bus.start();
        bus.byte(0xf3);
        bus.byte(number, true);
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
    case LostStop:
        bus.byte(0xa0);
        bus.letGo(80); // much longer than before a repeated start
        bus.start();
        bus.bytes({0xa0, number});
        break;
    default: // a stop within a byte
        bus.byte(0xa0);
        bus.cutByte();
        break;
    }
    bus.stop();
    ++m_sent;
}
