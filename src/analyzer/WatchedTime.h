#pragma once

#include <algorithm>
#include <chrono>

/// Time as it counts against a decoder that is waited for: it passes from look to look, and between two looks no more
/// than a step. So a machine that stood still, with the decoder, blames nobody for it. One thread.
class WatchedTime {
public:
    using Milliseconds = std::chrono::milliseconds;

    /// @param step  longer than it mostly takes from look to look
    explicit WatchedTime(Milliseconds step) : m_step(step) {}

    /// To be called every now and then. @return what has passed since the beginning
    Milliseconds look()
    {
        const Clock::time_point now = Clock::now();
        m_passed += std::min<Clock::duration>(now - m_last, m_step);
        m_last = now;
        return passed();
    }
    /// The same as of the last look.
    [[nodiscard]] Milliseconds passed() const { return std::chrono::duration_cast<Milliseconds>(m_passed); }

private:
    using Clock = std::chrono::steady_clock;

    Clock::duration m_step;
    Clock::duration m_passed{0};
    Clock::time_point m_last = Clock::now();
};
