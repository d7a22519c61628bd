#pragma once

#include "store/SmpChunk.h"

#include <cstdint>

/// Who receives what a bulk read run reads: implemented by the capture control threads.
///
/// Both operations are called by SmpTransport::readStream() on the thread that runs it, one at a time, and hold up the
/// run while they work: the reads that are queued go on meanwhile, but no new one is queued. They may issue requests to
/// the device, also the one that stops it; they must not start a read run, nor throw.
class InterfaceDevCallback {
public:
    virtual ~InterfaceDevCallback() = default;

    /// The first reads are queued: the device may be started now. Called exactly once in a run that gets so far, before
    /// any onData(); not at all in a run that ends with "not open", "out of memory" or a first read that fails.
    virtual void onStart() = 0;

    /// One buffer has arrived. Buffers come in the order of the stream, none is left out.
    /// @param bytes   the buffer, now owned by the callee: letting go of it frees it and credits the budget. The first
    ///                `length` bytes are filled.
    /// @param length  bytes received, 1 to bytes.size()
    virtual void onData(SmpChunk bytes, std::int32_t length) = 0;
};
