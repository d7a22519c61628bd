#include "SmbusAnalyzer.h"
#include "SmbusProtocol.h"
#include "common/StartStopSender.h"

#include <cstdint>

using lux::Simulation;

namespace {

constexpr std::uint32_t device = 0x5a;
constexpr std::uint32_t toDevice = device << 1;
constexpr std::uint32_t fromDevice = toDevice | 1U;

/// A transaction of the simulation.
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
    ClockHeld,
    ReceiveByte,
    WriteByte,
    ReadWord,
    BlockWrite,
    BlockProcessCall,
    Write32,
    Read64,
    ClockSlow,
    Forms
};

/// The controller and the devices of a simulated bus.
class Bus : public lux::StartStopSender {
public:
    using StartStopSender::StartStopSender;

    /// The packet error code over what was sent since the last stop.
    void pec(bool nack = false, std::uint32_t error = 0) { byte(smbus::Pec::of(sent()) ^ error, nack); }
    /// The further protocols.
    void more(std::uint32_t form, std::uint32_t value)
    {
        switch (form) {
        case ReceiveByte:
            bytes({fromDevice, value});
            break;
        case WriteByte:
            bytes({toDevice, 0x24, value});
            break;
        case ReadWord:
            bytes({toDevice, 0x25});
            start();
            bytes({fromDevice, value, 0x12});
            break;
        case BlockWrite:
            bytes({toDevice, 0x26, 4, 0x11, 0x12, 0x13, value});
            break;
        case BlockProcessCall:
            bytes({toDevice, 0x27, 2, 0x11, value});
            start();
            bytes({fromDevice, 2, 0x21, value});
            break;
        case Write32:
            bytes({toDevice, 0x28, 0x11, 0x12, 0x13, value});
            break;
        default: // Read64
            bytes({toDevice, 0x29});
            start();
            bytes({fromDevice, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, value});
            break;
        }
        pec(form == ReceiveByte || form == ReadWord || form == BlockProcessCall || form == Read64);
    }
    /// The clock is held for longer than a controller may in a byte, and than a target may in all.
    void writeSlowly(Simulation &simulation, std::uint32_t value)
    {
        byte(toDevice);
        for (const std::uint32_t each : {std::uint32_t(0x2a), value, std::uint32_t(0x12)}) {
            simulation.holdTime(12, 1000);
            byte(each);
        }
        pec();
    }
    void readByte(std::uint32_t value, std::uint32_t pecError = 0)
    {
        bytes({toDevice, 0x21});
        start();
        bytes({fromDevice, value});
        pec(true, pecError);
    }
    void blockRead(std::uint32_t last)
    {
        bytes({toDevice, 0x22});
        start();
        bytes({fromDevice, 3, 0x31, 0x32, last});
        pec(true);
    }
    void processCall(std::uint32_t value)
    {
        bytes({toDevice, 0x23, 0x01, value});
        start();
        bytes({fromDevice, 0x10, value ^ 0xffU});
        pec(true);
    }
};

} // namespace

/// Transactions with data that counts up, of the bus protocols in turn.
void SmbusAnalyzer::simulate(Simulation &simulation)
{
    Bus bus(simulation, m_settings.scl, m_settings.sda);
    const std::uint32_t number = m_sent & 0xffU;
    bus.wait(16 + simulation.random(64));
    bus.start();
    switch (m_sent % Forms) {
    case Quick:
        bus.byte(toDevice);
        break;
    case SendByte:
        bus.bytes({toDevice, number});
        bus.pec();
        break;
    case WriteWord:
        bus.bytes({toDevice, 0x20, 0x12, number});
        bus.pec();
        break;
    case ReadByte:
        bus.readByte(number);
        break;
    case BlockRead:
        bus.blockRead(number);
        break;
    case ProcessCall:
        bus.processCall(number);
        break;
    case HostNotify:
        bus.bytes({smbus::hostAddress << 1, toDevice, 0x34, number});
        break;
    case AlertResponse:
        bus.byte(smbus::alertAddress << 1 | 1U);
        bus.byte(toDevice, true);
        break;
    case WrongPec:
        bus.readByte(number, 1);
        break;
    case NobodyThere:
        bus.byte(0x42, true);
        break;
    case Broken:
        bus.byte(toDevice);
        bus.cutByte();
        break;
    case ClockHeld: // devices let go, and the controller starts anew
        bus.bytes({toDevice, number});
        simulation.holdTime(36, 1000);
        break;
    case ClockSlow:
        bus.writeSlowly(simulation, number);
        break;
    default:
        bus.more(m_sent % Forms, number);
        break;
    }
    bus.stop();
    ++m_sent;
}
