#pragma once

#include "SwiResults.h"

#include <cstdint>
#include <vector>

/// The single-wire interface of Atmel's security devices.
class SwiAnalyzer final : public lux::Decoder<SwiSettings, SwiResults> {
public:
    static constexpr const char *name = "Atmel SWI";

    SwiAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// What the next byte is.
    enum class Stage : std::uint8_t {
        Lost, ///< not known: a wake pulse or a long pause is waited for
        Flag,
        CommandCount,
        AnswerCount,
        Block
    };
    /// A bit: a low pulse at its begin, and for a 0 another one right behind it.
    struct Token {
        lux::Sample first = 0;
        lux::Sample last = 0;
        bool bit = false;
    };

    void setTimes();
    template<class Line>
    void decodeLine(Line line);
    template<class Line>
    bool readToken(Line &line, lux::Sample fall, lux::Sample rise, Token &token) const;
    void takeToken(const Token &token);
    void takeByte();
    void takeFlag(FrameData &frame);
    void takeBlockByte(FrameData &frame);
    void endBlock();
    void breakOff(lux::Sample at, Stage next);

    lux::Sample m_mostLow = 0; ///< of a pulse of a token; this and the next are in samples
    lux::Sample m_zeroWindow = 0;
    lux::Sample m_tokenTime = 0;
    lux::Sample m_leastWake = 0;
    lux::Sample m_leastRest = 0;
    lux::Sample m_mostAnswer = 0;
    lux::Sample m_timeout = 0;

    Stage m_stage = Stage::Lost;
    std::uint32_t m_value = 0; ///< of the byte at hand, and the bits of it that are there
    unsigned m_count = 0;
    lux::Sample m_first = 0;
    lux::Sample m_lastToken = 0; ///< the fall of the last token
    lux::Sample m_last = 0;      ///< its end
    std::vector<std::uint8_t> m_block;
    std::uint64_t m_place = 0;
    lux::Sample m_blockFirst = 0;
    bool m_isAnswer = false;
    std::uint32_t m_sent = 0; ///< exchanges of the simulation
};
