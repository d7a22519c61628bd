#include "acquisition/MemBudget.h"
#include "app/Config.h"
#include "app/Globals.h"
#include "app/MainWindow.h"
#include "app/StartUp.h"
#include "device/DevBase.h"
#include "device/UsbTransport.h"

#include <QApplication>

namespace {

int runWindow()
{
    MainWindow window;
    window.show();
    const int code = QApplication::exec();
    configSave(configPath());
    return code;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvanlux"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LUX_VERSION));

    memBudgetInit();
    StartUp::initGlobals(QCoreApplication::arguments().mid(1));
    StartUp::initLook();
    StartUp::initTransport();
    StartUp::initDevice();

    const int code = runWindow();

    // Stops and joins a capture thread that still runs.
    delete gDev;
    gDev = nullptr;
    // Closes the device. Nobody is left who transfers.
    delete gUsb;
    gUsb = nullptr;
    return code;
}
