#pragma once

#include "acquisition/SmpState.h"

#include <cstdint>

class InterfaceDevCallback;

/// What the capture threads ask of the transport: whether a device is open, and the bulk read run.
///
/// One for the life of the process; it outlives all captures. Who receives the data is set on the main thread while no
/// run is under way.
class SmpTransport {
public:
    /// What readStream() answers.
    static constexpr int runEnded = smpError::none; ///< the limit was reached, or the device was done (a short read)
    static constexpr int runNotOpen = smpError::notOpen; ///< no device is open, or the receiver is not set (any more)
    static constexpr int runFailed = smpError::timedOut; ///< nothing came for 2800 ms, a read failed or came back empty
    static constexpr int runNoMemory = smpError::noMemory; ///< the memory budget is spent, or no run can be made

    /// True while a device is open. It may go at any moment: a transfer then answers so. Any thread, never blocks.
    [[nodiscard]] virtual bool isOpen() const = 0;

    /// Who receives the data of read runs; null for nobody. Not owned; must live until the run that uses it has ended.
    /// Main thread, while no run is under way.
    virtual void setCallback(InterfaceDevCallback *receiver) = 0;

    /// Reads from the device's bulk pipe, two reads at a time, and hands each buffer to the receiver on this thread.
    ///
    /// Blocks until the run has ended: at most 2800 ms after the last byte, at once when the device goes away. Buffers
    /// that were received before a failure have been handed over; the others are freed and credited. However it ended,
    /// the pipe is left clean, and another run may follow at once. Stopping the device is the caller's matter.
    /// One run at a time: a second one answers runNoMemory. Any thread.
    /// @param limit     bytes after which the run ends, also beyond a buffer's end (a last buffer comes whole); 0 for
    ///                  reading until the device sends less than it was asked for. Below 0 counts as reached by the
    ///                  first buffer.
    /// @param receiver  who asks for the run, as set by setCallback(). Once another one is set, nothing is read: a
    ///                  capture that is being left must not read for the device object that has taken its place
    /// @return one of the four answers above
    [[nodiscard]] virtual int readStream(std::int32_t limit, InterfaceDevCallback &receiver) = 0;

    /// Ends the run that is under way now, with runFailed: for a device that has fallen silent, or whose data nobody
    /// wants any more. What the device has still to send is lost. A run that begins later is not touched. Any thread,
    /// blocks for some ms; harmless without a run.
    virtual void breakOffStream() = 0;

protected:
    ~SmpTransport() = default;
};
