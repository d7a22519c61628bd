#pragma once

#include "device/DevControl.h"

#include <cstdint>
#include <functional>
#include <vector>

/// One thing that a running instrument is told beside its captures, as a value that any thread can send.
struct DevOrder {
    enum class Kind { Threshold, Pwm, PwmEnable };

    Kind kind = Kind::Threshold;
    int index = 0;            ///< the threshold, 1 or 2; the output, 0 or 1
    VthCodes threshold;       ///< of a threshold
    std::uint32_t period = 0; ///< of an output, in steps of its clock
    std::uint32_t high = 0;   ///< of an output
    std::uint8_t outputs = 0; ///< bit 0 runs output 0, bit 1 output 1

    [[nodiscard]] static DevOrder setThreshold(int index, double volts);
    [[nodiscard]] static DevOrder setPwm(int output, const PwmCounts &counts);
    [[nodiscard]] static DevOrder enablePwm(bool on0, bool on1);

    /// Sends it. @return 0 done, 1 not open, 2 the transfer failed; blocks for one control transfer. Any thread.
    int send(DevControl &control) const;
    /// Orders of the same key, above 0, replace each other.
    [[nodiscard]] int key() const { return 1 + int(kind) * 4 + index; }
    bool operator==(const DevOrder &) const = default;
};

/// Sends them one behind the other. One that is refused is passed over, as an instrument may lack what it is told of;
/// the first that the instrument lets run into its time limit ends the sequence.
/// @param goesOn  asked before each; false ends the sequence as "not open"
/// @return 0 done, 1 not open, 2 a time-out. Blocks for a control transfer each. Any thread.
[[nodiscard]] int sendOrders(DevControl &control, const std::vector<DevOrder> &orders,
                             const std::function<bool()> &goesOn);
