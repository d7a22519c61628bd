#include "SwiAnalyzer.h"
#include "SwiNames.h"

#include <initializer_list>
#include <vector>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t bitsOfToken = 9; ///< pulses a serial port would need for one bit

/// The host and the device on a simulated wire. Times are in bits of the serial port, 4.34 us at the usual rate.
class Wire {
public:
    Wire(Simulation &simulation, const Channel &line, std::int64_t bitRate)
        : m_simulation(simulation), m_line(simulation.line(line, true)), m_bitRate(bitRate)
    {}

    void wake()
    {
        m_line.set(false);
        wait(16);
        m_line.set(true);
        wait(576); // tWHI, 2.5 ms
    }
    void byte(std::uint32_t value)
    {
        for (unsigned i = 0; i < 8; ++i) {
            bit((value >> i & 1U) != 0);
        }
    }
    /// @param error  is added to the CRC
    void block(std::initializer_list<std::uint32_t> content, std::uint32_t error = 0)
    {
        std::vector<std::uint8_t> bytes{std::uint8_t(content.size() + 1 + swi::crcBytes)};
        bytes.insert(bytes.end(), content.begin(), content.end());
        const std::uint32_t crc = swi::crcOf(bytes) ^ error;
        bytes.push_back(std::uint8_t(crc));
        bytes.push_back(std::uint8_t(crc >> 8));
        for (const std::uint8_t value : bytes) {
            byte(value);
        }
    }
    void answer(std::initializer_list<std::uint32_t> content)
    {
        byte(swi::Transmit);
        wait(10);
        block(content);
        wait(12);
    }
    void wait(std::int64_t bits) { m_simulation.holdTime(bits, m_bitRate); }
    void waitMilliseconds(std::int64_t time) { m_simulation.holdTime(time, 1000); }

private:
    void bit(bool value)
    {
        m_line.set(false);
        wait(1);
        m_line.set(true);
        if (!value) {
            wait(1);
            m_line.set(false);
            wait(1);
            m_line.set(true);
        }
        wait(bitsOfToken - (value ? 1 : 3));
    }

    Simulation &m_simulation;
    SimulationLine &m_line;
    std::int64_t m_bitRate;
};

} // namespace

/// Exchanges with data that counts up: a wake pulse and its answer, a command and its answer, idle or sleep; some have
/// an error.
void SwiAnalyzer::simulate(Simulation &simulation)
{
    enum Form : std::uint32_t { Random, WrongCheck, NoAnswer, CutBlock, UnknownFlag };
    const std::int64_t rate = m_settings.bitRate;
    if (simulation.sampleRate() < std::int64_t(NeededSampleRate())) {
        simulation.hold(simulation.sampleRate()); // no pulse could be told
        return;
    }
    Wire wire(simulation, m_settings.line, rate);
    const std::uint32_t number = m_sent & 0xffU;
    const std::uint32_t form = m_sent % (UnknownFlag + 1);
    wire.waitMilliseconds(1 + simulation.random(3));
    wire.wake();
    wire.answer({0x11});
    wire.byte(swi::Command);
    switch (form) {
    case Random:
        wire.block({0x1b, 0x01, 0x00, number});
        wire.wait(230);
        wire.answer({0x01, 0x02, 0x03, number});
        wire.byte(swi::Idle);
        break;
    case WrongCheck:
        wire.block({0x02, 0x80, number, 0x00}, 1);
        wire.wait(230);
        wire.answer({0xff});
        wire.byte(swi::Sleep);
        break;
    case NoAnswer: // the device is not ready yet
        wire.block({0x08, 0x00, number, 0x00});
        wire.wait(230);
        wire.byte(swi::Transmit);
        wire.wait(230);
        wire.answer({0x00});
        wire.byte(swi::Sleep);
        break;
    case UnknownFlag:
        wire.block({0x1b, 0x00, 0x00, number});
        wire.wait(230);
        wire.byte(0x55);
        break;
    default:
        wire.byte(7);
        wire.byte(0x17);
        wire.byte(number);
        wire.waitMilliseconds(90);
        break;
    }
    ++m_sent;
}
