#include "MidiSimulation.h"

#include "MidiAnalyzer.h"

using lux::Simulation;
using lux::SimulationLine;

MidiSimulated MidiSimulated::of(std::uint32_t number)
{
    constexpr std::uint32_t kinds = 16;
    const auto channel = std::uint8_t(number / kinds & 0x0fU);
    const auto first = std::uint8_t(number * 11 & 0x7fU);
    const auto second = std::uint8_t(1 + number * 7 % 0x7fU);
    const auto channelMessage = [&](unsigned kind) { return std::uint8_t(kind | channel); };
    MidiSimulated made;
    switch (number % kinds) {
    case 0:
        made.bytes = {channelMessage(0x90), first, second};
        break;
    case 1:
    case 2:
        made.bytes = {first, second}; // on the running status
        break;
    case 3:
        made.bytes = {channelMessage(0xb0), first, second};
        break;
    case 4:
        made.bytes = {channelMessage(0xc0), first};
        break;
    case 5:
        made.bytes = {channelMessage(0xe0), first, second};
        break;
    case 6:
        made.bytes = {channelMessage(0x80), first, second};
        break;
    case 7:
        made.bytes = {channelMessage(0xa0), first, second};
        break;
    case 8:
        made.bytes = {channelMessage(0xd0), first};
        break;
    case 9:
        made.bytes = {0xf8};
        break;
    case 10:
        made.bytes = {0xf1, first};
        break;
    case 11:
        made.bytes = {0xf2, first, second};
        break;
    case 12:
        made.bytes = {0xf0, 0x7d};
        for (std::uint32_t i = 0; i < number / kinds % 40; ++i) {
            made.bytes.push_back(std::uint8_t((number + i * 5) & 0x7fU));
        }
        made.bytes.push_back(0xf7);
        break;
    case 13:
        made.bytes = {0xf3, first};
        break;
    case 14:
        made.bytes = {0xf6};
        break;
    default:
        made.bytes = {channelMessage(0x90), first}; // its last byte is missing
        made.isError = true;
        break;
    }
    if (number % 5 == 4 && made.bytes.size() > 1) {
        made.realTime = number % 2 == 0 ? 0xfe : 0xf8;
    }
    return made;
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
    const auto sendByte = [&](unsigned byte) {
        send(false, 1);
        for (unsigned i = 0; i < 8; ++i) {
            send((byte >> i & 1U) != 0, 1);
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
        sendByte(next.bytes[i]);
    }
}
