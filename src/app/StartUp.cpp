#include "app/StartUp.h"

#include "app/QtTexts.h"
#include "controls/AccessibleMenus.h"
#include "controls/Look.h"
#include "controls/Style.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/Language.h"

#include <QApplication>
#include <QFileInfo>
#include <QScreen>

namespace StartUp {

namespace {

/// Takes the settings of a file named on the command line, if there is one that has any.
void loadNamedFile(const QStringList &arguments)
{
    const QString path = globalsFileArgument(arguments);
    if (path.isEmpty()) {
        return;
    }
    if (QFileInfo(path).suffix() == QLatin1String("cxdat")) {
        gOpenFile = path;
    }
    QByteArray settings;
    if (!configHeadOfFile(path, settings) || !configReplace(settings)) {
        gOpenFile.clear();
        configLoad();
    }
}

} // namespace

void initGlobals(const QStringList &arguments)
{
    globalsSetDpi(QGuiApplication::primaryScreen()->logicalDotsPerInch());
    globalsFillTables();
    configLoad();
    loadNamedFile(arguments);
    viewOptionsLoad();
}

void initLook()
{
    languageLoad();
    QtTexts::install();
    globalsLoadFonts(QApplication::font(), languageHead(QStringLiteral("font")));
    QApplication::setFont(gFontMain);
    qApp->setStyleSheet(programStyle());
    installAccessibleMenus();
}

} // namespace StartUp
