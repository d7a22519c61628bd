#pragma once

#include "LcdMemory.h"
#include "LcdResults.h"

#include <cstdint>
#include <vector>

/// A character or graphic display on a bus of four or eight lines.
class LcdAnalyzer final : public lux::Decoder<LcdSettings, LcdResults> {
public:
    static constexpr const char *name = "LCD1602/12864";

    LcdAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// What one pulse of E transfers: four or eight bits.
    struct Access {
        lux::Sample first = 0;
        lux::Sample last = 0;
        std::uint8_t value = 0;
        bool isData = false;
        bool isRead = false;
        std::uint8_t halves = 0; ///< of a KS0108: bit 0 for CS1, bit 1 for CS2

        [[nodiscard]] bool isInstruction(unsigned nibble) const { return !isData && !isRead && value == nibble; }
    };
    class Bus;

    void readBytes(Bus &bus);
    void readNibbles(Bus &bus);
    void addNibble(const Access &access);
    void addByte(const Access &first, const Access &last, std::uint8_t value);
    [[nodiscard]] static std::size_t startUpIn(const std::vector<Access> &accesses);
    [[nodiscard]] static bool beginsWithLowerHalf(const std::vector<Access> &accesses);
    [[nodiscard]] static bool pausesTellLowerHalf(const std::vector<Access> &accesses);

    void simulateStartUp(lux::Simulation &simulation);
    void simulateText(lux::Simulation &simulation);
    void simulateGraphic(lux::Simulation &simulation);
    void send(lux::Simulation &simulation, std::uint32_t value, bool isData, bool isRead);
    void pulse(lux::Simulation &simulation, std::uint32_t value);
    void nibble(lux::Simulation &simulation, std::uint32_t value);

    LcdMemory m_memory{LcdController::Hd44780};
    std::uint32_t m_sent = 0; ///< lines of the simulation
};
