#pragma once

#include "LinePart.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Several lines that a test drives in step, on channels from 0 on.
class WireBundle {
public:
    /// @param idleHigh  bit i: whether line i begins high
    explicit WireBundle(std::uint32_t count, std::uint64_t idleHigh = 0)
    {
        for (std::uint32_t i = 0; i < count; ++i) {
            m_lines.emplace_back((idleHigh >> i & 1U) != 0);
        }
    }
    WireBundle &wait(std::int64_t samples)
    {
        m_now += samples;
        return *this;
    }
    WireBundle &set(std::uint32_t line, bool high)
    {
        m_lines[line].holdUntil(m_now).set(high);
        return *this;
    }
    /// Bit i of the value on line `first` + i.
    WireBundle &bus(std::uint32_t first, std::uint32_t width, std::uint64_t value)
    {
        for (std::uint32_t i = 0; i < width; ++i) {
            set(first + i, (value >> i & 1U) != 0);
        }
        return *this;
    }
    [[nodiscard]] bool level(std::uint32_t line) const { return m_lines[line].level(); }
    [[nodiscard]] std::int64_t now() const { return m_now; }
    /// @param length  of what was driven, -1 for all of it @param from  the sample with which the capture begins
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t sampleRate, std::int64_t length = -1,
                                                       std::int64_t from = 0) const
    {
        auto made = std::make_unique<TestCapture>(sampleRate, (length < 0 ? m_now : length) - from, 64);
        for (std::uint32_t i = 0; i < m_lines.size(); ++i) {
            addPart(*made, i, m_lines[i], from);
        }
        return made;
    }

private:
    std::vector<EdgeLine> m_lines;
    std::int64_t m_now = 0;
};

/// A run of a decoder on what a bundle drove.
template<class AnalyzerType>
class BundleDesk : public DecodeDesk {
public:
    BundleDesk(const WireBundle &wires, const std::string &settings, std::int64_t sampleRate = 1000000,
               std::int64_t length = -1, std::int64_t from = 0)
        : DecodeDesk(std::make_unique<AnalyzerType>(), settings), m_capture(wires.capture(sampleRate, length, from))
    {
        run(*m_capture);
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};
