#include "device/DevControl.h"

#include <algorithm>
#include <limits>

namespace {

/// Rounds a count of clock steps half up; what no 32-bit register holds takes the nearest that it does.
std::uint32_t roundCount(double value)
{
    constexpr double largest = std::numeric_limits<std::uint32_t>::max();
    if (!(value > 0.0)) {
        return 0;
    }
    if (value >= largest) {
        return std::numeric_limits<std::uint32_t>::max();
    }
    const auto whole = std::uint32_t(value);
    return value - whole >= 0.5 ? whole + 1 : whole;
}

DevControlNone noInstrument;
DevControl *current = &noInstrument;
RequestQueue *currentRequests = nullptr;

} // namespace

VthCodes vthCodes(double volts)
{
    double level = volts + 3.6;
    std::uint16_t range = 727;
    if (volts > 4.0) {
        level = 2.8;
        range = 0;
    } else if (volts < -4.0) {
        level = -0.4;
    } else if (volts > 2.8) {
        level = volts - 1.2;
        range = 0;
    } else if (volts > -0.4) {
        level = volts + 0.4;
        range = 242;
    }
    if (!(level >= -0.4)) {
        level = -0.4; // a voltage that is no number takes the lowest setting
    }
    const auto code = std::int32_t(level * 1000 / 3.3);
    return {std::uint16_t(code & 0xFFFF), range};
}

PwmCounts pwmCounts(std::int64_t clock, double frequ, double duty)
{
    const double steps = double(clock) / frequ;
    PwmCounts counts;
    counts.period = std::max(1U, roundCount(steps)); // an output needs a period even when the clock is unknown
    counts.high = roundCount(duty / 100.0 * steps);
    counts.frequ = double(clock) / counts.period;
    counts.duty = double(counts.high) / counts.period * 100.0;
    return counts;
}

SmpTransport *DevControlNone::transport()
{
    return nullptr;
}

int DevControlNone::startDevice()
{
    return notOpen;
}

int DevControlNone::stopDevice()
{
    return notOpen;
}

int DevControlNone::bulkStart()
{
    return notOpen;
}

int DevControlNone::bulkStop()
{
    return notOpen;
}

int DevControlNone::readStatus(std::uint16_t &status)
{
    status = 0;
    return notOpen;
}

int DevControlNone::readCaptureInfo(SmpCaptureInfo &)
{
    return notOpen;
}

int DevControlNone::setReadWindow(std::uint32_t, std::uint32_t)
{
    return notOpen;
}

int DevControlNone::readUid(QByteArray &)
{
    return notOpen;
}

int DevControlNone::sendSmpConfig(const SmpConfig &)
{
    return notOpen;
}

void DevControlNone::tuneChunkSize(std::int64_t) {}

int DevControlNone::sendPwm(int, std::uint32_t, std::uint32_t)
{
    return notOpen;
}

int DevControlNone::sendPwmEnable(std::uint8_t)
{
    return notOpen;
}

int DevControlNone::sendVth(int, const VthCodes &)
{
    return notOpen;
}

int DevControlNone::powerOff()
{
    return notOpen;
}

DevControl &devControl()
{
    return *current;
}

RequestQueue *devRequests()
{
    return currentRequests;
}

void setDevControl(DevControl *control, RequestQueue *requests)
{
    current = control != nullptr ? control : &noInstrument;
    currentRequests = requests;
}
