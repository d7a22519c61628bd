#pragma once

#include "DmxResults.h"
#include "common/AsyncLine.h"

#include <cstdint>

/// Packets of a DMX512-A line: a break, a mark, a start code and up to 512 slots.
class DmxAnalyzer final : public lux::Decoder<DmxSettings, DmxResults> {
public:
    static constexpr const char *name = "DMX-512";
    /// A bit with fewer samples cannot be told from its neighbours.
    static constexpr std::int64_t leastSamplesPerBit = 2;

    DmxAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// The packet that is being received.
    struct Packet {
        bool isOpen = false;      ///< a break was seen, so that slots can be counted
        std::uint32_t next = 0;   ///< the number of the next slot; 0 is the start code
        lux::Sample breakEnd = 0; ///< the first sample behind the break
        lux::Sample end = 0;      ///< the first sample behind the last slot
    };

    [[nodiscard]] lux::AsyncFormat format() const;
    [[nodiscard]] std::int64_t findBitRate();
    [[nodiscard]] bool fitsStandardRate();
    [[nodiscard]] lux::Sample times(std::int64_t nanoseconds, std::int64_t rate) const;
    void addBreak(const lux::AsyncCharacter &character, Packet &packet);
    void addSlot(const lux::AsyncLine &line, const lux::AsyncCharacter &character, Packet &packet,
                 const lux::BitGrid &grid);

    std::uint32_t m_sent = 0; ///< packets of the simulation
};
