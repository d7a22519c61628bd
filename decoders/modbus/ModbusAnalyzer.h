#pragma once

#include "ModbusResults.h"

#include <cstdint>
#include <vector>

/// Requests and responses on a Modbus serial line of one or two wires.
class ModbusAnalyzer final : public lux::Decoder<ModbusSettings, ModbusResults> {
public:
    static constexpr const char *name = "Modbus";
    /// A bit with fewer samples cannot be told from its neighbours.
    static constexpr std::int64_t leastSamplesPerBit = 3;

    ModbusAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// A line while it is decoded, and the next frame on it.
    struct Direction {
        ModbusReceiver receiver;
        Channel channel;
        ModbusResults::Line number;
        ModbusReceiver::Received next;
        lux::Sample lastLook = 0; ///< at the stop bit of the last character
        bool isOver = false;
    };
    /// The last request, until it is answered.
    struct Request {
        bool isOpen = false;
        std::uint8_t unit = 0;
        std::uint8_t function = 0;
        std::uint32_t words = 0; ///< as a rule the first address and how many
        ModbusResults::Line line = ModbusResults::Rx;
    };

    [[nodiscard]] std::int64_t findBitRate();
    void addDirection(std::vector<Direction> &all, ModbusResults::Line number, const lux::BitGrid &grid);
    void findNext(Direction &direction);
    void addNext(const Direction &direction, Request &request);
    [[nodiscard]] static std::uint32_t bytesAsked(const ModbusFrame &frame, const Request &request);
    [[nodiscard]] bool isResponse(const ModbusFrame &frame, ModbusResults::Line line, const Request &request) const;

    std::uint32_t m_sent = 0; ///< frames of the simulation
};
