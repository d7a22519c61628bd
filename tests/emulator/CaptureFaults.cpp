#include "emulator/CaptureFaults.h"

#include "WaveSignal.h"
#include "device/DeviceGlobals.h"

#include <algorithm>

using emulator::Fault;
using emulator::FaultAction;
using emulator::Instrument;

namespace requests = emulator::requests;

namespace {

/// Moves with nearly each sample, so that the shortest capture fills several reads.
std::shared_ptr<emulator::LogicSignal> makeSignal()
{
    using Wave = emulator::WaveSignal::Wave;
    std::vector<Wave> waves;
    for (int i = 0; i < 32; ++i) {
        waves.push_back(Wave::noise(std::uint32_t(i + 1) * 71, 1, 40));
    }
    return std::make_shared<emulator::WaveSignal>(1, waves);
}

emulator::InstrumentOptions optionsOf(int model)
{
    emulator::InstrumentOptions options;
    options.model = model;
    options.pace = 0;
    options.direct = true;
    options.firmwareInside = true;
    return options;
}

} // namespace

CaptureFaultDesk::CaptureFaultDesk(std::unique_ptr<InstrumentRoad> road, int model)
    : desk(std::make_unique<InstrumentDesk>(std::move(road))), signal(makeSignal())
{
    bus().add(optionsOf(model), signal);
    if (!desk->isGood || !desk->plug()) {
        return;
    }
    gDev->setSmpDepthIndex(0);
    for (int chn = 0; chn < gDev->chnTrig.size(); ++chn) {
        gDev->setChnTrig(chn, 0);
    }
    if (!soundCapture().isEmpty()) {
        return;
    }
    bus().with([this](Instrument &instrument) {
        m_requests = instrument.log().entries();
        m_readBytes = instrument.inBytes();
    });
    if (streams()) {
        // It sends on until it is stopped; what comes behind the depth is not missed.
        m_readBytes = std::uint64_t(gDev->smpDepth() * gDev->chnEnable.size() / 8);
    }
    m_isGood = true;
}

bool CaptureFaultDesk::streams() const
{
    return gDev->transferMode == 1;
}

bool CaptureFaultDesk::captureWithRequest(std::size_t number, Wrong wrong)
{
    const Fault fault = faultOf(wrong, m_requests.at(number).length);
    return captureWith([&](Instrument &instrument) { instrument.faults().atTransfer(number, fault); });
}

bool CaptureFaultDesk::captureWithRead(std::uint64_t offset, FaultAction action)
{
    return captureWith([&](Instrument &instrument) { instrument.faults().atInByte(offset, Fault{action}); });
}

int CaptureFaultDesk::errorOf(std::size_t number) const
{
    constexpr int failed = 2;
    constexpr int nothingCame = 3;
    const Entry &entry = m_requests.at(number);
    if (entry.setup.request == requests::bulkStop.request) {
        return 0; // stops what is stopped already, or what is not looked at any more
    }
    const bool configures = requests::sampleBlock.matches(entry.setup) || requests::triggerBlock.matches(entry.setup);
    if (!streams() || configures) {
        return failed;
    }
    // A stream that was not started brings nothing; the stop behind its end is not missed.
    const bool isStop = requests::run.matches(entry.setup) && entry.data.at(0) == 0;
    return isStop ? 0 : nothingCame;
}

bool CaptureFaultDesk::keepsWhatCameBefore(std::uint64_t offset)
{
    if (offset < std::uint64_t(readSize)) {
        return desk->published == 0;
    }
    return QTest::qWaitFor([this] { return desk->published == 1; }) && gDev->smpData->smpCount() > 0;
}

bool CaptureFaultDesk::leavesNothing(std::int64_t budget)
{
    const auto haveEnded = [] { return !gDev->hasThreads(); };
    if (!QTest::qWaitFor(haveEnded, InstrumentDesk::longWait) || gDev->smpBufs.count() != 0) {
        return false;
    }
    QCoreApplication::processEvents(); // all that the threads have told
    gDev->smpData->clear();
    return memBudget == budget;
}

QString CaptureFaultDesk::soundCapture()
{
    if (!captureWith([](Instrument &) {})) {
        return QStringLiteral("the capture does not end");
    }
    if (desk->lastError() != 0) {
        return QStringLiteral("error %1").arg(desk->lastError());
    }
    if (!QTest::qWaitFor([this] { return desk->published == 1; })) {
        return QStringLiteral("no data");
    }
    if (gDev->smpData->smpCount() != gDev->smpDepth()) {
        return QStringLiteral("%1 samples").arg(gDev->smpData->smpCount());
    }
    return differenceOf(*gDev->smpData, *signal, 0);
}

QString CaptureFaultDesk::soundCaptureAfterReplug()
{
    bus().unplug();
    if (!QTest::qWaitFor([this] { return !desk->transport->isOpen() && !gDev->connected; }, InstrumentDesk::longWait)) {
        return QStringLiteral("the plug is in");
    }
    return desk->plug() ? soundCapture() : QStringLiteral("not connected");
}
