#pragma once

#include "Ps2Results.h"
#include "common/FilteredLine.h"

#include <cstdint>

/// The port of a PS/2 keyboard.
class Ps2Analyzer final : public lux::Decoder<Ps2Settings, Ps2Results> {
public:
    static constexpr const char *name = "PS/2 Keyboard";

    Ps2Analyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// Who sends. The keyboard makes the clock for both.
    enum class Sender : std::uint8_t { Keyboard, Host };
    /// One pulse of the clock.
    struct Clock {
        lux::Sample fall = 0;
        lux::Sample rise = 0; ///< the capture's length where it does not come
        bool hasRise = false;
    };
    /// The byte that is on the line.
    struct Transfer {
        Sender sender = Sender::Keyboard;
        unsigned count = 0;     ///< clocks
        std::uint32_t bits = 0; ///< the lowest was first
        lux::Sample first = 0;
        lux::Sample last = 0;
        lux::Sample low = 0; ///< how long the last clock was
    };
    /// What the bytes before say about the next one.
    struct Sequence {
        std::uint32_t prefix = 0; ///< 0xe0 or 0xe1
        unsigned codesToCome = 0; ///< of the pause key
        bool isReleased = false;
        std::uint32_t command = 0;  ///< the host's last one, while its argument is to come
        unsigned identityBytes = 0; ///< to come
    };

    void takeClock(const Clock &clock, lux::FilteredLine &data);
    void takeLastClock(const Clock &clock, lux::FilteredLine &data);
    void takeBit(const Clock &clock, lux::FilteredLine &data);
    void takeKeyboardBit(const Clock &clock, bool bit);
    void takeHostBit(const Clock &clock, lux::FilteredLine &data);
    void addByte(std::uint32_t bits, unsigned flags);
    void nameKeyboardByte(FrameData &frame);
    void nameKey(FrameData &frame);
    void nameHostByte(FrameData &frame);
    void cutTransfer();

    lux::Sample m_inhibit = 0;    ///< samples
    lux::Sample m_mostPause = 0;  ///< samples
    lux::Sample m_leastIdle = 0;  ///< samples
    lux::Sample m_mostAnswer = 0; ///< samples
    lux::Sample m_lastRise = 0;
    bool m_isInStep = false; ///< the next clock is the first of a byte
    Transfer m_transfer;
    Sequence m_sequence;
    std::uint32_t m_sent = 0; ///< elements of the simulation
};
