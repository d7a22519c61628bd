#pragma once

#include "MdioResults.h"

#include <array>
#include <cstdint>

/// The management interface of Ethernet PHYs.
class MdioAnalyzer final : public lux::Decoder<MdioSettings, MdioResults> {
public:
    static constexpr const char *name = "MDIO";

    MdioAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    static constexpr unsigned frameBits = 32;
    static constexpr std::uint32_t unknown = UINT32_MAX;

    /// The bits of a frame, the first one highest.
    struct Frame {
        std::uint32_t bits = 0;
        std::array<lux::Sample, frameBits> rises{};
        lux::Sample last = 0;
    };

    bool readFrame(lux::ChannelReader &clock, lux::ChannelReader &data, Frame &frame) const;
    bool addFrame(const Frame &frame, bool isPreambleWhole);
    void addError(const Frame &frame);
    void useAddress(FrameData &frame);

    /// The register that each device of each port was set to (45.2), `unknown` before.
    std::array<std::uint32_t, 1U << 2 * MdioResults::addressBits> m_addresses{};
    std::uint32_t m_sent = 0; ///< frames of the simulation
};
