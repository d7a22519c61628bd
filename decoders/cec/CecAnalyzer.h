#pragma once

#include "CecResults.h"
#include "common/FilteredLine.h"

#include <array>
#include <cstdint>

/// The consumer electronics control line of HDMI.
class CecAnalyzer final : public lux::Decoder<CecSettings, CecResults> {
public:
    static constexpr const char *name = "HDMI CEC";

    CecAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    static constexpr std::size_t mostBlocks = 16; ///< CEC 6: a header, an opcode, 14 operands

    /// A length from here to there, both included, in samples.
    struct Range {
        [[nodiscard]] bool has(lux::Sample length) const { return length >= least && length <= most; }
        lux::Sample least = 0;
        lux::Sample most = 0;
    };
    /// One bit: the line is low from its begin on.
    struct Bit {
        lux::Sample fall = 0;
        lux::Sample rise = 0;
        lux::Sample next = 0; ///< the next fall, or the capture's length
        bool hasNext = false;
        bool isEnd = false; ///< the capture ends before its value is known
    };
    /// A message while it is received.
    struct Message {
        std::uint64_t place = 0;
        lux::Sample first = 0;
        lux::Sample last = 0;
        std::array<std::uint8_t, mostBlocks> blocks{};
        std::size_t count = 0;
        std::uint64_t acknowledged = 0;
        bool isLast = false; ///< of the last block: EOM
        unsigned flags = 0;
    };
    enum class BlockEnd : std::uint8_t { Good, Cut, LineError, CaptureEnd };

    void decodeLine(lux::FilteredLine line);
    static Bit readBit(lux::FilteredLine &line);
    bool readMessage(lux::FilteredLine &line, const Bit &start, Bit &after);
    BlockEnd readBlock(lux::FilteredLine &line, Message &message, Bit &bit);
    [[nodiscard]] static bool isForAll(const Message &message, std::uint32_t bits);
    void addBlock(Message &message, std::uint32_t bits, lux::Sample first, lux::Sample last, bool isTimingWrong);
    void addMessage(const Message &message, BlockEnd end);
    [[nodiscard]] bool isStart(const Bit &bit) const;

    Range m_startLow;
    Range m_startLength;
    Range m_oneLow;
    Range m_zeroLow;
    Range m_bitLength;
    lux::Sample m_look = 0;
    lux::Sample m_usualBit = 0;
    lux::Sample m_leastErrorLow = 0;
    std::uint32_t m_sent = 0; ///< messages of the simulation
};
