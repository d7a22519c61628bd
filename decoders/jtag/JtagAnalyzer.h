#pragma once

#include "JtagResults.h"
#include "JtagState.h"

#include <cstdint>
#include <initializer_list>
#include <vector>

/// A test access port.
class JtagAnalyzer final : public lux::Decoder<JtagSettings, JtagResults> {
public:
    static constexpr const char *name = "JTAG";

    JtagAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// What is shifted from Capture to Update, pauses left out: the first bit is the lowest of the first word.
    struct Shift {
        bool isOpen = false;
        std::uint64_t place = 0; ///< its frame's, kept open
        lux::Sample first = 0;
        lux::Sample last = 0;
        std::uint64_t count = 0; ///< bits, 0 for none
        std::vector<std::uint64_t> tdi;
        std::vector<std::uint64_t> tdo;

        void add(bool in, bool out)
        {
            const unsigned bit = count++ % 64;
            if (bit == 0) {
                tdi.push_back(0);
                tdo.push_back(0);
            }
            tdi.back() |= std::uint64_t(in) << bit;
            tdo.back() |= std::uint64_t(out) << bit;
        }
        void begin(lux::Sample edge, std::uint64_t openPlace)
        {
            isOpen = true;
            place = openPlace;
            first = edge;
            count = 0;
            tdi.clear();
            tdo.clear();
        }
    };

    [[nodiscard]] static bool beginsWithinClocks(lux::ChannelReader tck);
    void takeClock(bool tms, lux::Sample edge);
    void shiftBit(lux::ChannelReader &tdi, lux::ChannelReader &tdo, lux::Sample edge);
    void enter(JtagState state, lux::Sample edge);
    void reset(lux::Sample edge);
    void finishShift(JtagResults::Kind kind);

    void clock(lux::Simulation &simulation, bool tms, bool tdi, bool tdo);
    void scan(lux::Simulation &simulation, bool isIr, unsigned bits, std::uint32_t value);
    void cut(lux::Simulation &simulation, std::uint32_t value);
    void lead(lux::Simulation &simulation, std::initializer_list<int> tms);

    JtagState m_state = JtagState::RunTestIdle;
    JtagStates m_possible;      ///< as long as they are more than one, the state is not known
    lux::Sample m_since = 0;    ///< the edge that led to the state
    bool m_isKnown = false;     ///< the state's begin was seen
    bool m_hasCaptured = false; ///< the shift that goes on began within the capture
    std::uint64_t m_clocks = 0; ///< rising edges since then
    lux::Sample m_delay = 0;
    Shift m_shift;
    std::uint32_t m_sent = 0; ///< scans of the simulation
};
