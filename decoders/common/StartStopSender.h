#pragma once

#include <algorithm>
#include <corvanlux/analyzer/Simulation.h>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace lux {

/// Both ends of a simulated two-wire bus that StartStopBus reads, at 100 kbit/s (UM10204, table 10; SMBus 3.1, table
/// 13), slower where the sample rate is too low for that.
class StartStopSender {
public:
    /// Both lines rest high.
    StartStopSender(Simulation &simulation, const Channel &clock, const Channel &data)
        : m_simulation(simulation),
          m_clock(simulation.line(clock, true)),
          m_data(simulation.line(data, true)),
          m_rate(std::max<std::int64_t>(1, std::min(standardRate, simulation.sampleRate() / samplesPerBit)))
    {}

    void start()
    {
        m_data.set(true);
        wait(1);
        m_clock.set(true);
        wait(2);
        m_data.set(false);
        wait(2);
        m_clock.set(false);
        wait(1);
    }
    void stop()
    {
        m_data.set(false);
        wait(1);
        m_clock.set(true);
        wait(2);
        m_data.set(true);
        wait(2);
        m_sent.clear();
    }
    void bit(bool value)
    {
        m_data.set(value);
        wait(1);
        m_clock.set(true);
        wait(2);
        m_clock.set(false);
        wait(1);
    }
    /// A byte and the bit of its acknowledgement.
    void byte(std::uint32_t value, bool nack = false)
    {
        for (unsigned i = 8; i > 0; --i) {
            bit((value >> (i - 1) & 1U) != 0);
        }
        bit(nack);
        m_sent.push_back(std::uint8_t(value));
    }
    void bytes(std::initializer_list<std::uint32_t> values)
    {
        for (const std::uint32_t value : values) {
            byte(value);
        }
    }
    /// Three bits of a byte, and no more of it.
    void cutByte()
    {
        bit(true);
        bit(false);
        bit(true);
    }
    /// Both lines go high without a stop, and stay so for quarters of a bit.
    void letGo(std::int64_t quarters)
    {
        m_data.set(true);
        wait(1);
        m_clock.set(true);
        wait(quarters);
    }
    /// Lets quarters of a bit pass.
    void wait(std::int64_t quarters) { m_simulation.holdTime(quarters, m_rate * quartersOfBit); }
    /// The bytes since the last stop, with addresses.
    [[nodiscard]] const std::vector<std::uint8_t> &sent() const { return m_sent; }

private:
    static constexpr std::int64_t standardRate = 100000; ///< bits/s
    static constexpr std::int64_t samplesPerBit = 16;
    static constexpr std::int64_t quartersOfBit = 4;

    Simulation &m_simulation;
    SimulationLine &m_clock;
    SimulationLine &m_data;
    std::int64_t m_rate;
    std::vector<std::uint8_t> m_sent;
};

} // namespace lux
