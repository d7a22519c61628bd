#include "QspiAnalyzer.h"

#include <algorithm>
#include <array>
#include <span>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 10000000; ///< clocks/s
constexpr std::int64_t samplesPerClock = 8;
constexpr std::int64_t partsOfClock = 4;
constexpr unsigned allLines = 4;
constexpr std::uint32_t shortEvery = 17; ///< transfers
constexpr std::uint8_t leaveReading = 0xff;
constexpr std::uint8_t keepReading = 0xa5;

constexpr std::uint8_t commands[] = {0x9f, 0x06, 0x02, 0x05, 0x03, 0x0b, 0x3b, 0xbb, 0x6b, 0xeb, 0x32, 0x0d, 0xed};
constexpr std::uint8_t qpiCommands[] = {0xeb, 0x06, 0x02, 0x05, 0x0b};

} // namespace

/// The controller of a simulated chip, and the chip.
class QspiBus {
public:
    QspiBus(Simulation &simulation, const QspiSettings &settings)
        : m_simulation(simulation),
          m_clk(simulation.line(settings.clk, settings.clockEdge.value() == 0)),
          m_cs(simulation.line(settings.cs, true)),
          m_idle(settings.clockEdge.value() == 0),
          m_perSecond(partsOfClock *
                      std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerClock)))
    {
        for (const Channel &channel : settings.lines()) {
            m_lines[m_count++] = &simulation.line(channel, true);
        }
    }

    void select(bool active)
    {
        m_cs.set(!active);
        wait(1);
    }
    void wait(std::int64_t clocks) { m_simulation.holdTime(partsOfClock * clocks, m_perSecond); }
    /// The highest bits first; on one line IO0 has them when the controller sends, IO1 when the chip does.
    void bits(std::uint32_t value, unsigned count, unsigned lines, bool fromChip, bool isDouble)
    {
        while (count > 0) {
            edge(value, count, lines, fromChip, true, isDouble);
            count -= lines;
            if (isDouble) {
                edge(value, count, lines, fromChip, false, true);
                count -= lines;
            } else {
                m_simulation.holdTime(partsOfClock / 2, m_perSecond);
                m_clk.set(m_idle);
            }
        }
    }

private:
    /// Data stands a quarter of a clock before the edge that takes it when both edges do, else half a clock.
    void edge(std::uint32_t value, unsigned count, unsigned lines, bool fromChip, bool isLeading, bool isDouble)
    {
        for (unsigned i = 0; i < lines; ++i) {
            const unsigned line = lines == 1 ? unsigned(fromChip) : i;
            m_lines[line]->set((value >> (count - lines + i) & 1U) != 0);
        }
        m_simulation.holdTime(isDouble ? 1 : partsOfClock / 2, m_perSecond);
        m_clk.set(isLeading != m_idle);
        m_simulation.holdTime(isDouble ? 1 : 0, m_perSecond);
    }

    Simulation &m_simulation;
    SimulationLine &m_clk;
    SimulationLine &m_cs;
    std::array<SimulationLine *, 4> m_lines{};
    std::size_t m_count = 0;
    bool m_idle;
    std::int64_t m_perSecond;
};

/// Transfers of all forms in turn, with addresses and data that count up; now and then a select without a command. Each
/// second read whose mode may do so keeps the chip reading, so that the next transfer has no command.
void QspiAnalyzer::simulate(Simulation &simulation)
{
    QspiBus bus(simulation, m_settings);
    const std::uint32_t number = m_sent++;
    const bool isQpi = m_settings.qpi;
    bus.wait(4 + simulation.random(16));
    bus.select(true);
    if (m_settings.mode == QspiMode::M444) {
        bus.bits(number, 32, allLines, false, false);
    } else if (m_goesOn == nullptr && number % shortEvery == shortEvery - 1) {
        bus.bits(0, isQpi ? 4 : 3, isQpi ? allLines : 1, false, false);
    } else {
        simulateCommand(bus, number);
    }
    bus.wait(1);
    bus.select(false);
}

void QspiAnalyzer::simulateCommand(QspiBus &bus, std::uint32_t number)
{
    const bool isQpi = m_settings.qpi;
    const std::span<const std::uint8_t> list =
        isQpi ? std::span<const std::uint8_t>(qpiCommands) : std::span<const std::uint8_t>(commands);
    const bool hasCode = m_goesOn == nullptr;
    const QspiCommand *known = hasCode ? findCommand(m_settings.set, list[number % list.size()], isQpi) : m_goesOn;
    const bool hasFour = m_settings.lines()[2].isDefined() && m_settings.lines()[3].isDefined();
    if (!isQpi && !hasFour && std::max(known->addressLines, known->dataLines) == allLines) {
        known = findCommand(m_settings.set, commands[0], false);
    }
    QspiCommand command = *known;
    if (isQpi) {
        command.addressLines = command.dataLines = allLines;
    }
    const bool isDouble = command.isDouble;
    if (hasCode) {
        bus.bits(command.code, 8, isQpi ? allLines : 1, false, false);
    }
    if (command.addressBytes != 0) {
        const unsigned bytes = m_settings.address.value() == 4 ? 4 : 3;
        bus.bits(number, 8 * bytes, command.addressLines, false, isDouble);
    }
    m_goesOn = nullptr;
    if (command.hasMode) {
        const bool keeps = hasCode && number / list.size() % 2 != 0;
        bus.bits(keeps ? keepReading : leaveReading, 8, command.addressLines, false, isDouble);
        m_goesOn = keeps ? known : nullptr;
    }
    m_chip = {};
    m_chip.isQpi = isQpi;
    for (unsigned clock = dummyClocks(command); clock > 0; --clock) {
        bus.bits(0, 1, 1, false, false);
    }
    for (std::uint32_t i = 0; i < 4 && command.data != QspiCommand::Data::None; ++i) {
        bus.bits(number + i, 8, command.dataLines, command.data == QspiCommand::Data::Read, isDouble);
    }
}
