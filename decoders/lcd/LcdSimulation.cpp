#include "LcdAnalyzer.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

using lux::Simulation;

namespace {

constexpr unsigned ofNibble = 4;
constexpr std::int64_t pulsesPerSecond = 500000; ///< HD44780U data sheet, table "Bus timing": a cycle is 1000 ns
constexpr std::int64_t samplesPerPulse = 8;
constexpr std::int64_t partsOfPulse = 4;
constexpr std::int64_t pulsesOfExecution = 20; ///< an instruction takes 37 us
constexpr std::uint32_t halfEvery = 8;         ///< lines of text
constexpr std::uint32_t graphicEvery = 4;      ///< lines of text
constexpr std::string_view text = "Hello, world! ";

} // namespace

/// What each controller is told at the start, then line after line.
void LcdAnalyzer::simulate(Simulation &simulation)
{
    if (m_sent == 0) {
        simulation.line(m_settings.rs, false).set(false);
        simulation.line(m_settings.rw, false).set(false);
    }
    if (m_settings.controller == LcdController::Ks0108) {
        simulateGraphic(simulation);
        return;
    }
    if (m_sent == 0) {
        simulateStartUp(simulation);
    }
    simulateText(simulation);
    if (m_settings.controller == LcdController::St7920 && m_sent % graphicEvery == 0) {
        // The extended set, a place in the graphic memory, two bytes, the basic set (ST7920 data sheet, table 7).
        for (const std::uint32_t code : {0x34U, 0x36U, 0x80U, 0x85U}) {
            send(simulation, code, false, false);
        }
        send(simulation, m_sent & 0xffU, true, false);
        send(simulation, 0xaa, true, false);
        send(simulation, 0x30, false, false);
    }
}

/// The start-up of figure 23 or 24.
void LcdAnalyzer::simulateStartUp(Simulation &simulation)
{
    const bool isNibble = m_settings.bus().size() == ofNibble;
    for (const std::uint32_t code : {0x30U, 0x30U, 0x30U, 0x20U}) {
        if (isNibble) {
            pulse(simulation, code >> ofNibble);
        } else if (code != 0x20U) {
            pulse(simulation, code);
        }
    }
    for (const std::uint32_t code : {isNibble ? 0x28U : 0x38U, 0x0cU, 0x01U, 0x06U}) {
        send(simulation, code, false, false);
    }
}

/// A line of text, with a look at the busy flag before; with four lines now and then half a byte before that, which
/// stands alone.
void LcdAnalyzer::simulateText(Simulation &simulation)
{
    const bool hasRead = m_settings.rw.isDefined();
    if (m_settings.bus().size() == ofNibble && m_sent % halfEvery == halfEvery - 1) {
        simulation.line(m_settings.rs, false).set(true);
        simulation.line(m_settings.rw, false).set(false);
        pulse(simulation, 4);
    }
    if (hasRead) {
        send(simulation, 0x80U | (m_sent & 0x7fU), false, true);
        send(simulation, m_sent & 0x7fU, false, true);
    }
    const std::uint32_t line = m_sent++ % 2;
    send(simulation, 0x80U | line << 6, false, false);
    for (const char c : text) {
        send(simulation, std::uint8_t(c), true, false);
    }
    send(simulation, '0' + m_sent % 10, true, false);
    if (hasRead) {
        send(simulation, m_sent & 0xffU, true, true);
    }
}

/// A page of one half after the other (KS0108B data sheet, display control instruction).
void LcdAnalyzer::simulateGraphic(Simulation &simulation)
{
    constexpr std::uint32_t pages = 8;
    const std::uint32_t number = m_sent++;
    const bool isRight = number % 2 != 0;
    simulation.line(m_settings.cs1, true).set(!isRight);
    simulation.line(m_settings.cs2, false).set(isRight);
    if (number < 2) {
        send(simulation, 0x3f, false, false);
        send(simulation, 0xc0, false, false);
    }
    if (m_settings.rw.isDefined()) {
        send(simulation, 0, false, true);
    }
    send(simulation, 0xb8U | number / 2 % pages, false, false);
    send(simulation, 0x40, false, false);
    for (std::uint32_t i = 0; i < pages; ++i) {
        send(simulation, (number + i) & 0xffU, true, false);
    }
}

void LcdAnalyzer::send(Simulation &simulation, std::uint32_t value, bool isData, bool isRead)
{
    simulation.line(m_settings.rs, false).set(isData);
    simulation.line(m_settings.rw, false).set(isRead);
    if (m_settings.bus().size() == ofNibble) {
        nibble(simulation, value >> ofNibble);
        nibble(simulation, value & 0xfU);
        simulation.holdTime(pulsesOfExecution, pulsesPerSecond);
    } else {
        pulse(simulation, value);
    }
}

void LcdAnalyzer::pulse(Simulation &simulation, std::uint32_t value)
{
    nibble(simulation, value);
    simulation.holdTime(pulsesOfExecution, pulsesPerSecond);
}

/// One access: the value is there before E falls and a quarter of a pulse longer.
void LcdAnalyzer::nibble(Simulation &simulation, std::uint32_t value)
{
    const std::int64_t rate =
        std::max<std::int64_t>(1, std::min(pulsesPerSecond, simulation.sampleRate() / samplesPerPulse)) * partsOfPulse;
    simulation.line(m_settings.cs1, true);
    simulation.line(m_settings.cs2, false);
    simulation.holdTime(1, rate);
    simulation.line(m_settings.e, false).set(true);
    std::uint32_t bit = 0;
    for (const Channel &line : m_settings.bus()) {
        simulation.line(line, false).set((value >> bit++ & 1U) != 0);
    }
    simulation.holdTime(2, rate);
    simulation.line(m_settings.e, false).set(false);
    simulation.holdTime(1, rate);
}
