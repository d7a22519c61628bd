// A program without windows: captures with an emulated instrument, exports what came as text and saves it.

#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "files/DataFile.h"
#include "platform/UsbPlatformEmulated.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    memBudgetInit();
    configLoad();
    EmulatedBus bus;
    emulator::InstrumentOptions options;
    options.model = 8;
    options.pace = 0;
    bus.plug(bus.add(options));
    Session session(std::make_unique<UsbPlatformEmulated>(bus));
    QObject::connect(&session, &Session::sigInitSta, [&session](int sta, int err, int) {
        constexpr int connected = 6;
        if (err != 0) {
            QCoreApplication::exit(1);
        } else if (sta == connected) {
            gDev->setSmpDepthIndex(0);
            (void)session.startCapture();
        }
    });
    QObject::connect(&session, &Session::sigSmpDataReady, [] {
        const QString folder = QCoreApplication::arguments().value(1);
        DataFile text(gDev->smpData.get());
        const std::vector<std::uint8_t> all(std::size_t(gDev->chnEnable.size()), 1);
        text.chnSelect = all.data();
        text.file.setFileName(folder + QStringLiteral("/capture.txt"));
        text.setRange(0, double(gDev->smpData->sampleCount()));
        const bool exported = text.file.open(QIODevice::WriteOnly | QIODevice::Text) && text.exportText();
        const QString path = folder + QStringLiteral("/capture.cxdat");
        DataFile data(gDev->smpData.get());
        data.chnSelect = all.data();
        data.file.setFileName(path);
        data.setRange(0, double(gDev->smpData->sampleCount()));
        const bool saved =
            configSave(path) && data.file.open(QIODevice::WriteOnly | QIODevice::Append) && data.saveData();
        QCoreApplication::exit(exported && saved ? 0 : 2);
    });
    (void)session.watchDevices();
    session.lookForDevice();
    return QCoreApplication::exec();
}
