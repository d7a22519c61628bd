// The program under a monkey: monkey [--seconds N] [--seed N] [--still MILLISECONDS]. Ends with 0 when nothing has gone
// wrong. Each act is told on standard output; the last one before a crash is the one to look at, and the same seed does
// the same again.

#include "monkey/Monkey.h"

#include "controls/Look.h"
#include "monkey/Watchdog.h"
#include "support/GuiTestMain.h"

#include <QApplication>
#include <QCommandLineParser>

#include <corvanlux/analyzer/Analyzer.h>
#include <cstdio>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);

    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("How long."), QStringLiteral("N"),
                                     QStringLiteral("20"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("What it does follows from it."),
                                  QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption still(QStringLiteral("still"), QStringLiteral("Milliseconds without events that end it."),
                                   QStringLiteral("N"), QStringLiteral("20000"));
    QCommandLineParser line;
    line.addOptions({seconds, seed, still});
    line.addHelpOption();
    line.process(application);

    for (const QCommandLineOption &number : {seconds, seed, still}) {
        bool isNumber = false;
        (void)line.value(number).toUInt(&isNumber);
        if (!isNumber) {
            std::fprintf(stderr, "monkey: --%s takes a number\n", qPrintable(number.names().constFirst()));
            return 2;
        }
    }

    startGuiTest();
    SetAnalyzerMemoryBudget(&memBudget);
    bool good = false;
    {
        Watchdog watchdog(std::chrono::milliseconds(line.value(still).toInt()));
        Monkey monkey(line.value(seed).toUInt(), watchdog);
        good = monkey.run(std::chrono::seconds(line.value(seconds).toInt()));
        std::printf("%d acts, longest pause %lld ms\n", monkey.acts(),
                    static_cast<long long>(watchdog.longestPause().count()));
    }
    return good ? 0 : 1;
}
