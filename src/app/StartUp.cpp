#include "app/StartUp.h"

#include "app/QtTexts.h"
#include "controls/Look.h"
#include "controls/Style.h"
#include "device/DevBase.h"
#include "device/DevControlUsb.h"
#include "device/DevInit.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "device/UsbPlatforms.h"
#include "device/UsbTransport.h"
#include "files/CaptureFile.h"
#include "settings/Config.h"
#include "settings/ConfigDocument.h"
#include "settings/Globals.h"
#include "settings/Language.h"

#include <QApplication>
#include <QFileInfo>
#include <QScreen>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace StartUp {

namespace {

/// The instrument side of all device objects.
std::unique_ptr<DevControlUsb> control;

/// Takes the settings of a file named on the command line, if there is one that has any. Those of a data file whose
/// capture cannot be loaded stay where they are: the window tells of it.
void loadNamedFile(const QStringList &arguments)
{
    const QString path = globalsFileArgument(arguments);
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
}

void initTransport()
{
    gUsb = new UsbTransport(makeUsbPlatform());
    control = std::make_unique<DevControlUsb>(*gUsb);
    setDevControl(control.get());
}

void initDevice()
{
    gDev = createDevice(std::max(globalGet(QStringLiteral("devModel")).toInt(), 0)).release();
}

void initBringUp()
{
    gDevInit = new DevInit(*gUsb);
}

void endDevices()
{
    delete std::exchange(gDevInit, nullptr);
    delete std::exchange(gDev, nullptr);
    setDevControl(nullptr);
    control.reset();
    delete std::exchange(gUsb, nullptr);
}

} // namespace StartUp
