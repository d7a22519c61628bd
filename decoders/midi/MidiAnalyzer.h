#pragma once

#include "MidiResults.h"
#include "common/AsyncLine.h"

#include <cstdint>
#include <vector>

/// Messages on a MIDI line.
class MidiAnalyzer final : public lux::Decoder<MidiSettings, MidiResults> {
public:
    static constexpr const char *name = "MIDI";
    /// A bit with fewer samples cannot be told from its neighbours.
    static constexpr std::int64_t leastSamplesPerBit = 3;

    MidiAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// The message that is being received, and where it stands.
    struct Receiver {
        MidiParser parser;
        lux::Sample first = 0;
        lux::Sample last = 0;
        /// The bytes with the real-time ones in between, once there was one; then the message also has a place.
        std::vector<std::uint8_t> raw;
        std::uint64_t place = 0;
        bool hasPlace = false;
    };

    [[nodiscard]] lux::AsyncFormat format() const { return {.idleHigh = !m_settings.invert}; }
    [[nodiscard]] std::int64_t findBitRate();
    void take(Receiver &receiver, const lux::AsyncCharacter &character);
    void takeRealTime(Receiver &receiver, const lux::AsyncCharacter &character);
    void addPending(Receiver &receiver, bool isWhole);
    void addFramingError(Receiver &receiver, const lux::AsyncCharacter &character);

    std::uint32_t m_sent = 0; ///< messages of the simulation
};
