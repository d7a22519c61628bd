#include "ModbusSimulation.h"

#include "ModbusAnalyzer.h"

#include <iterator>
#include <numeric>

using lux::BitGrid;
using lux::Parity;
using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t simulatedAutoRate = 19200;
constexpr std::uint32_t exceptionEvery = 9;
constexpr std::uint32_t wrongCheckEvery = 23;
constexpr std::uint32_t mishapEvery = 7; ///< exchanges, too

void addWord(std::vector<std::uint8_t> &bytes, std::uint32_t word)
{
    bytes.push_back(std::uint8_t(word >> 8));
    bytes.push_back(std::uint8_t(word));
}

void addData(std::vector<std::uint8_t> &bytes, std::uint32_t seed, std::size_t count)
{
    bytes.push_back(std::uint8_t(count));
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(std::uint8_t(seed * std::size_t(13) + i * 29));
    }
}

} // namespace

ModbusSimulated ModbusSimulated::of(std::uint32_t number)
{
    const std::uint32_t exchange = number / 2;
    const std::uint32_t count = 1 + exchange % 10;
    const bool hasException = exchange % exceptionEvery == exceptionEvery - 1;
    ModbusSimulated made;
    made.isResponse = number % 2 == 1;
    made.isCheckWrong = made.isResponse && exchange % wrongCheckEvery == wrongCheckEvery - 1;
    static constexpr ModbusMishap mishaps[] = {ModbusMishap::Parity, ModbusMishap::Framing, ModbusMishap::Pause,
                                               ModbusMishap::Cut};
    if (made.isResponse && exchange % mishapEvery == mishapEvery - 1) {
        made.mishap = mishaps[exchange / mishapEvery % std::size(mishaps)];
    }
    static constexpr std::uint8_t functions[] = {3, 4, 1, 2, 6, 16, 5, 15};
    const std::uint8_t function = functions[exchange % sizeof functions];
    made.bytes = {std::uint8_t(1 + exchange % 20), function};
    if (made.isResponse && hasException) {
        made.bytes[1] |= 0x80U;
        made.bytes.push_back(std::uint8_t(1 + exchange % 4));
        return made;
    }
    const bool isRead = function <= 4;
    const bool isOfBits = function <= 2 || function == 15;
    if (made.isResponse && isRead) {
        addData(made.bytes, exchange, isOfBits ? (count + 7) / 8 : 2 * std::size_t(count));
        return made;
    }
    addWord(made.bytes, exchange * 7);
    if (function == 5) {
        addWord(made.bytes, exchange % 2 == 0 ? 0xff00 : 0);
    } else {
        addWord(made.bytes, function == 6 ? exchange * 77 : count);
    }
    if (!made.isResponse && (function == 15 || function == 16)) {
        addData(made.bytes, exchange, isOfBits ? (count + 7) / 8 : 2 * std::size_t(count));
    }
    return made;
}

/// A master that polls its slaves. With two lines the requests are on TX, unless RX is said to be the master's.
void ModbusAnalyzer::simulate(Simulation &simulation)
{
    const std::int64_t rate = m_settings.baudrate.value() != 0 ? m_settings.baudrate.value() : simulatedAutoRate;
    SimulationLine &rx = simulation.line(m_settings.rx, !m_settings.invertRx);
    SimulationLine &tx = simulation.line(m_settings.tx, !m_settings.invertTx);
    if (simulation.sampleRate() < leastSamplesPerBit * rate) {
        simulation.hold(simulation.sampleRate()); // no character could be told
        return;
    }
    const ModbusSimulated next = ModbusSimulated::of(m_sent++);
    const bool hasBoth = m_settings.rx.isDefined() && m_settings.tx.isDefined();
    const bool isOnRx =
        hasBoth ? next.isResponse != (m_settings.role == ModbusRole::Master) : m_settings.rx.isDefined();
    const bool idle = isOnRx ? !m_settings.invertRx : !m_settings.invertTx;
    SimulationLine &line = isOnRx ? rx : tx;
    const lux::AsyncFormat format = m_settings.format(!idle);
    const auto send = [&](bool mark, std::int64_t quarters) {
        line.set(mark == idle);
        simulation.holdTime(quarters, rate * BitGrid::quarters);
    };
    const auto sendByte = [&](unsigned byte, ModbusMishap mishap = ModbusMishap::None) {
        send(false, BitGrid::quarters);
        for (unsigned i = 0; i < format.dataBits; ++i) {
            send((byte >> i & 1U) != 0, BitGrid::quarters);
        }
        if (format.parity != Parity::None) {
            send(parityBit(byte, format.parity) != (mishap == ModbusMishap::Parity), BitGrid::quarters);
        }
        if (mishap == ModbusMishap::Framing) {
            send(false, BitGrid::quarters);
        }
        send(true, format.stopQuarters);
    };
    send(true, std::int64_t(BitGrid::quarters) * (50 + simulation.random(60))); // more than 3.5 characters of 11 bits
    simulation.holdTime(2, 1000);                                               // and more than 1.75 ms
    const std::vector<std::uint8_t> wire = next.wire(m_settings.mode);
    for (std::size_t i = 0; i < wire.size(); ++i) {
        const bool isLast = i + 1 == wire.size();
        sendByte(wire[i], isLast ? next.mishap : ModbusMishap::None);
        if (i == 1 && next.mishap == ModbusMishap::Pause && m_settings.mode == ModbusMode::Rtu) {
            // Two characters, or 1 ms on fast lines: more than 1.5 and less than 3.5 (750 us and 1.75 ms).
            simulation.holdTime(2, std::min<std::int64_t>(rate / 11, 2000));
        }
    }
}

/// The characters, with CRC or LRC.
std::vector<std::uint8_t> ModbusSimulated::wire(ModbusMode mode) const
{
    std::vector<std::uint8_t> all = bytes;
    if (mishap == ModbusMishap::Cut) {
        all.resize(2);
    } else if (mode == ModbusMode::Rtu) {
        const std::uint32_t crc = ModbusCrc::of(bytes) ^ (isCheckWrong ? 0x100U : 0U);
        all.push_back(std::uint8_t(crc));
        all.push_back(std::uint8_t(crc >> 8));
    } else {
        all.push_back(std::uint8_t(0U - std::accumulate(bytes.begin(), bytes.end(), isCheckWrong ? 1U : 0U)));
    }
    if (mode == ModbusMode::Rtu) {
        return all;
    }
    std::vector<std::uint8_t> text = {':'};
    for (const std::uint8_t byte : all) {
        text.push_back(std::uint8_t("0123456789ABCDEF"[byte >> 4]));
        text.push_back(std::uint8_t("0123456789ABCDEF"[byte & 15U]));
    }
    if (mishap != ModbusMishap::Cut) {
        text.push_back('\r');
        text.push_back('\n');
    }
    return text;
}
