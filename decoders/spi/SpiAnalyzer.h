#pragma once

#include "SpiResults.h"
#include "common/SelectSpans.h"

#include <cstdint>

/// A serial peripheral interface with any of its lines missing but the clock.
class SpiAnalyzer final : public lux::Decoder<SpiSettings, SpiResults> {
public:
    static constexpr const char *name = "SPI";

    SpiAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// A word while its bits come in.
    struct Word {
        lux::Sample first = 0;
        lux::Sample last = 0;
        std::uint64_t mosi = 0; ///< the first bit is the highest
        std::uint64_t miso = 0;
        unsigned count = 0;
    };

    void readSpan(const lux::SelectSpan &span, lux::ChannelReader &clk, lux::ChannelReader &mosi,
                  lux::ChannelReader &miso);
    void skipCutWord(const lux::SelectSpan &span, lux::ChannelReader &clk) const;
    void addWord(const Word &word, SpiResults::Kind kind, bool isFirst);
    [[nodiscard]] std::uint64_t inOrder(std::uint64_t bits, unsigned count) const;

    void sendWord(lux::Simulation &simulation, unsigned bits);

    std::uint32_t m_sent = 0; ///< words of the simulation
};
