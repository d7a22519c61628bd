#pragma once

#include "SmbusResults.h"
#include "common/StartStopBus.h"

#include <cstdint>
#include <vector>

/// The System Management Bus.
class SmbusAnalyzer final : public lux::Decoder<SmbusSettings, SmbusResults> {
public:
    static constexpr const char *name = "SMBus";

    SmbusAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// The byte that is on the bus: eight bits and the acknowledgement.
    struct Byte {
        lux::Sample first = 0; ///< the rise of the first clock
        std::uint32_t bits = 0;
        unsigned count = 0;
    };
    /// What stands between a start and a stop.
    struct Transaction {
        bool isOpen = false;
        bool isPlaced = false; ///< its frame has a place before those of its parts
        std::uint64_t place = 0;
        lux::Sample first = 0;
        bool hasAddress = false; ///< since the last start
        std::uint16_t direction = 0;
        std::uint32_t secondAddress = 0;
        bool isNack = false;
        bool isBroken = false;
        lux::Sample shortestLow = INT64_MAX; ///< of the clock
        lux::Sample extended = 0;            ///< for so long in all the clock was held low
        lux::Sample extendedInByte = 0;      ///< of this, since the last acknowledgement or start
        std::uint16_t limits = 0;            ///< the flags of what these go beyond
    };

    template<class Line>
    void decodeBus(const Line &scl, const Line &sda);
    void takeBit(const lux::BusEvent &event);
    void takeCondition(const lux::BusEvent &event, lux::Sample sclRise);
    void takeTimeout(lux::Sample rise, lux::Sample lowTime);
    void takeLow(lux::Sample rise, lux::Sample lowTime);
    void addByte(bool acknowledge, lux::Sample last);
    void cutByte(lux::Sample last);
    void addHeldByte(bool isLast);
    void addWithLate(const FrameData &byte);
    void placeTransaction();
    void addConditions();
    void endTransaction(lux::Sample last);

    Byte m_byte;
    Transaction m_transaction;
    std::vector<std::uint8_t> m_bytes; ///< of the transaction, with addresses
    FrameData m_held;                  ///< a data byte waits until it is known whether it is the last one
    bool m_isHeld = false;
    std::vector<FrameData> m_conditions; ///< of a transaction that has no place yet
    std::vector<FrameData> m_late;       ///< time-outs within the byte that is being read, or held
    std::uint32_t m_sent = 0;            ///< transactions of the simulation
};
