#pragma once

#include <algorithm>
#include <array>
#include <corvanlux/analyzer/ChannelReader.h>
#include <cstddef>
#include <cstdint>
#include <optional>

/// A time on the line, in 1/4096 of a sample.
using CanTime = std::int64_t;

/// The bit time (ISO 11898-1:2015, 11.3): where bits behind a synchronising edge begin, and where they are looked at.
///
/// Each position is an exact fraction of its own, rounded once. Between two edges from recessive to dominant there are
/// at most ten bits; behind the last one of a frame fewer than 16.
class CanTiming {
public:
    static constexpr unsigned mostBits = 32;
    static constexpr unsigned fractionBits = 12;

    CanTiming() = default;
    /// @param sampleRate  Hz @param bitRate  bits/s @param samplePoint  thousandths of a bit, 1 to 999
    /// @param jumpWidth  thousandths of a bit @param switchPoint  where nodes change the rate, their sample point
    CanTiming(std::int64_t sampleRate, std::int64_t bitRate, std::int64_t samplePoint, std::int64_t jumpWidth,
              std::int64_t switchPoint)
    {
        constexpr std::int64_t parts = 1000;
        for (std::size_t i = 0; i < mostBits; ++i) {
            const auto bit = std::int64_t(i);
            m_start[i] = (bit * sampleRate << fractionBits) / bitRate;
            m_look[i] = ((bit * parts + samplePoint) * sampleRate << fractionBits) / (bitRate * parts);
        }
        m_jumpWidth = (jumpWidth * sampleRate << fractionBits) / (bitRate * parts);
        m_switch = (switchPoint * sampleRate << fractionBits) / (bitRate * parts);
    }
    [[nodiscard]] CanTime start(unsigned bit) const { return m_start[bit % mostBits]; }
    [[nodiscard]] CanTime look(unsigned bit) const { return m_look[bit % mostBits]; }
    [[nodiscard]] CanTime bit() const { return m_start[1]; }
    /// The most that one resynchronisation moves the bits.
    [[nodiscard]] CanTime jumpWidth() const { return m_jumpWidth; }
    /// From the begin of a bit in which the rate changes to that change.
    [[nodiscard]] CanTime switchPoint() const { return m_switch; }

private:
    std::array<CanTime, mostBits> m_start{};
    std::array<CanTime, mostBits> m_look{};
    CanTime m_jumpWidth = 0;
    CanTime m_switch = 0;
};

/// How the bits of a line are found.
struct CanBitTimes {
    CanTiming nominal;
    CanTiming data; ///< behind a recessive BRS
    bool dominantHigh = false;
    /// With few samples a bit: behind the check of a frame, once a fit through its edges tells where its bits are.
    std::optional<CanTiming> fitted = std::nullopt;
};

/// The bits of one frame: synchronised hard at its start, again at edges from recessive to dominant (11.3.2).
class CanLine {
public:
    /// @param atStart  stands on the edge of SOF
    CanLine(const lux::ChannelReader &atStart, const CanBitTimes &times)
        : m_reader(atStart), m_times(&times), m_timing(&times.nominal), m_sync(timeOf(atStart.position()))
    {}

    /// Looks at the next bit. @return false when its sample point lies behind the capture's end
    bool next(bool &recessive)
    {
        lux::Sample look = sampleAt(m_sync + m_timing->look(m_bit));
        while (m_reader.peekEdge() <= look && m_reader.hasEdge()) {
            const lux::Sample edge = m_reader.nextEdge();
            // One synchronisation between two sample points, and only behind a recessive bit.
            if (m_mayJump && m_wasRecessive && isDominant()) {
                resynchronise(timeOf(edge));
                look = sampleAt(m_sync + m_timing->look(m_bit));
            }
        }
        if (look >= m_reader.sampleCount()) {
            return false;
        }
        m_look = look;
        m_mayJump = true;
        m_wasRecessive = recessive = !isDominant();
        ++m_bit;
        return true;
    }
    /// Looks for the next bit, of another node, at `at`. A pulse anywhere in it is that node's, and the bits behind are
    /// counted from its edge; one that begins behind the middle and is longer than two bits is a flag in the bit
    /// behind.
    /// @return false when the capture ends within the bit
    bool nextOfOther(CanTime at, bool &recessive)
    {
        const CanTime middle = m_sync + m_timing->look(m_bit);
        const CanTime end = m_sync + m_timing->start(m_bit + 1);
        if (sampleAt(std::max(at, end)) >= m_reader.sampleCount()) {
            return false;
        }
        recessive = !isDominantAt(sampleAt(at));
        m_look = sampleAt(at);
        m_wasRecessive = true;
        while (m_wasRecessive && timeOf(m_reader.peekEdge()) < end) {
            const CanTime edge = timeOf(m_reader.nextEdge());
            const bool isShort = timeOf(m_reader.peekEdge()) - edge <= 2 * m_timing->bit() + half;
            m_wasRecessive = !isDominant() || (edge > middle && !isShort);
            if (!m_wasRecessive) {
                m_sync = edge - m_timing->start(m_bit);
            }
        }
        ++m_bit;
        return true;
    }
    /// The sample where the last bit was looked at.
    [[nodiscard]] lux::Sample lastLook() const { return m_look; }
    /// The first sample behind the last bit, and so many bits more.
    [[nodiscard]] lux::Sample endOfBit(unsigned more = 0) const
    {
        return sampleAt(m_sync + m_timing->start(m_bit + more) + half);
    }
    /// No bit before that one, counted from the last, is anything but recessive, and the capture has them all.
    [[nodiscard]] bool isRecessiveFor(unsigned bits) const
    {
        const lux::Sample look = sampleAt(m_sync + m_timing->look(m_bit + bits - 1));
        return m_wasRecessive && !isDominant() && look < m_reader.peekEdge();
    }
    /// The bit rate changes in the last bit, in the sample point of the nodes (11.3.1.1), wherever it was looked at.
    void switchToData() { switchTo(m_times->data); }
    void switchToNominal() { switchTo(m_times->nominal); }
    [[nodiscard]] CanTime bitTime() const { return m_timing->bit(); }
    [[nodiscard]] bool wantsFit() const { return m_times->fitted.has_value(); }
    /// Where the next bit begins, by a fit.
    void fit(CanTime nextBegin)
    {
        m_timing = &*m_times->fitted;
        m_sync = nextBegin;
        m_bit = 0;
    }
    [[nodiscard]] const lux::ChannelReader &reader() const { return m_reader; }

private:
    static constexpr CanTime half = CanTime(1) << (CanTiming::fractionBits - 1);

    // An edge at sample p was half a sample earlier on the average, and a time between two samples is seen at the next
    // one as often as at the one before: both together are no change.
    [[nodiscard]] static CanTime timeOf(lux::Sample edge) { return edge << CanTiming::fractionBits; }
    [[nodiscard]] static lux::Sample sampleAt(CanTime time) { return time >> CanTiming::fractionBits; }

    [[nodiscard]] bool isDominant() const { return m_reader.level() == m_times->dominantHigh; }
    /// At a sample that is not before the last bit that was looked at.
    [[nodiscard]] bool isDominantAt(lux::Sample at) const
    {
        lux::ChannelReader ahead(m_reader);
        ahead.seek(at);
        return ahead.level() == m_times->dominantHigh;
    }
    void resynchronise(CanTime edge)
    {
        const CanTime expected = m_sync + m_timing->start(m_bit);
        const CanTime error = edge - expected;
        const CanTime jump = m_timing->jumpWidth();
        m_sync = expected + std::clamp(error, -jump, jump);
        m_bit = 0;
        m_mayJump = false;
    }
    void switchTo(const CanTiming &timing)
    {
        const CanTime change = m_sync + m_timing->start(m_bit - 1) + m_timing->switchPoint();
        m_timing = &timing;
        m_sync = change - timing.switchPoint();
        m_bit = 1;
    }

    lux::ChannelReader m_reader;
    const CanBitTimes *m_times;
    const CanTiming *m_timing;
    CanTime m_sync;     ///< where bit 0 began
    unsigned m_bit = 0; ///< the next bit, counted from the last synchronisation
    lux::Sample m_look = 0;
    bool m_mayJump = false;
    bool m_wasRecessive = true;
};
