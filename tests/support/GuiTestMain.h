#pragma once

#include "controls/Look.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/Language.h"
#include "store/MemBudget.h"

#include <QApplication>
#include <QStandardPaths>
#include <QtTest>

/// The start-up of a test that shows widgets: the same globals as the program's, at a given resolution, with the empty
/// configuration. Place LUX_GUI_TEST(Class) at the end of the file.
inline void startGuiTest(double dotsPerInch = 96.0)
{
    memBudgetInit();
    globalsSetDpi(dotsPerInch);
    globalsFillTables();
    QFile::remove(configPath());
    configLoad();
    viewOptionsLoad();
    disAnimateZoom = false;
    languageLoad();
    globalsLoadFonts(QApplication::font(), languageHead(QStringLiteral("font")));
    QApplication::setFont(gFontMain);
}

#define LUX_GUI_TEST(Class)                                                                                            \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        QApplication application(argc, argv);                                                                          \
        startGuiTest();                                                                                                \
        Class test;                                                                                                    \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
