#include "app/StartUp.h"

#include "app/QtTexts.h"
#include "controls/AccessibleMenus.h"
#include "controls/Look.h"
#include "controls/Style.h"
#include "device/DevModels.h"
#include "files/CaptureFile.h"
#include "files/ForeignFile.h"
#include "settings/Config.h"
#include "settings/ConfigDocument.h"
#include "settings/Globals.h"
#include "settings/Language.h"

#include <QApplication>
#include <QFileInfo>
#include <QScreen>

#include <optional>

namespace StartUp {

namespace {

/// Takes the settings of a file named on the command line, if there is one that has any. Those of a data file whose
/// capture cannot be loaded stay where they are: the window tells of it.
void loadNamedFile(const QStringList &arguments)
{
    const QString path = globalsFileArgument(arguments);
    if (isForeignCapture(path)) {
        gOpenFile = path; // it has no settings: the window reads it
        return;
    }
    QByteArray block;
    if (path.isEmpty() || !configHeadOfFile(path, block)) {
        return;
    }
    const std::optional<ConfigDocument> settings = ConfigDocument::parse(block);
    if (!settings) {
        return;
    }
    if (QFileInfo(path).suffix() == QLatin1String("cxdat")) {
        gOpenFile = path;
    }
    if (CaptureFile(digitalChannelsOf).check(path).outcome.isDone()) {
        configTake(*settings);
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
