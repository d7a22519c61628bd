#pragma once

#include "UnioResults.h"

#include <cstdint>
#include <cstdlib>

/// A UNI/O bus.
class UnioAnalyzer final : public lux::Decoder<UnioSettings, UnioResults> {
public:
    static constexpr const char *name = "UNI/O";

    UnioAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    static constexpr std::int64_t headerBits = 7; ///< from the middle of a header's first bit to that of its last

    /// The length of a bit, as the start header tells it: seven times it, so that nothing is rounded.
    struct BitTime {
        /// So many quarters of a bit.
        [[nodiscard]] lux::Sample quarters(std::int64_t count) const { return count * seven / (4 * headerBits); }
        /// Whether a distance is that many quarters, give or take one.
        [[nodiscard]] bool isNear(lux::Sample distance, std::int64_t count) const
        {
            return std::abs(distance * 4 * headerBits - count * seven) <= seven;
        }
        lux::Sample seven = 0;
    };
    /// What was found where a bit should be.
    enum class Bit : std::uint8_t { Zero, One, None, CaptureEnd };

    void readMessage(lux::ChannelReader &line, const BitTime &bitTime, lux::Sample middle);
    bool findHeader(const lux::ChannelReader &atRise, BitTime &bitTime, lux::ChannelReader &behind) const;
    [[nodiscard]] static Bit readBit(lux::ChannelReader &line, const BitTime &bitTime, lux::Sample &middle,
                                     std::int64_t bits);
    bool readByte(lux::ChannelReader &line, const BitTime &bitTime, lux::Sample &middle, bool &isAnswered);
    void addByte(std::uint32_t value, unsigned flags, lux::Sample first, lux::Sample last);
    void nameByte(FrameData &frame);

    lux::Sample m_standby = 0;
    lux::Sample m_setup = 0;
    lux::Sample m_headerLow = 0;
    lux::Sample m_shortestBits = 0; ///< of seven bits
    lux::Sample m_longestBits = 0;
    bool m_isInStep = false; ///< the next start header is one
    UnioResults::Role m_next = UnioResults::Device;
    std::uint32_t m_sent = 0; ///< messages of the simulation
};
