#pragma once

#include "BiphaseLine.h"
#include "ManchesterResults.h"

#include <cstdint>
#include <span>

/// Bits of Manchester and biphase codes, as runs or words.
class ManchesterAnalyzer final : public lux::Decoder<ManchesterSettings, ManchesterResults> {
public:
    static constexpr const char *name = "Manchester";
    /// Half a bit with fewer samples cannot be told from a whole one.
    static constexpr std::int64_t leastSamplesPerBit = 4;

    ManchesterAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    [[nodiscard]] double findHalf();
    [[nodiscard]] bool restsHigh();
    [[nodiscard]] std::size_t beginOf(const BiphaseRun &run) const;
    void addRun(const BiphaseRun &run);
    void addBits(std::span<const BiphaseBit> bits, lux::Sample end);
    void addRemote(const BiphaseRun &run);
    void addWords(std::span<const BiphaseBit> bits, lux::Sample end);

    std::uint32_t m_sent = 0; ///< runs of the simulation
};
