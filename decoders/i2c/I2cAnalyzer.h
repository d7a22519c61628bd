#pragma once

#include "I2cResults.h"
#include "common/StartStopBus.h"

#include <cstdint>
#include <optional>

/// The I2C bus.
class I2cAnalyzer final : public lux::Decoder<I2cSettings, I2cResults> {
public:
    static constexpr const char *name = "I2C";

    I2cAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// The byte that is on the bus: eight bits and the acknowledgement.
    struct Byte {
        lux::Sample first = 0; ///< the rise of the first clock
        std::uint32_t bits = 0;
        unsigned count = 0;
        lux::Sample shortestLow = 0; ///< of the clock before each of the bits
        lux::Sample longestLow = 0;
    };
    /// What stands between a start and a stop.
    struct Message {
        bool isOpen = false;     ///< a start was seen, and no stop
        bool hasAddress = false; ///< the address byte is through
        std::uint16_t direction = 0;
        bool isGeneralCall = false; ///< the next byte tells what all devices are to do
        bool tenBitFollows = false; ///< the next byte is the second of a 10-bit address
        std::uint32_t tenBitHigh = 0;
        std::optional<std::uint32_t> tenBitAddress; ///< the device with such an address that was written to
        lux::Sample bitTime = 0;                    ///< of the last byte
    };

    template<class Line>
    void decodeBus(const Line &scl, const Line &sda);
    void takeBit(const lux::BusEvent &event, lux::Sample lowTime);
    void takeCondition(const lux::BusEvent &event, lux::Sample sclRise);
    void takeAcknowledge(bool bit, lux::Sample at, lux::Sample last);
    void addByte(bool acknowledge, lux::Sample last);
    [[nodiscard]] bool isReadOfTenBits() const;
    void cutByte(lux::Sample condition);

    Byte m_byte;
    Message m_message;
    std::uint32_t m_sent = 0; ///< messages of the simulation
};
