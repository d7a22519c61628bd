#pragma once

#include "device/BringUpThread.h"

/// Makes an instrument of a device that runs its firmware: learns its model, uploads the FPGA's image, checks that the
/// FPGA runs, and has the device object connected.
class ThrRenumDone final : public BringUpThread {
    Q_OBJECT
public:
    ThrRenumDone();

protected:
    void bringUp(BringUpRun &run) override;
};

/// The work of the thread. Reports 3 with the error of reading the EEPROM (1 also for an unknown identity), 4 with
/// percentages and the error of the FPGA (7, 8, 9: it does not run), and 5 when only the device object is left, whose
/// own reports come from the main thread. Sets `hardwareVersion`. Blocks; on the run's thread.
void finishDevice(BringUpRun &run);
