#pragma once

#include "ParallelResults.h"

#include <cstdint>

/// A bus whose words are taken at a clock's edges, or wherever its lines have settled.
class ParallelAnalyzer final : public lux::Decoder<ParallelSettings, ParallelResults> {
public:
    static constexpr const char *name = "Parallel";

    ParallelAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    void readClocked();
    void readChanges();
    void addWord(lux::Sample first, lux::Sample last, std::uint64_t word);
    [[nodiscard]] bool isEnabledLevel(bool high) const { return high == (m_settings.enableLevel == EnableLevel::High); }

    lux::BusLines m_address;
    std::uint32_t m_sent = 0; ///< words of the simulation
};
