#pragma once

#include "ManchesterSettings.h"
#include "common/FilteredLine.h"

#include <array>
#include <corvanlux/analyzer/ChannelReader.h>
#include <cstddef>
#include <cstdint>
#include <vector>

/// What the time between two edges is, in halves of a bit.
class HalfClock {
public:
    enum Width : unsigned {
        Glitch = 0, ///< too short for half a bit
        Half = 1,
        Full = 2,
        Silence = 3, ///< half a bit at least is missing
    };

    /// @param half  samples of half a bit
    explicit HalfClock(double half)
        : m_half(lux::Sample(half + 0.5)),
          m_least(lux::Sample(leastHalf * half)),
          m_full(lux::Sample(1.5 * half)),
          m_silence(lux::Sample(2.5 * half))
    {}
    [[nodiscard]] Width widthOf(lux::Sample samples) const
    {
        if (samples > m_full) {
            return samples > m_silence ? Silence : Full;
        }
        return samples > m_least ? Half : Glitch;
    }
    [[nodiscard]] lux::Sample half() const { return m_half; }

private:
    static constexpr double leastHalf = 0.4;

    lux::Sample m_half;
    lux::Sample m_least;   ///< no more is a glitch
    lux::Sample m_full;    ///< more is a whole bit
    lux::Sample m_silence; ///< more is none
};

/// A bit of a run.
struct BiphaseBit {
    lux::Sample begin = 0;
    lux::Sample at = 0; ///< the edge that tells it
    bool value = false;
};

/// Bits one behind the other without a silence.
struct BiphaseRun {
    static constexpr std::size_t mostBits = 1 << 20; ///< what is longer is cut into several

    std::vector<BiphaseBit> bits;
    lux::Sample end = 0;       ///< the first sample behind
    lux::Sample leader = -1;   ///< where the leader of an RC-6 frame begins; -1 where it is none
    bool hasViolation = false; ///< ends where the code is violated
};

/// A line on which each bit has an edge of its own: in its middle (Manchester), or where it begins (biphase mark).
///
/// Edges are half a bit or a whole one apart. A whole one lies between two of the edges that each bit has; so it tells
/// which they are, and one between others violates the code. What is the same from bit to bit tells nothing; then the
/// other runs of the capture do. Never leaves the decode at the data's end.
class BiphaseLine {
public:
    static constexpr std::size_t leastBits = 4; ///< fewer are noise

    BiphaseLine(const lux::ChannelReader &line, const HalfClock &clock, BiphaseCode code, ManchesterSense sense,
                bool restsHigh);

    /// The other edge is a 1.
    void invert() { m_oneIsHigh = !m_oneIsHigh; }
    /// The next run. @return false when there is no further one
    [[nodiscard]] bool next(BiphaseRun &run);

private:
    using Votes = std::array<unsigned, 2>;
    enum class End : std::uint8_t { Silence, Violation, Length, CaptureEnd };

    [[nodiscard]] Votes votesFrom(const lux::FilteredLine &line, unsigned mostEdges) const;
    void learn();
    [[nodiscard]] unsigned parityHere();
    [[nodiscard]] bool goToRun();
    [[nodiscard]] End read(BiphaseRun &run);
    [[nodiscard]] bool passLeader();
    [[nodiscard]] bool readTrailer(BiphaseRun &run);
    /// Whether a time is that many halves, give or take half of one.
    [[nodiscard]] bool isHalves(lux::Sample samples, lux::Sample count) const;
    void addAtMiddle(BiphaseRun &run);
    void addAtEnd(BiphaseRun &run) const;
    [[nodiscard]] HalfClock::Width widthHere() const;
    [[nodiscard]] bool isOne(bool level) const { return level == m_oneIsHigh; }

    lux::FilteredLine m_line;
    HalfClock m_clock;
    BiphaseCode m_code;
    ManchesterSense m_sense;
    bool m_restsHigh;
    bool m_oneIsHigh;
    int m_firstEdge = -1;      ///< of runs: 0 is an edge that each bit has, 1 is another; -1 is not known
    bool m_isBegin = true;     ///< nothing was read yet
    bool m_isRestart = false;  ///< the line stands where the next run begins
    bool m_isLonger = false;   ///< the next run goes on with this one
    bool m_hasBegin = false;   ///< a silence was seen before the run
    bool m_isFresh = false;    ///< no run was seen since the line rested
    int m_kept = -1;           ///< the parity that the run before leaves to the next one; -1 for none
    bool m_isTold = false;     ///< the run's own edges tell which those are that each bit has
    lux::Sample m_leader = -1; ///< where the leader before the run begins, -1 for none: its fifth bit is longer
    lux::Sample m_leadIn = 0;  ///< the pulse before the run's first edge
    unsigned m_parity = 0;     ///< of halves from the run's first edge to those that each bit has
    lux::Sample m_lastEnd = 0; ///< of the run before
    // Where the line stands within a run.
    HalfClock::Width m_before = HalfClock::Silence; ///< from the edge before to the one here
    lux::Sample m_previous = 0;                     ///< the edge before
    lux::Sample m_lastOwn = -1;                     ///< the last edge that each bit has; -1 for none
};
