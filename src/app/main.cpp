#include "app/MainWindow.h"
#include "app/StartUp.h"
#include "device/UsbPlatforms.h"
#include "session/EndSignals.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QApplication>

namespace {

int runWindow()
{
    Session session(makeUsbPlatform());
    MainWindow window(session);
    window.show();
    const EndSignals wishes;
    QObject::connect(&wishes, &EndSignals::sigEnd, &window, [&window] {
        window.close();
        QApplication::quit(); // also out of a modal dialog
    });
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
    return runWindow();
}
