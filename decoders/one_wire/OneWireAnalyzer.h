#pragma once

#include "OneWireResults.h"
#include "OneWireTimes.h"

#include <array>
#include <cstdint>

/// A 1-Wire bus.
class OneWireAnalyzer final : public lux::Decoder<OneWireSettings, OneWireResults> {
public:
    static constexpr const char *name = "1-Wire";

    OneWireAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// A speed in samples.
    struct Times {
        Times() = default;
        Times(const OneWireTimes &times, std::int64_t sampleRate);

        lux::Sample mostOne = 0;
        lux::Sample slot = 0;
        lux::Sample mostZero = 0;
        lux::Sample leastReset = 0;
        lux::Sample presenceLook = 0;
        lux::Sample mostPresence = 0;
    };
    /// What comes next behind a reset.
    enum class Stage : std::uint8_t {
        Lost, ///< no reset was seen: slots cannot be counted
        Unknown,
        Command,
        Code,
        Search,
        Function
    };
    static constexpr unsigned bitsOfByte = 8;
    static constexpr unsigned bitsOfSearch = 192; ///< 64 times the bit, its complement and the choice

    template<class Line>
    void decodeLine(Line line);
    template<class Line>
    bool takeReset(Line &line, lux::Sample fall, lux::Sample rise);
    template<class Line>
    [[nodiscard]] lux::Sample passBounces(Line &line, lux::Sample fall, lux::Sample rise) const;
    void takeSlot(lux::Sample fall, lux::Sample rise, lux::Sample nextFall);
    void takeByte();
    void takeCommand(FrameData &frame);
    void takeCodeByte(FrameData &frame);
    void takeSearch();
    void addRest();

    Times m_standard;
    Times m_overdrive;
    bool m_isOverdrive = false;
    Stage m_stage = Stage::Lost;
    std::array<std::uint8_t, bitsOfSearch> m_bits{}; ///< of the element at hand, as '0' and '1'
    unsigned m_count = 0;
    lux::Sample m_first = 0; ///< of the element at hand
    lux::Sample m_last = 0;
    bool m_isAlarm = false;
    std::uint64_t m_code = 0;
    unsigned m_codeBytes = 0;

    std::uint32_t m_sent = 0; ///< messages of the simulation
};
