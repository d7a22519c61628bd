// A program without windows: captures with an emulated instrument, exports what came as text and saves it.

#include "device/DevBase.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "files/CaptureFile.h"
#include "platform/UsbPlatformEmulated.h"
#include "session/CaptureRun.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QCoreApplication>

using namespace std::chrono_literals;

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QString base = QCoreApplication::arguments().value(1) + QStringLiteral("/capture.");
    memBudgetInit();
    configLoad();
    EmulatedBus bus;
    emulator::InstrumentOptions options;
    options.model = 8;
    options.pace = 0;
    bus.plug(bus.add(options));
    Session session(std::make_unique<UsbPlatformEmulated>(bus));
    CaptureRun run(session);
    if (run.bringUp(30s).end != CaptureRun::End::Done) {
        return 1;
    }
    gDev->setSmpDepthIndex(0);
    if (run.capture({}).end != CaptureRun::End::Done) {
        return 2;
    }
    SmpData &data = *gDev->smpData;
    const CapturePart whole{std::vector<std::uint8_t>(std::size_t(data.chnCount), 1), 0, double(data.sampleCount())};
    const CaptureFile file(digitalChannelsOf);
    const bool isDone = file.exportTo(base + QStringLiteral("txt"), data, whole, ExportKind::Text).isDone() &&
                        file.save(base + QStringLiteral("cxdat"), data, whole, configCopy()).isDone();
    return isDone ? 0 : 3;
}
