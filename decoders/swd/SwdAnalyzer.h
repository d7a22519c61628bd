#pragma once

#include "SwdBits.h"
#include "SwdResults.h"
#include "SwdSequences.h"

#include <cstdint>

/// A serial wire debug port.
class SwdAnalyzer final : public lux::Decoder<SwdSettings, SwdResults> {
public:
    static constexpr const char *name = "SWD";

    SwdAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    struct Request {
        lux::Sample first = 0;
        lux::Sample last = 0;
        bool isAp = false;
        bool isRead = false;
        bool hasParity = false; ///< the right one
        unsigned address = 0;
    };

    [[nodiscard]] static bool beginsAtRest(SwdBits bits);
    [[nodiscard]] static bool peekRequest(SwdBits &bits, Request &request);
    /// What a place in the bits leads to, from less likely to more.
    enum class Sequel : std::uint8_t {
        None,
        Possible, ///< a request, a line reset, or the capture's end
        Refused,  ///< a request that is answered by WAIT or FAULT
        Sound,    ///< one with data of right parity, or one that is refused and another that is answered
    };
    [[nodiscard]] static Sequel sequelOf(SwdBits bits, std::int64_t skipped, unsigned turn, bool mayLookOn = true);
    static void skipRest(SwdBits &bits);
    [[nodiscard]] static unsigned answeredBehind(SwdBits bits, unsigned turn);
    [[nodiscard]] static Sequel answerTo(SwdBits &bits, const Request &request, unsigned turn);
    [[nodiscard]] bool isSound(SwdBits &bits, const Request &request) const;
    [[nodiscard]] bool isSoundRequest(SwdBits &bits, lux::Sample last);
    [[nodiscard]] bool takeTransfer(SwdBits &bits);
    void readOnes(SwdBits &bits);
    void readTransfer(SwdBits &bits, const Request &request);
    void passOver(SwdBits &bits);
    [[nodiscard]] bool readData(SwdBits &bits, FrameData &frame);
    void takeWrite(const SwdBits &bits, const Request &request, std::uint32_t value);
    [[nodiscard]] FrameData frameOf(const Request &request, SwdResults::Kind kind) const;

    void leave(lux::Simulation &simulation, bool isDormant);
    void sendBits(lux::Simulation &simulation, std::uint64_t bits, unsigned count);
    void sendTransfer(lux::Simulation &simulation, unsigned request, SwdAck ack, std::uint32_t value,
                      bool wrongParity = false);

    SwdSelect m_select;
    unsigned m_turn = 1;          ///< clocks of a turn-around
    bool m_alwaysHasData = false; ///< ORUNDETECT: WAIT and FAULT have data too
    bool m_isLost = false;        ///< what came last is not understood
    bool m_isAway = false;        ///< the wires speak another protocol
    std::int64_t m_onesBefore = 0;
    std::int64_t m_zeros = 0;
    std::uint32_t m_sent = 0; ///< transfers of the simulation
};
