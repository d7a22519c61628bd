#pragma once

#include "acquisition/SmpState.h"
#include "device/DevOrder.h"

#include <QByteArray>

#include <functional>
#include <vector>

/// The last steps of a bring-up: what an instrument is asked and told when a device object is connected to it, as a
/// value. The device object fills it in on the main thread, a thread that may block performs it, and the device object
/// takes over what came of it.
struct DevConnection {
    int model = 0;
    QByteArray identity;          ///< the identity block
    bool readsStatus = false;     ///< the instrument must tell that it is ready
    std::vector<DevOrder> orders; ///< what is stored: thresholds and outputs
    bool endsBringUp = false;     ///< with the last request of a bring-up
    QByteArray uid;               ///< out: the instrument's identity, 8 bytes; empty when it does not tell

    /// Makes the requests. An instrument that refuses to tell its identity, or what it is told, is one all the same;
    /// one that falls silent is not: the first time-out is the end.
    /// @param goesOn  asked before each step; false ends the sequence as "not open"
    /// @return 0; 1 not open; 2 no answer; 7 to 10, 13 bad status word; 12 not ready. Blocks for a control transfer
    ///         each, and for 50 ms more. Any thread.
    [[nodiscard]] int perform(DevControl &control, const std::function<bool()> &goesOn);

    static constexpr int errWrongModel = smpError::wrongModel; ///< the identity block names another model
    static constexpr int errNotReady = smpError::notReady;
};
