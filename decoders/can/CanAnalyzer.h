#pragma once

#include "CanReceiver.h"
#include "CanResults.h"

#include <cstdint>
#include <vector>

/// Frames of a CAN line, classic and FD.
class CanAnalyzer final : public lux::Decoder<CanSettings, CanResults> {
public:
    static constexpr const char *name = "CAN";
    /// A bit with fewer samples cannot be told from its neighbours.
    static constexpr std::int64_t leastSamplesPerBit = 2;

    CanAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    void chooseTimes();
    void decodeFrames(lux::ChannelReader &line);
    void lookAgain(CanReceiver &receiver, const lux::ChannelReader &atStart) const;
    void add(const CanReceiver &receiver, lux::Sample end);
    void markBits(const CanReceiver &receiver);
    [[nodiscard]] bool isOverload(const lux::ChannelReader &line, lux::Sample frameEnd) const;
    [[nodiscard]] lux::Sample flagBegin(const lux::ChannelReader &line, lux::Sample detected) const;
    [[nodiscard]] bool beginsBetweenFrames(lux::ChannelReader line) const;
    void waitForIdle(lux::ChannelReader &line);
    void recover(lux::ChannelReader &line, lux::Sample from, CanResults::Kind kind);
    [[nodiscard]] CanRates simulatedRates(std::int64_t sampleRate) const;
    [[nodiscard]] bool isDominant(const lux::ChannelReader &line) const { return line.level() == m_times.dominantHigh; }
    /// So many thousandths of a nominal bit, in whole samples.
    [[nodiscard]] lux::Sample samplesIn(std::int64_t thousandths) const
    {
        return (thousandths * m_times.nominal.bit() / 1000) >> CanTiming::fractionBits;
    }

    CanBitTimes m_times;
    std::vector<CanBitTimes> m_looks; ///< the first is `m_times`
    std::uint32_t m_sent = 0;         ///< frames of the simulation
};
