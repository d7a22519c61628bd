#include "analyzer/LeftBehind.h"
#include "app/CommandLine.h"
#include "app/MainWindow.h"
#include "app/PictureCommand.h"
#include "app/StartUp.h"
#include "device/UsbPlatforms.h"
#include "files/CaptureHistory.h"
#include "session/EndSignals.h"
#include "session/HistoryKeeper.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QApplication>
#include <QTimer>

#include <chrono>
#include <corvanlux/analyzer/Analyzer.h>
#include <cstdio>
#include <cstdlib>

namespace {

/// The arguments without the program's own name, before there is an application object.
QStringList argumentsOf(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments += QString::fromLocal8Bit(argv[i]);
    }
    return arguments;
}

int runWindow(const QStringList &missingFiles)
{
    CaptureHistory history{HistoryFolder(HistoryFolder::standardPath())};
    Session session(makeUsbPlatform());
    const HistoryKeeper keeper(session, history);
    MainWindow window(session, {QUrl(QStringLiteral(LUX_UPDATE_URL)), LUX_UPDATE_AT_START != 0, {}});
    window.setHistory(&history);
    window.show();
    const EndSignals wishes;
    QObject::connect(&wishes, &EndSignals::sigEnd, &window, [&window] {
        window.close();
        QApplication::quit(); // also out of a modal dialog
    });
    QTimer::singleShot(0, &window, [&] { CommandLine::tellMissing(&window, missingFiles); });
    const int code = QApplication::exec();
    configSave(configPath());
    constexpr std::chrono::milliseconds toSwitchOff(300);
    const bool isInstrumentDone = session.end(toSwitchOff);
    constexpr std::chrono::seconds toKeepTheLast(10); // without a window: a capture may just have come
    history.finish(toKeepTheLast);
    if (!isInstrumentDone || window.isLookingUpHost()) {
        std::_Exit(code); // all is stored; only an instrument or a name server that does not answer is still waited for
    }
    return code;
}

} // namespace

int main(int argc, char *argv[])
{
    if (PictureCommand::isAsked(argumentsOf(argc, argv))) {
        return LeftBehind::end(PictureCommand::run(argc, argv));
    }
    if (const auto answer = CommandLine::answer(argumentsOf(argc, argv))) {
        std::fputs(qPrintable(*answer), stdout);
        return 0;
    }
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvanlux"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LUX_VERSION));

    memBudgetInit();
    SetAnalyzerMemoryBudget(&memBudget);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    StartUp::initGlobals(arguments);
    StartUp::initLook();
    return LeftBehind::end(runWindow(CommandLine::missingFiles(arguments)));
}
