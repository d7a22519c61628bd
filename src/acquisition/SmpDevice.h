#pragma once

#include "acquisition/SmpState.h"

#include <cstdint>

/// What a device that captures into its own memory tells of its last capture.
struct SmpCaptureInfo {
    std::uint32_t recordCount = 0; ///< records written
    std::uint32_t trgRecord = 0;   ///< number of the record that holds the trigger, from 1; 0 for none
    std::uint32_t endAddress = 0;  ///< byte address in the ring after the last record
};

/// The status word of a running device.
namespace smpStatus {

constexpr std::uint16_t runMask = 0x0003;   ///< reads 1 or 2 while the logic runs
constexpr std::uint16_t runEnded = 0x0001;  ///< together with `triggered`: the capture has ended
constexpr std::uint16_t triggered = 0x0004; ///< the trigger came, the rest fills
constexpr std::uint16_t waiting = 0x0008;   ///< the pre-trigger part is full
constexpr std::uint16_t fault = 0x0010;     ///< must not be set
constexpr std::uint16_t sound = 0x00C0;     ///< both must be set

} // namespace smpStatus

/// What a status word tells: 0 running well, 7 no answer on the bus, 8 all zero, 9 not running, 10 and 13 faults. Pure.
[[nodiscard]] int statusError(std::uint16_t status);

/// What the capture threads ask of an instrument beside its bulk data: the requests that start it, stop it, ask how far
/// it is and have its memory sent.
///
/// Every operation answers 0 done, 1 not open, 2 the transfer failed; it may block for its control transfers, at most 2
/// s each, and may be called on any thread and in any order, whatever the last answer was. stopDevice() may meet
/// another operation on another thread: implementations serialise that. The object outlives every capture.
class SmpDevice {
public:
    static constexpr int done = smpError::none;
    static constexpr int notOpen = smpError::notOpen;
    static constexpr int transferFailed = smpError::transfer;

    /// Starts the capture that has been set up.
    [[nodiscard]] virtual int startDevice() = 0;
    /// Stops sampling and, while the device is still open, the bulk pipe; the answer is that of the first alone.
    virtual int stopDevice() = 0;
    /// Lets the device send on its bulk pipe, or no longer.
    virtual int bulkStart() = 0;
    virtual int bulkStop() = 0;
    /// Reads the status word; it is 0 unless the answer is 0. statusError() tells what it means.
    [[nodiscard]] virtual int readStatus(std::uint16_t &status) = 0;
    /// Reads what the last capture left in the device's memory; `info` is left alone unless the answer is 0.
    [[nodiscard]] virtual int readCaptureInfo(SmpCaptureInfo &info) = 0;
    /// Stops the bulk pipe, tells the device which part of its ring to send, in bytes, and lets it send.
    /// @return the answer of the first of the last two steps that failed
    [[nodiscard]] virtual int setReadWindow(std::uint32_t address, std::uint32_t size) = 0;

protected:
    ~SmpDevice() = default;
};
