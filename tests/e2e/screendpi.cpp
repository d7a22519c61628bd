// Prints what a program finds on the screen: the dots per inch as Qt tells them, as the program takes them, and the
// scale of the time axis.

#include "controls/Look.h"

#include <QGuiApplication>
#include <QScreen>

#include <cstdio>

int main(int argc, char *argv[])
{
    const QGuiApplication app(argc, argv);
    const double told = QGuiApplication::primaryScreen()->logicalDotsPerInch();
    globalsSetDpi(told);
    std::printf("%.17g %d %d\n", told, gDpi, uiScale());
    return 0;
}
