#pragma once

#include "Parallel6800Results.h"

#include <cstdint>

/// A bus with a clock of accesses and a line for their direction.
class Parallel6800Analyzer final : public lux::Decoder<Parallel6800Settings, Parallel6800Results> {
public:
    static constexpr const char *name = "Parallel 6800";

    Parallel6800Analyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    void access(lux::Simulation &simulation, bool isWrite, bool isData, std::uint32_t word);

    std::uint32_t m_sent = 0; ///< commands of the simulation
};
