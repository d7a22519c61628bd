#pragma once

#include "support/DecodeDesk.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Writes start-stop characters as they are on the wire; times in bits, kept as they are.
class AsyncSender {
public:
    explicit AsyncSender(double samplesPerBit, bool idleHigh = true)
        : m_line(idleHigh), m_width(samplesPerBit), m_idleHigh(idleHigh)
    {}
    AsyncSender &idle(double bits) { return level(true, bits); }
    AsyncSender &low(double bits) { return level(false, bits); }
    /// Start bit, the bits in the order of time ("10000010"), then so many stop bits.
    AsyncSender &raw(const std::string &bits, double stopBits = 1)
    {
        starts.push_back(now());
        low(1);
        for (const char bit : bits) {
            level(bit == '1', 1);
        }
        return idle(stopBits);
    }
    /// Eight data bits, the lowest first.
    AsyncSender &byte(unsigned value, double stopBits = 1)
    {
        std::string bits;
        for (unsigned i = 0; i < 8; ++i) {
            bits += (value >> i & 1U) != 0 ? '1' : '0';
        }
        return raw(bits, stopBits);
    }
    AsyncSender &bytes(const std::vector<unsigned> &values, double stopBits = 1)
    {
        for (const unsigned value : values) {
            byte(value, stopBits);
        }
        return *this;
    }
    /// Bits of another width from here on.
    AsyncSender &width(double samplesPerBit)
    {
        m_width = samplesPerBit;
        return *this;
    }
    [[nodiscard]] std::int64_t now() const { return std::int64_t(std::ceil(m_time)); }
    [[nodiscard]] const EdgeLine &line() const { return m_line; }

    std::vector<std::int64_t> starts; ///< the sample of each start edge

private:
    AsyncSender &level(bool mark, double bits)
    {
        m_line.holdUntil(now()).set(mark == m_idleHigh);
        m_time += bits * m_width;
        m_line.holdUntil(now());
        return *this;
    }

    EdgeLine m_line;
    double m_width;
    double m_time = 0;
    bool m_idleHigh;
};

/// A run on one line, which is channel 3; `settings` begins with the line's key: "rx=3,baudrate=9600".
class DecodedLine : public DecodeDesk {
public:
    DecodedLine(std::unique_ptr<Analyzer> decoder, const EdgeLine &line, const std::string &settings,
                std::int64_t sampleRate, std::int64_t length = -1)
        : DecodeDesk(std::move(decoder), settings), m_capture(sampleRate, length < 0 ? line.position() : length)
    {
        m_capture.channel(3, line);
        run(m_capture);
    }

private:
    TestCapture m_capture;
};
