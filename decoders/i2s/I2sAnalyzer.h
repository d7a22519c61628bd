#pragma once

#include "I2sResults.h"

#include <array>
#include <cstdint>

/// A serial audio bus.
class I2sAnalyzer final : public lux::Decoder<I2sSettings, I2sResults> {
public:
    static constexpr const char *name = "I2S/PCM";

    I2sAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// The bits between two changes of the word select, or of a slot: their first 64, or their last.
    struct Bits {
        static constexpr unsigned most = 64;

        std::array<lux::Sample, most> at{}; ///< the edges at which they were taken, in turn
        std::uint64_t value = 0;            ///< the last one is the lowest
        std::uint64_t count = 0;

        void addFirst(bool bit, lux::Sample edge)
        {
            if (count < most) {
                addLast(bit, edge);
            } else {
                ++count;
            }
        }
        void addLast(bool bit, lux::Sample edge)
        {
            value = value << 1 | std::uint64_t(bit);
            at[count++ % most] = edge;
        }
        void clear()
        {
            value = 0;
            count = 0;
        }
    };
    /// One bit of the bus.
    struct Clock {
        lux::Sample edge = 0;
        bool ws = false;
        bool sd = false;
    };
    class Clocks;
    /// The slots of a frame, in clocks.
    struct Slots {
        std::uint64_t count = 0;
        std::uint64_t width = 0;
        std::uint64_t wanted = 0; ///< of a slot's clocks, those of the word at its begin
    };
    /// The settings that each word needs: noise has a word every other clock.
    struct Rules {
        Channel sd;
        I2sFormat format = I2sFormat::I2s;
        lux::BitOrder bitOrder = lux::BitOrder::MsbFirst;
        bool isLeftHigh = false;
        std::uint64_t wanted = 0; ///< bits of a word, 0 for all that are there
        unsigned firstSlot = 0;
    };

    [[nodiscard]] Rules rules() const;
    void readStereo(Clocks &clocks);
    void readFrames(Clocks &clocks);
    void endHalf(const Bits &bits, bool ws);
    [[nodiscard]] Slots slotsOf(const Clocks &clocks) const;
    [[nodiscard]] FrameData wordOf(const Bits &bits, std::uint64_t first, unsigned width, std::uint64_t slot,
                                   bool isWrong) const;
    void add(const FrameData &word);
    [[nodiscard]] std::uint64_t clocksOfFrame(Clocks clocks) const;

    void sendFrame(lux::Simulation &simulation, std::uint64_t slotCount, std::uint64_t width);

    Rules m_rules;
    std::uint64_t m_usual = 0;  ///< clocks between two changes of the word select, 0 before there are any
    std::uint64_t m_before = 0; ///< those of the last half
    std::uint32_t m_sent = 0;   ///< frames of the simulation
};
