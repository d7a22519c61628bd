#pragma once

#include "UsbLine.h"
#include "UsbReceiver.h"
#include "UsbResults.h"
#include "UsbTransactions.h"

#include <cstdint>

/// A USB bus of low or full speed.
class UsbAnalyzer final : public lux::Decoder<UsbSettings, UsbResults> {
public:
    static constexpr const char *name = "USB LS/FS";
    /// Bits are told apart with two samples each.
    static constexpr std::int64_t leastSamplesPerBit = 2;

    UsbAnalyzer() : Decoder(name) {}
    [[nodiscard]] std::uint32_t NeededSampleRate() override;

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    [[nodiscard]] bool findSpeed();
    void waitForIdle(UsbLine &line, const UsbReceiver &receiver, bool isBegin) const;
    void idle(UsbLine &line, UsbTransactions &transactions);
    void singleEndedZero(UsbLine &line, const UsbReceiver &receiver, UsbTransactions &transactions) const;
    void activity(UsbLine &line, const UsbReceiver &receiver, UsbTransactions &transactions);
    [[nodiscard]] static bool isPacket(const UsbPacket &packet);
    static void addError(const UsbPacket &packet, const UsbReceiver &receiver, UsbTransactions &transactions);
    void mark(const UsbPacket &packet, bool isRight);
    [[nodiscard]] bool isReset(lux::Sample length) const;
    [[nodiscard]] lux::Sample microseconds(std::int64_t count) const;

    UsbPacket m_packet; ///< the one that is being received: a kilobyte that is not made anew for each
    /// Limits in samples.
    struct Times {
        lux::Sample suspend = 1;
        lux::Sample resume = 1;
        lux::Sample resetParts = 1; ///< 5 us
    };
    Times m_times;
    bool m_fullSpeed = false;
    std::uint32_t m_sent = 0; ///< rounds of the simulation
};
