#include "SdioAnalyzer.h"
#include "common/Crc.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t usualRate = 400000; ///< clocks/s while a card is identified (4.2.1)
constexpr std::int64_t samplesPerClock = 8;
constexpr std::uint32_t errorsEvery = 5; ///< rounds: of these one has wrong checks, and one wrong end bits
constexpr std::uint32_t roundOfWrongCrc = 4;
constexpr std::uint32_t roundOfWrongEnd = 2;
constexpr std::uint32_t functionsEvery = 4; ///< rounds
constexpr std::size_t blockBytes = 8;

constexpr lux::CrcModel crc7 = {.width = 7, .polynomial = 0x09};
constexpr lux::CrcModel crc16 = {.width = 16, .polynomial = 0x1021};

/// What is wrong at the end of a token or block.
enum class Damage : std::uint8_t { None, Crc, End };

/// Host and card of a simulated bus.
class Bus {
public:
    Bus(Simulation &simulation, const SdioSettings &settings)
        : m_simulation(simulation),
          m_clk(simulation.line(settings.clk, false)),
          m_cmd(simulation.line(settings.cmd, true)),
          m_width(settings.usedLines()),
          m_edges(settings.ddr ? mostEdges : 1),
          m_perSecond(2 * std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerClock)))
    {
        for (const Channel &channel : settings.dataLines()) {
            m_dat.push_back(&simulation.line(channel, true));
        }
    }

    /// One clock: lines change at its fall, and are taken at its rise.
    void clock(bool cmd = true, unsigned dat = allHigh)
    {
        m_cmd.set(cmd);
        setData(dat);
        m_simulation.holdTime(1, m_perSecond);
        m_clk.set(true);
        m_simulation.holdTime(1, m_perSecond);
        m_clk.set(false);
    }
    void idle(unsigned clocks)
    {
        for (unsigned i = 0; i < clocks; ++i) {
            clock();
        }
    }
    void stop(std::int64_t clocks) { m_simulation.holdTime(2 * clocks, m_perSecond); }

    void command(std::uint32_t index, std::uint32_t argument, Damage damage = Damage::None)
    {
        shortToken(0x40 | index, argument, damage);
        idle(gap);
    }
    void response(std::uint32_t index, std::uint32_t argument)
    {
        shortToken(index, argument, Damage::None);
        idle(gap);
    }
    /// R3 has ones in place of index and check.
    void responseWithoutCheck(std::uint32_t argument)
    {
        bits(0x3f, 8);
        bits(argument, 32);
        bits(0xff, 8);
        idle(gap);
    }
    void longResponse(std::uint32_t seed)
    {
        lux::Crc<crc7> crc;
        bits(0x3f, 8);
        for (std::uint32_t i = 0; i < SdioToken::registerBytes; ++i) {
            const auto byte = std::uint8_t(seed + i);
            crc.addByte(byte);
            bits(byte, 8);
        }
        bits(crc.value() << 1 | 1U, 8);
        idle(gap);
    }
    /// Bytes that count up. With double data rate the first of two comes with the rises of the clock.
    void block(std::uint32_t seed, Damage damage = Damage::None)
    {
        lux::Crc<crc16> crc[mostEdges][4];
        const unsigned high = ~((1U << m_width) - 1U);
        EdgeMasks masks{};
        clock(true, high);
        for (std::uint32_t i = 0; i < blockBytes; i += std::uint32_t(m_edges)) {
            for (unsigned left = 8; left > 0;) {
                left -= m_width;
                for (std::uint32_t edge = 0; edge < m_edges; ++edge) {
                    const unsigned mask = (seed + i + edge) & 0xffU;
                    masks[edge] = high | (mask >> left & ((1U << m_width) - 1U));
                    for (unsigned line = 0; line < m_width; ++line) {
                        crc[edge][line].addBit((masks[edge] >> line & 1U) != 0);
                    }
                }
                dataClock(masks);
            }
        }
        for (unsigned bit = crc16.width; bit > 0; --bit) {
            for (std::uint32_t edge = 0; edge < m_edges; ++edge) {
                masks[edge] = high;
                for (unsigned line = 0; line < m_width; ++line) {
                    masks[edge] |= (crc[edge][line].value() >> (bit - 1) & 1U) << line;
                }
            }
            masks[m_edges - 1] ^= unsigned(damage == Damage::Crc && bit == 1);
            dataClock(masks);
        }
        dataClock({damage == Damage::End ? high : allHigh, allHigh});
        idle(gap);
    }
    /// The first clocks of a block that the host stops: ones.
    void blockBegin(unsigned clocks)
    {
        clock(true, ~((1U << m_width) - 1U));
        idle(clocks);
    }
    void blockStatus(std::uint32_t status, unsigned busyClocks)
    {
        clock(true, ~1U);
        for (unsigned bit = 3; bit > 0; --bit) {
            clock(true, (status >> (bit - 1) & 1U) != 0 ? allHigh : ~1U);
        }
        clock();
        busy(busyClocks);
    }
    void busy(unsigned clocks)
    {
        for (unsigned i = 0; i < clocks; ++i) {
            clock(true, ~1U);
        }
        idle(gap);
    }

private:
    static constexpr unsigned allHigh = ~0U;
    static constexpr unsigned gap = 8;
    static constexpr std::size_t mostEdges = 2; ///< of a clock at which data is taken
    using EdgeMasks = std::array<unsigned, mostEdges>;

    void setData(unsigned dat)
    {
        for (std::size_t i = 0; i < m_dat.size(); ++i) {
            m_dat[i]->set((dat >> i & 1U) != 0);
        }
    }
    /// One clock of data, which changes between the edges where both take it.
    void dataClock(const EdgeMasks &masks)
    {
        if (m_edges == 1) {
            clock(true, masks[0]);
            return;
        }
        for (std::size_t edge = 0; edge < m_edges; ++edge) {
            m_simulation.holdTime(1, 2 * m_perSecond);
            setData(masks[edge]);
            m_simulation.holdTime(1, 2 * m_perSecond);
            m_clk.set(edge == 0);
        }
    }

    void bits(std::uint32_t value, unsigned count)
    {
        while (count > 0) {
            clock((value >> --count & 1U) != 0);
        }
    }
    void shortToken(std::uint32_t head, std::uint32_t argument, Damage damage)
    {
        lux::Crc<crc7> crc;
        crc.addByte(std::uint8_t(head));
        for (unsigned shift = 32; shift > 0; shift -= 8) {
            crc.addByte(std::uint8_t(argument >> (shift - 8)));
        }
        bits(head, 8);
        bits(argument, 32);
        bits((crc.value() ^ std::uint32_t(damage == Damage::Crc)) << 1 | std::uint32_t(damage != Damage::End), 8);
    }

    Simulation &m_simulation;
    SimulationLine &m_clk;
    SimulationLine &m_cmd;
    std::vector<SimulationLine *> m_dat;
    unsigned m_width;
    std::size_t m_edges;
    std::int64_t m_perSecond; ///< half clocks
};

constexpr std::uint32_t readyInTransfer = 0x900; ///< state tran, READY_FOR_DATA

void identify(Bus &bus, std::uint32_t round)
{
    bus.command(0, 0);
    bus.command(8, 0x1aa);
    bus.response(8, 0x1aa);
    bus.command(sdio::applicationCommand, 0);
    bus.response(sdio::applicationCommand, 0x120);
    bus.command(sdio::sendOpCond, 0x40300000);
    bus.responseWithoutCheck(0xc0ff8000);
    bus.command(sdio::allSendCid, 0);
    bus.longResponse(round);
    bus.command(3, 0);
    bus.response(3, 0x12340500);
    bus.command(7, 0x12340000);
    bus.response(7, 0x700);
    bus.busy(20);
}

void transfer(Bus &bus, std::uint32_t round)
{
    const std::uint32_t turn = round % errorsEvery;
    const Damage damage = turn == roundOfWrongCrc ? Damage::Crc : turn == roundOfWrongEnd ? Damage::End : Damage::None;
    const bool isRefused = damage == Damage::Crc;
    bus.command(sdio::setBlockLength, blockBytes);
    bus.response(sdio::setBlockLength, readyInTransfer);
    bus.command(sdio::readSingleBlock, round);
    bus.response(sdio::readSingleBlock, readyInTransfer);
    bus.block(round, damage);
    bus.command(sdio::readMultipleBlock, round);
    bus.response(sdio::readMultipleBlock, readyInTransfer);
    bus.block(round + 1);
    bus.block(round + 2);
    bus.command(sdio::stopTransmission, 0);
    bus.response(sdio::stopTransmission, 0xb00);
    bus.command(sdio::writeBlock, round);
    bus.response(sdio::writeBlock, readyInTransfer);
    bus.block(round + 3, damage);
    bus.blockStatus(isRefused ? 5 : 2, isRefused ? 0 : 30);
    bus.command(13, 0x12340000, damage);
    if (damage == Damage::None) {
        bus.response(13, readyInTransfer);
    }
}

/// A card with input and output: SDIO 3.00, 5.1 and 5.3; and a block that is stopped before its end.
void useFunctions(Bus &bus, std::uint32_t round)
{
    constexpr std::uint32_t readBytes = 1U << 28 | std::uint32_t(blockBytes); ///< of function 1, by bytes
    bus.command(sdio::ioSendOpCond, 0x100000);
    bus.responseWithoutCheck(0x90100000);
    bus.command(sdio::ioReadWriteDirect, 1U << 31 | 2U << 9 | 2U);
    bus.response(sdio::ioReadWriteDirect, 0x1002);
    bus.command(sdio::ioReadWriteExtended, readBytes);
    bus.response(sdio::ioReadWriteExtended, 0x1000);
    bus.block(round);
    bus.command(sdio::setBlockLength, 512);
    bus.response(sdio::setBlockLength, readyInTransfer);
    bus.command(sdio::readMultipleBlock, round);
    bus.response(sdio::readMultipleBlock, readyInTransfer);
    bus.blockBegin(64);
    bus.command(sdio::stopTransmission, 0);
    bus.response(sdio::stopTransmission, 0xb00);
}

} // namespace

/// A card is identified once, and then read and written; now and then a check or an end bit is wrong, and its functions
/// are used.
void SdioAnalyzer::simulate(Simulation &simulation)
{
    Bus bus(simulation, m_settings);
    bus.stop(16 + simulation.random(64));
    bus.idle(8);
    if (m_sent == 0) {
        identify(bus, m_sent);
    } else if (m_sent % functionsEvery == functionsEvery - 1) {
        useFunctions(bus, m_sent);
    } else {
        transfer(bus, m_sent);
    }
    ++m_sent;
}
