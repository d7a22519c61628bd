#pragma once

#include "DsiLane.h"
#include "DsiResults.h"

#include <cstdint>
#include <vector>

/// The low-power side of a display link: escape mode, data, turnarounds.
class DsiAnalyzer final : public lux::Decoder<DsiSettings, DsiResults> {
public:
    static constexpr const char *name = "MIPI-DSI LP";
    static constexpr const char *models = "9,65";

    DsiAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// A lane without data, and what it does next.
    struct OtherLane {
        DsiLane lane;
        DsiElement element;
        bool hasElement = false;
        std::size_t number = 0;
    };

    void prepare();
    void add(const FrameData &frame);
    void addOthersBefore(lux::Sample sample);
    void take(const DsiElement &element);
    void checkHead(lux::Sample at);
    void addPacketIfWhole();
    void endOfData(bool isCut);
    void clear();
    [[nodiscard]] std::size_t wantedBytes() const;
    [[nodiscard]] std::uint32_t sentHead() const;

    std::vector<OtherLane> m_others;
    std::vector<std::uint8_t> m_bytes; ///< of the packet that is being received
    std::vector<FrameData> m_frames;   ///< of these bytes: they stand behind the packet's
    bool m_fromPeripheral = false;
    std::uint32_t m_sent = 0; ///< rounds of the simulation
};
