#pragma once

#include "support/DecodeDesk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

// Signals of some protocols, as dense as they can be.

constexpr std::int64_t trafficRate = 100000000; ///< samples/s

/// The lines of a capture while they are written.
class Traffic {
public:
    explicit Traffic(const std::vector<bool> &idleLevels) : m_start(idleLevels), m_now(idleLevels)
    {
        m_edges.resize(idleLevels.size());
    }
    void set(std::size_t line, bool level)
    {
        if (m_now[line] != level) {
            m_now[line] = level;
            m_edges[line].push_back(m_at);
            ++edges;
        }
    }
    void wait(std::int64_t samples) { m_at += samples; }
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t length = 0) const
    {
        auto made = std::make_unique<TestCapture>(trafficRate, std::max(length, m_at + 1));
        for (std::size_t i = 0; i < m_edges.size(); ++i) {
            made->channel(std::uint32_t(i), m_start[i], m_edges[i]);
        }
        return made;
    }
    [[nodiscard]] std::int64_t now() const { return m_at; }
    std::mt19937 random{1};
    std::int64_t edges = 0;

private:
    std::vector<bool> m_start;
    std::vector<bool> m_now;
    std::vector<std::vector<std::int64_t>> m_edges;
    std::int64_t m_at = 10;
};

/// 8N1, ten samples a bit.
inline void addUart(Traffic &to)
{
    const std::uint32_t value = std::uint32_t(to.random() & 0xffU) << 1 | 0x200U;
    for (unsigned i = 0; i < 10; ++i) {
        to.set(0, (value >> i & 1U) != 0);
        to.wait(10);
    }
}

/// Mode 0, eight words a select.
inline void addSpi(Traffic &to)
{
    to.set(3, false);
    to.wait(4);
    for (int i = 0; i < 64; ++i) {
        const std::uint32_t bits = std::uint32_t(to.random());
        to.set(1, (bits & 1U) != 0);
        to.set(2, (bits & 2U) != 0);
        to.wait(4);
        to.set(0, true);
        to.wait(4);
        to.set(0, false);
    }
    to.wait(4);
    to.set(3, true);
    to.wait(8);
}

/// Writes of eight bytes, 80 samples a bit: shorter pulses would be glitches.
inline void addI2c(Traffic &to)
{
    to.set(1, false);
    to.wait(40);
    for (int i = 0; i < 81; ++i) {
        to.set(0, false);
        to.wait(20);
        to.set(1, i % 9 != 8 && (to.random() & 1U) != 0);
        to.wait(20);
        to.set(0, true);
        to.wait(40);
    }
    to.set(0, false);
    to.wait(20);
    to.set(1, false);
    to.wait(20);
    to.set(0, true);
    to.wait(40);
    to.set(1, true);
    to.wait(200);
}
