#include "MidiSimulation.h"

#include "MidiAnalyzer.h"

#include <array>

using lux::Simulation;
using lux::SimulationLine;

MidiSimulated MidiSimulated::of(std::uint32_t number)
{
    struct Kind {
        std::uint8_t status; ///< 0 for the running one
        std::uint32_t dataBytes;
    };
    static constexpr std::array<Kind, 16> kinds = {{{0x90, 2},
                                                    {0, 2},
                                                    {0, 2},
                                                    {0xb0, 2},
                                                    {0xc0, 1},
                                                    {0xe0, 2},
                                                    {0x80, 2},
                                                    {0xa0, 2},
                                                    {0xd0, 1},
                                                    {0xf8, 0},
                                                    {0xf1, 1},
                                                    {0xf2, 2},
                                                    {0xf0, 0},
                                                    {0xf3, 1},
                                                    {0xf6, 0},
                                                    {0x90, 1}}}; // an error
    const Kind &kind = kinds[number % kinds.size()];
    const std::uint32_t round = std::uint32_t(number / kinds.size());
    MidiSimulated made;
    if (kind.status != 0) {
        const bool isOfChannel = kind.status < MidiParser::systemExclusive;
        made.bytes.push_back(std::uint8_t(kind.status | (isOfChannel ? round & 0x0fU : 0U)));
    }
    for (std::uint32_t i = 0; i < kind.dataBytes; ++i) {
        made.bytes.push_back(std::uint8_t(i == 0 ? number * 11 & 0x7fU : 1 + number * 7 % 0x7fU));
    }
    if (kind.status == MidiParser::systemExclusive) {
        made.bytes.push_back(0x7d);
        for (std::uint32_t i = 0; i < round % 40; ++i) {
            made.bytes.push_back(std::uint8_t((number + i * 5) & 0x7fU));
        }
        made.bytes.push_back(MidiParser::endOfExclusive);
    }
    made.isError = number % kinds.size() == kinds.size() - 1;
    if (made.isError) {
        made.makeWrong(round);
    }
    if (!made.hasFramingError && number % 5 == 4 && made.bytes.size() > 1) {
        made.realTime = std::uint8_t(MidiParser::firstRealTime + number / 5 % 8);
    }
    return made;
}

/// The element is a note whose last byte is missing, behind a message that leaves no status to run on.
void MidiSimulated::makeWrong(std::uint32_t round)
{
    enum Form : std::uint32_t { Incomplete, NoStopBit, NoStatus, Undefined, NothingToEnd };
    switch (round % (NothingToEnd + 1)) {
    case NoStopBit:
        hasFramingError = true;
        bytes.push_back(std::uint8_t(1 + round % 0x7fU)); // a zero would be a break
        break;
    case NoStatus:
        bytes[0] = std::uint8_t(round & 0x7fU);
        break;
    case Undefined:
        bytes[0] = round % 2 == 0 ? 0xf4 : 0xf5;
        break;
    case NothingToEnd:
        bytes = {MidiParser::endOfExclusive};
        break;
    default:
        break;
    }
}

void MidiAnalyzer::simulate(Simulation &simulation)
{
    const std::int64_t rate =
        m_settings.baudrate.value() != 0 ? m_settings.baudrate.value() : MidiSettings::standardRate;
    const bool idle = !m_settings.invert;
    SimulationLine &line = simulation.line(m_settings.rx, idle);
    if (simulation.sampleRate() < leastSamplesPerBit * rate) {
        simulation.hold(simulation.sampleRate()); // no bit could be told
        return;
    }
    const auto send = [&](bool mark, std::int64_t bits) {
        line.set(mark == idle);
        simulation.holdTime(bits, rate);
    };
    const auto sendByte = [&](unsigned byte, bool hasStop = true) {
        send(false, 1);
        for (unsigned i = 0; i < 8; ++i) {
            send((byte >> i & 1U) != 0, 1);
        }
        if (!hasStop) {
            send(false, 1);
        }
        send(true, 1 + simulation.random(2));
    };
    const std::uint32_t number = m_sent++;
    const MidiSimulated next = MidiSimulated::of(number);
    if (number % 4 == 0) {
        send(true, 20 + simulation.random(100));
    }
    for (std::size_t i = 0; i < next.bytes.size(); ++i) {
        if (next.realTime != 0 && i + 1 == next.bytes.size()) {
            sendByte(next.realTime);
        }
        sendByte(next.bytes[i], !next.hasFramingError || i + 1 < next.bytes.size());
    }
}
