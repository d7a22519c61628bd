#pragma once

#include "LinePart.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

/// Both lines of a bus by the figures of UM10204, 3.1, and SMBus 3.1, 4.3: SDA, on channel 6, changes while SCL, on
/// channel 5, is low; a bit is 10 samples.
class StartStopWire {
public:
    static constexpr std::int64_t sampleRate = 1000000;
    static constexpr std::uint32_t sclChannel = 5;
    static constexpr std::uint32_t sdaChannel = 6;
    static constexpr const char *lines = "scl=5,sda=6";

    StartStopWire() : m_scl(true), m_sda(true) {}
    StartStopWire &wait(std::int64_t samples)
    {
        m_now += samples;
        return *this;
    }
    StartStopWire &scl(bool level)
    {
        m_scl.holdUntil(m_now).set(level);
        return *this;
    }
    StartStopWire &sda(bool level)
    {
        m_sda.holdUntil(m_now).set(level);
        return *this;
    }
    StartStopWire &start()
    {
        sda(true).wait(3).scl(true).wait(4);
        starts.push_back(m_now);
        return sda(false).wait(4).scl(false).wait(1);
    }
    StartStopWire &stop()
    {
        sda(false).wait(3).scl(true).wait(4);
        stops.push_back(m_now);
        return sda(true).wait(10);
    }
    StartStopWire &bit(bool level) { return sda(level).wait(4).scl(true).wait(4).scl(false).wait(2); }
    StartStopWire &byte(unsigned value, bool ack = true)
    {
        bytes.push_back(m_now + 4);
        for (unsigned i = 8; i > 0; --i) {
            bit((value >> (i - 1) & 1U) != 0);
        }
        bit(!ack);
        ends.push_back(m_now - 3);
        return *this;
    }
    StartStopWire &all(std::initializer_list<unsigned> values)
    {
        for (const unsigned value : values) {
            byte(value);
        }
        return *this;
    }
    [[nodiscard]] std::int64_t now() const { return m_now; }
    /// @param length  of what was driven, -1 for all of it @param from  the sample with which the capture begins
    /// @param shift  samples before that @param rate  Hz
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t length = -1, std::int64_t from = 0,
                                                       std::int64_t shift = 0, std::int64_t rate = sampleRate) const
    {
        auto made = std::make_unique<TestCapture>(rate, (length < 0 ? m_now : length) - from + shift);
        addPart(*made, sclChannel, m_scl, from, shift);
        addPart(*made, sdaChannel, m_sda, from, shift);
        return made;
    }

    std::vector<std::int64_t> starts; ///< the edge of each start, and of each stop
    std::vector<std::int64_t> stops;
    std::vector<std::int64_t> bytes; ///< the rise of each byte's first clock, and the last sample of its ninth
    std::vector<std::int64_t> ends;

private:
    EdgeLine m_scl;
    EdgeLine m_sda;
    std::int64_t m_now = 20;
};
