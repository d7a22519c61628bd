#pragma once

#include "device/BringUpThread.h"

/// Sends the firmware to a device that has none, and waits for it to come back with it.
class ThrDevAttach final : public BringUpThread {
    Q_OBJECT
public:
    ThrDevAttach();

protected:
    void bringUp(BringUpRun &run) override;
};

/// The work of the thread. Reports 0 with error 1 for a product without firmware, 1 with the result of the sending, 1
/// with the milliseconds of waiting, and 1 with error 5 when the device is not back after 10 s. A stop ends the wait
/// without a word: the device is there. Blocks; on the run's thread.
void attachDevice(BringUpRun &run);
