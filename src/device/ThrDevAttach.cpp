#include "device/ThrDevAttach.h"

#include "device/BringUpRun.h"
#include "device/FirmwareLoad.h"

#include <QFile>

namespace {

constexpr int loading = 0; ///< states that are reported
constexpr int sent = 1;
constexpr int errNoFirmware = 1;
constexpr int errNotBack = 5;

} // namespace

void attachDevice(BringUpRun &run)
{
    QFile file(devIdentity::firmwareOf(run.product));
    if (!file.exists() || !file.open(QIODevice::ReadOnly)) {
        run.report(loading, errNoFirmware);
        return;
    }
    const int result = sendFirmware(run, file.readAll());
    run.report(sent, result);
    if (result != 0) {
        return;
    }
    constexpr int steps = 50;
    constexpr int stepMs = 200;
    for (int step = 1; step <= steps; ++step) {
        run.pauseForReturn(stepMs);
        if (run.stopRequested.load(std::memory_order_acquire)) {
            return;
        }
        run.report(sent, 0, step * stepMs);
    }
    run.report(sent, errNotBack);
}

ThrDevAttach::ThrDevAttach() : BringUpThread(sent) {}

void ThrDevAttach::bringUp(BringUpRun &run)
{
    attachDevice(run);
}
