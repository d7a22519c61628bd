#include "analyzer/LeftBehind.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Terminal.h"
#include "settings/Config.h"
#include "settings/NativeNames.h"
#include "store/MemBudget.h"

#include <QCoreApplication>

#include <array>
#include <corvanlux/analyzer/Analyzer.h>
#include <cstdio>

namespace {

struct Command {
    const char *name;
    int (*run)(const QStringList &arguments);
    const char *purpose;
};

constexpr std::array commands = {
    Command{"analyzers", Commands::analyzers, "list the decoders and their settings"},
    Command{"capture", Commands::capture, "capture with the instrument that is plugged in"},
    Command{"convert", Commands::convert, "convert captures between kinds of files"},
    Command{"decode", Commands::decode, "decode captures, and write what was found"},
    Command{"devices", Commands::devices, "list the instruments that are plugged in"},
    Command{"diff", Commands::diff, "compare two captures"},
    Command{"export", Commands::exportData, "write channels for other programs, or a picture"},
    Command{"history", Commands::history, "list the captures that were kept, or fetch one"},
    Command{"info", Commands::info, "tell about captures"},
    Command{"measure", Commands::measure, "measure channels, and check what is expected of them"},
};

void tellUsage(std::FILE *out)
{
    std::fputs("Usage: luxcli COMMAND [ARGUMENT...]\n\nCorvanLUX without a window.\n\n", out);
    for (const Command &command : commands) {
        std::fprintf(out, "  %-10s %s\n", command.name, command.purpose);
    }
    std::fputs("\n\"luxcli COMMAND --help\" tells about a command. Exit code: 0 good, 1 bad input,\n2 wrong usage; "
               "diff has others.\n",
               out);
}

int run(const QStringList &arguments)
{
    const QString name = arguments.value(0);
    for (const Command &command : commands) {
        if (name == QLatin1String(command.name)) {
            return command.run(arguments.mid(1));
        }
    }
    if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
        tellUsage(stdout);
        return Terminal::good;
    }
    if (name == QLatin1String("--version")) {
        std::fputs("luxcli " LUX_VERSION "\n", stdout);
        return Terminal::good;
    }
    if (!name.isEmpty()) {
        Terminal::say(QStringLiteral("there is no command \"%1\"").arg(name));
    }
    tellUsage(stderr);
    return Terminal::wrongUsage;
}

} // namespace

int main(int argc, char *argv[])
{
    const Console console; // before anything is opened
    QCoreApplication application(argc, argv);
    takeNamesOfAnyBytes(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("luxcli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LUX_VERSION));
    Terminal::catchSignals();
    memBudgetInit();
    SetAnalyzerMemoryBudget(&memBudget);
    configLoad();
    return LeftBehind::end(run(QCoreApplication::arguments().mid(1)));
}
