#include "device/ThrRenumDone.h"

#include "device/BringUpRun.h"
#include "device/DevIdentity.h"
#include "device/DevInit.h"
#include "device/DevRequests.h"
#include "device/FirmwareLoad.h"

#include <array>

namespace {

constexpr int identifying = 3; ///< states that are reported
constexpr int starting = 4;
constexpr int connecting = 5;

constexpr int errUnknownModel = 1;
// What the status word tells of an FPGA that does not run.
constexpr int errNoAnswer = 7;
constexpr int errAllZero = 8;
constexpr int errNotRunning = 9;

int readEeprom(BringUpRun &run, std::uint16_t address, std::span<std::uint8_t> bytes)
{
    return run.controlIn(devRequest::eeprom, address, 0, bytes);
}

/// Learns the model and the identity block. @return false after a report
bool identify(BringUpRun &run, devIdentity::Model &model, QByteArray &block)
{
    std::array<std::uint8_t, devIdentity::versionSize> version{};
    if (const int error = readEeprom(run, devIdentity::versionAt, version); error != 0) {
        run.report(identifying, error); // an instrument without a version is one
    }
    hardwareVersion.store(devIdentity::hardwareVersionOf(version), std::memory_order_relaxed);

    std::array<std::uint8_t, devIdentity::identitySize> identity{};
    if (const int error = readEeprom(run, devIdentity::identityAt, identity); error != 0) {
        run.report(identifying, error);
        return false;
    }
    model = devIdentity::modelOf(run.product, identity);
    if (model.code == 0) {
        run.report(identifying, errUnknownModel);
        return false;
    }
    std::array<std::uint8_t, devIdentity::blockSize> bytes{};
    if (const int error = readEeprom(run, devIdentity::blockAt, bytes); error != 0) {
        run.report(identifying, error);
        return false;
    }
    block = QByteArray(reinterpret_cast<const char *>(bytes.data()), int(bytes.size()));
    return true;
}

/// What the status word tells of the FPGA: 0 for one that runs.
int fpgaError(std::uint16_t status)
{
    const int state = status & 3;
    if (state == 1 || state == 2) {
        return 0;
    }
    if (status == 0xFFFF) {
        return errNoAnswer;
    }
    return status == 0 ? errAllZero : errNotRunning;
}

/// Lets the uploaded FPGA run. @return 0, or the error to report
int startFpga(BringUpRun &run)
{
    constexpr int beforeMs = 30;
    constexpr int afterMs = 40;
    run.pause(beforeMs);
    if (const int error = run.controlOut(devRequest::fpgaSwitch, devRequest::fpgaOn, 0, {}); error != 0) {
        return error;
    }
    run.pause(afterMs);
    std::array<std::uint8_t, 2> status{};
    if (const int error = run.controlIn(devRequest::fpga, devRequest::statusOrRun, 0, status); error != 0) {
        return error;
    }
    return fpgaError(std::uint16_t(status[0] | status[1] << 8));
}

} // namespace

void finishDevice(BringUpRun &run)
{
    devIdentity::Model model;
    QByteArray block;
    if (!identify(run, model, block)) {
        return;
    }
    int error = uploadFpga(run, model);
    if (error == 0) {
        error = startFpga(run);
    }
    if (error != 0) {
        run.report(starting, error);
        return;
    }
    run.report(connecting, 0);
    run.connectDevice(model.code, block);
}

ThrRenumDone::ThrRenumDone() : BringUpThread(identifying) {}

void ThrRenumDone::bringUp(BringUpRun &run)
{
    finishDevice(run);
}
