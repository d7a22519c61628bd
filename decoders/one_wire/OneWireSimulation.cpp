#include "OneWireAnalyzer.h"
#include "common/Crc.h"

#include <cstdint>
#include <initializer_list>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t perSecond = 1000000000; ///< times are nanoseconds
constexpr std::int64_t leastOverdriveRate = 2000000;

using CodeCrc = lux::Crc<lux::CrcModel{.width = 8, .polynomial = 0x31, .lsbFirst = true}>;

/// Usual times, in nanoseconds (Maxim application note 126, table 2, recommended).
struct BusTimes {
    std::int64_t one;
    std::int64_t zero;
    std::int64_t slot;
    std::int64_t reset;
    std::int64_t presenceWait;
    std::int64_t presence;
    std::int64_t recovery; ///< behind the presence pulse
};
constexpr std::int64_t longPresence = 300000;
constexpr std::int64_t longZero = 150000;
constexpr BusTimes standard{6000, 62000, 70000, 485000, 30000, 120000, 340000};
constexpr BusTimes overdrive{1500, 7500, 10000, 70000, 4000, 12000, 36000};

/// The controller and the devices of a simulated bus.
class Bus {
public:
    Bus(Simulation &simulation, const Channel &line) : m_simulation(simulation), m_line(simulation.line(line, true)) {}

    void setOverdrive(bool on) { m_times = on ? &overdrive : &standard; }
    enum class Answer : std::uint8_t { Usual, None, TooLong };
    void reset(Answer answer = Answer::Usual)
    {
        pulse(m_times->reset);
        wait(m_times->presenceWait);
        if (answer == Answer::None) {
            wait(m_times->presence);
        } else {
            pulse(answer == Answer::TooLong ? longPresence : m_times->presence);
        }
        wait(m_times->recovery);
    }
    /// A 0 that is low for longer than it may be.
    void slowZero()
    {
        pulse(longZero);
        wait(m_times->slot - m_times->zero);
    }
    void bit(bool value)
    {
        const std::int64_t low = value ? m_times->one : m_times->zero;
        pulse(low);
        wait(m_times->slot - low);
    }
    void bytes(std::initializer_list<std::uint32_t> values)
    {
        for (const std::uint32_t value : values) {
            number(value, 8);
        }
    }
    /// The lowest bit first.
    void number(std::uint64_t value, unsigned bits)
    {
        for (unsigned i = 0; i < bits; ++i) {
            bit((value >> i & 1U) != 0);
        }
    }
    /// Two devices that differ in the lowest bit of the serial number, of which the one with a 1 is not there any more.
    void search(std::uint64_t code)
    {
        constexpr unsigned conflict = 8;
        for (unsigned i = 0; i < 64; ++i) {
            const bool one = (code >> i & 1U) != 0;
            bit(one && i != conflict);
            bit(!one && i != conflict);
            bit(one);
        }
    }
    void match(std::uint64_t code, std::uint32_t data)
    {
        bytes({oneWire::MatchRom});
        number(code, 64);
        bytes({0xbe, data, data ^ 0xffU});
    }
    void wait(std::int64_t nanoseconds) { m_simulation.holdTime(nanoseconds, perSecond); }

private:
    void pulse(std::int64_t nanoseconds)
    {
        m_line.set(false);
        wait(nanoseconds);
        m_line.set(true);
    }

    Simulation &m_simulation;
    SimulationLine &m_line;
    const BusTimes *m_times = &standard;
};

std::uint64_t codeOf(std::uint32_t serial)
{
    const std::uint64_t code = std::uint64_t(serial) << 8 | 0x28U;
    CodeCrc crc;
    for (unsigned i = 0; i + 1 < OneWireResults::codeBytes; ++i) {
        crc.addByte(std::uint8_t(code >> (8 * i)));
    }
    return code | std::uint64_t(crc.value()) << 56;
}

enum Form : std::uint32_t { Skip, Read, Match, Search, NobodyThere, WrongCheck, CutByte, Fast, LongPresence, LongSlot };

/// What follows the reset of a message with an error.
void sendWrong(Bus &bus, std::uint32_t form, std::uint32_t number, std::uint64_t code)
{
    switch (form) {
    case WrongCheck:
        bus.match(code ^ 0x100U, number);
        break;
    case CutByte:
        bus.number(number, 5);
        break;
    case LongPresence:
        bus.bytes({oneWire::SkipRom});
        break;
    case LongSlot:
        bus.bytes({oneWire::SkipRom});
        bus.slowZero();
        bus.number(number >> 1, 7);
        break;
    default: // nobody there
        break;
    }
}

} // namespace

/// Ten forms of message in turn, with devices and bytes that count up.
void OneWireAnalyzer::simulate(Simulation &simulation)
{
    if (simulation.sampleRate() < oneWire::leastSampleRate) {
        simulation.hold(simulation.sampleRate()); // no slot could be told
        return;
    }
    Bus bus(simulation, m_settings.line);
    const std::uint32_t number = m_sent & 0xffU;
    const std::uint64_t code = codeOf(m_sent);
    const std::uint32_t form = m_sent % (LongSlot + 1);
    const bool canBeFast = m_settings.speed != OneWireSpeed::Standard && simulation.sampleRate() >= leastOverdriveRate;
    bus.wait(std::int64_t(500 + simulation.random(2000)) * 1000);
    bus.reset(form == NobodyThere    ? Bus::Answer::None
              : form == LongPresence ? Bus::Answer::TooLong
                                     : Bus::Answer::Usual);
    switch (form) {
    case Skip:
        bus.bytes({oneWire::SkipRom, 0x44});
        break;
    case Read:
        bus.bytes({oneWire::ReadRom});
        bus.number(code, 64);
        break;
    case Match:
        bus.match(code, number);
        break;
    case Search:
        bus.bytes({oneWire::SearchRom});
        bus.search(code & ~std::uint64_t(0x100));
        break;
    case Fast:
        if (!canBeFast) {
            bus.bytes({oneWire::AlarmSearch});
            bus.search(code);
            break;
        }
        bus.bytes({oneWire::OverdriveSkipRom});
        bus.setOverdrive(true);
        bus.reset();
        bus.bytes({oneWire::SkipRom, 0xf0, number});
        break;
    default:
        sendWrong(bus, form, number, code);
        break;
    }
    ++m_sent;
}
