#pragma once

#include "SdioBus.h"
#include "SdioResults.h"
#include "SdioTransfer.h"

#include <cstdint>

/// An SD or SDIO bus: commands, responses and, where there is a data line, blocks of data.
class SdioAnalyzer final : public lux::Decoder<SdioSettings, SdioResults> {
public:
    static constexpr const char *name = "SDIO";

    SdioAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    void addToken(const SdioToken &token, SdioTransfer &transfer);
    void readData(SdioDataLines &lines, SdioTransfer &transfer, lux::Sample until, lux::Sample stop);
    bool readBlock(SdioDataLines &lines, SdioTransfer &transfer, lux::Sample stop);
    void answerToWrite(SdioDataLines &lines, lux::Sample until);
    void addBusy(SdioDataLines &lines, lux::Sample until);

    std::uint32_t m_sent = 0; ///< commands of the simulation
};
