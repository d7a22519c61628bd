#pragma once

#include "UartResults.h"
#include "common/AsyncLine.h"

#include <cstdint>
#include <vector>

/// Start-stop characters on one or two asynchronous lines.
class UartAnalyzer final : public lux::Decoder<UartSettings, UartResults> {
public:
    static constexpr const char *name = "UART/RS232/485";
    /// A bit with fewer samples cannot be told from its neighbours.
    static constexpr std::int64_t leastSamplesPerBit = 3;

    UartAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// A direction while it is decoded: its next element begins at `next`.
    struct Direction {
        lux::AsyncLine line;
        Channel channel;
        UartResults::Line number;
        lux::Sample next = 0;
        lux::Sample idleFrom = 0; ///< behind the last character; 0 before the first
        bool isIdle = false;      ///< the next element is the pause before the next character
        bool isOver = false;
        bool hasBreak = false;         ///< the next element is a break that began within the last character
        lux::AsyncCharacter late = {}; ///< this break, as far as it lies behind the character
    };

    [[nodiscard]] std::int64_t findBitRate();
    void addDirection(std::vector<Direction> &all, UartResults::Line number, const lux::BitGrid &grid);
    void findNext(Direction &direction) const;
    void addIdle(Direction &direction);
    void addCharacter(Direction &direction);
    [[nodiscard]] std::uint16_t flagsOf(const lux::AsyncCharacter &character) const;

    [[nodiscard]] std::int64_t simulatedRate(std::int64_t sampleRate) const;
    [[nodiscard]] std::uint32_t nextToSend() const;

    bool m_hasAddressBit = false; ///< these two of the settings, for each character
    lux::Sample m_idleShown = 0;  ///< the shortest pause that is shown
    std::uint32_t m_sent = 0;     ///< characters of the simulation
};
