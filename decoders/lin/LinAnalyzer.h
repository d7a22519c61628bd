#pragma once

#include "LinRateFinder.h"
#include "LinResults.h"
#include "common/AsyncLine.h"

#include <cstdint>

/// The frames of a LIN bus: break, sync field, protected identifier, and the answer with its checksum.
class LinAnalyzer final : public lux::Decoder<LinSettings, LinResults> {
public:
    static constexpr const char *name = "LIN";
    /// A bit with fewer samples cannot be told from its neighbours.
    static constexpr std::int64_t leastSamplesPerBit = 3;

    LinAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// The bit times that are in use: that of the settings, or that of a sender whose sync field differs from it.
    struct Clock {
        lux::BitGrid nominal;
        lux::BitGrid measured;
        lux::Sample measuredEight = 0; ///< samples of eight bits, for which `measured` was made
        lux::Sample spike = 1;         ///< shorter pulses are not seen within a break and a sync field
    };

    [[nodiscard]] std::int64_t findBitRate();
    void readHeader(lux::ChannelReader &line, lux::Sample breakFall, Clock &clock);
    [[nodiscard]] const lux::BitGrid *gridOf(const LinSync &sync, Clock &clock) const;
    void readAnswer(lux::AsyncLine &line, const lux::BitGrid &grid, LinFrame &frame, lux::Sample first,
                    lux::Sample &last, bool &isCut);
    void markAnswerWrong(const LinFrame &frame, lux::Sample last);
    [[nodiscard]] bool isWakeUp(const lux::ChannelReader &line, lux::Sample fall, lux::Sample idle,
                                const lux::BitGrid &grid) const;
    void addBreak(lux::Sample first, lux::Sample last, bool hasSync);

    std::uint32_t m_sent = 0; ///< elements of the simulation
};
