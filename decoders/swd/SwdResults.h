#pragma once

#include "SwdRegisters.h"
#include "SwdSettings.h"

#include <cstdint>
#include <span>

/// What goes over a serial wire. Transfers: `data` is the value, `line` the answer (SwdAck), `extra` the address and
/// what SELECT says.
class SwdResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Reset,  ///< 50 or more clocks with SWDIO high
        Switch, ///< a sequence that leads to serial wire
        Leave,  ///< one that leads elsewhere; `extra` is where (SwdTarget)
        Transfer,
        Request, ///< one with a wrong parity, which the target passes over
    };
    enum Flag : std::uint16_t { Ap = 1, Read = 2, HasData = 4, WrongParity = 8, SelectKnown = 16 };

    explicit SwdResults(const SwdSettings &settings);

    [[nodiscard]] static std::uint32_t packed(unsigned address, const SwdSelect &select);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;

private:
    static void describeTransfer(const FrameData &frame, lux::FrameText &out);
};
