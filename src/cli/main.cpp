#include "analyzer/AnalyzerManager.h"
#include "cli/Commands.h"
#include "cli/Terminal.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QCoreApplication>

#include <corvanlux/analyzer/Analyzer.h>
#include <cstdio>

namespace {

const char *const usage = "Usage: luxcli COMMAND [ARGUMENT...]\n"
                          "\n"
                          "CorvanLUX without a window.\n"
                          "\n"
                          "  decode     decode captures, and write what was found\n"
                          "  analyzers  list the decoders and their settings\n"
                          "  history    list the captures that were kept, or fetch one\n"
                          "  info       tell about captures\n"
                          "\n"
                          "\"luxcli COMMAND --help\" tells about a command. Exit code: 0 good, 1 bad input,\n"
                          "2 wrong usage.\n";

int run(const QStringList &arguments)
{
    const QString command = arguments.value(0);
    if (command == QLatin1String("decode")) {
        return Commands::decode(arguments.mid(1));
    }
    if (command == QLatin1String("analyzers")) {
        return Commands::analyzers(arguments.mid(1));
    }
    if (command == QLatin1String("history")) {
        return Commands::history(arguments.mid(1));
    }
    if (command == QLatin1String("info")) {
        return Commands::info(arguments.mid(1));
    }
    if (command == QLatin1String("--help") || command == QLatin1String("-h")) {
        std::fputs(usage, stdout);
        return Terminal::good;
    }
    if (command == QLatin1String("--version")) {
        std::fputs("luxcli " LUX_VERSION "\n", stdout);
        return Terminal::good;
    }
    if (!command.isEmpty()) {
        Terminal::say(QStringLiteral("there is no command \"%1\"").arg(command));
    }
    std::fputs(usage, stderr);
    return Terminal::wrongUsage;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("luxcli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LUX_VERSION));
    Terminal::catchSignals();
    memBudgetInit();
    SetAnalyzerMemoryBudget(&memBudget);
    configLoad();
    return run(QCoreApplication::arguments().mid(1));
}
