#pragma once

#include "IrMarks.h"
#include "IrNecResults.h"

#include <cstdint>

/// Frames of remote controls with pulse distance coding and their repeats.
class IrNecAnalyzer final : public lux::Decoder<IrNecSettings, IrNecResults> {
public:
    static constexpr const char *name = "IR-NEC";

    IrNecAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// A time of the standard with the tolerance, in samples.
    struct Window {
        lux::Sample least = 0;
        lux::Sample most = 0;
        [[nodiscard]] bool has(lux::Sample samples) const { return samples >= least && samples <= most; }
    };
    struct Windows {
        Window leader;
        Window frameSpace;
        Window repeatSpace;
        Window mark;
        Window zero;
        Window one;
    };
    /// What the next repeat repeats.
    struct Last {
        bool isKnown = false;
        std::uint32_t bits = 0;
        lux::Sample begin = 0;
    };

    [[nodiscard]] bool isActiveHigh();
    [[nodiscard]] Window windowOf(std::int64_t nanoseconds, std::int64_t more = 0) const;
    void tellCarrier(const IrMark &mark);
    [[nodiscard]] bool readFrame(IrMarks &marks, const Windows &windows, lux::Sample begin, IrMark &mark, Last &last);
    void addRepeat(lux::Sample begin, lux::Sample end, Last &last);

    bool m_carrierTold = false;
    std::uint32_t m_sent = 0; ///< elements of the simulation
};
