#include "device/DevConnection.h"

namespace {

constexpr std::uint16_t readyMask = 0x8F00;
constexpr std::uint16_t readyValue = 0x8500;

int checkReady(DevControl &control)
{
    std::uint16_t status = 0;
    if (const int error = control.readStatus(status); error != 0) {
        return error;
    }
    if (const int error = statusError(status); error != 0) {
        return error;
    }
    return (status & readyMask) == readyValue ? 0 : DevConnection::errNotReady;
}

} // namespace

int DevConnection::perform(DevControl &control, const std::function<bool()> &goesOn)
{
    if (!goesOn()) {
        return DevControl::notOpen;
    }
    if (readsStatus) {
        if (const int error = checkReady(control); error != 0) {
            return error;
        }
    }
    if (!goesOn()) {
        return DevControl::notOpen;
    }
    const unsigned before = control.timeOuts();
    QByteArray answer;
    if (control.readUid(answer) == DevControl::done && answer.size() == DevControl::uidSize) {
        uid = answer;
    }
    if (control.timeOuts() != before) {
        return DevControl::transferFailed;
    }
    if (const int error = sendOrders(control, orders, goesOn); error != 0) {
        return error;
    }
    // The last request, before anybody can start a capture, whose data it would stop.
    if (endsBringUp && goesOn()) {
        control.bulkStop();
    }
    return control.timeOuts() != before ? DevControl::transferFailed : DevControl::done;
}
