#pragma once

#include "Parallel8080Results.h"

#include <cstdint>

/// A bus with a strobe for writing and one for reading.
class Parallel8080Analyzer final : public lux::Decoder<Parallel8080Settings, Parallel8080Results> {
public:
    static constexpr const char *name = "Parallel 8080";

    Parallel8080Analyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    void access(lux::Simulation &simulation, bool isWrite, bool isData, std::uint32_t word);

    std::uint32_t m_sent = 0; ///< commands of the simulation
};
