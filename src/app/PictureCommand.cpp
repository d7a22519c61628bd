#include "app/PictureCommand.h"

#include "analyzer/AnalyzerManager.h"
#include "app/OffscreenView.h"
#include "app/PictureWriter.h"
#include "app/StartUp.h"
#include "cli/CaptureSource.h"
#include "cli/Decoding.h"
#include "cli/ExportJob.h"
#include "cli/PictureProgram.h"
#include "cli/PluginFaults.h"
#include "cli/Terminal.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "device/UsbPlatformNone.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/NativeNames.h"
#include "store/MemBudget.h"

#include <QApplication>
#include <QEventLoop>
#include <QFileInfo>
#include <QFont>

#include <algorithm>
#include <corvanlux/analyzer/Analyzer.h>

namespace PictureCommand {

namespace {

/// What the view is to have in use: those of the part.
void chooseChannels(const CapturePart &part)
{
    QVector<bool> chosen(gDev->chnEnable.size(), false);
    for (int chn = 0; chn < chosen.size(); ++chn) {
        chosen[chn] = std::size_t(chn) < part.channels.size() && part.channels[std::size_t(chn)] != 0;
    }
    gDev->setChnEnable(chosen);
}

FileOutcome write(const ExportJob &job, const ViewPicture &picture)
{
    constexpr double inch = 0.0254; // metres
    FileOutcome ended{FileResult::Failed};
    PictureWriter writer;
    writer.mayGoOn = [] { return !Terminal::wasInterrupted(); };
    QEventLoop loop;
    QObject::connect(&writer, &PictureWriter::sigWritten, &loop, [&](const QString &, const FileOutcome &outcome) {
        ended = outcome;
        loop.quit();
    });
    if (job.picture == ExportJob::Picture::Svg) {
        writer.writeSvg(job.out, {picture.shapes(), picture.size(), job.dpi, QFileInfo(job.path).fileName()});
    } else {
        QImage image = picture.image();
        image.setDotsPerMeterX(int(job.dpi / inch));
        image.setDotsPerMeterY(int(job.dpi / inch));
        writer.writePng(job.out, image);
    }
    loop.exec();
    return ended;
}

/// Decodes with the analyzers of the file, as the view shows them. @return the exit code
int decode(AnalyzerManager &manager, PluginFaults &faults)
{
    manager.setCapture(gDev->smpData.get(), std::uint32_t(gDev->model));
    manager.loadFromConfig();
    manager.captureReady();
    return Decoding::finish(manager, faults);
}

int paint(const ExportJob &job, const CapturePart &part)
{
    AnalyzerHost host;
    host.model = [] { return gDev->model; };
    host.channelCount = [] { return int(gDev->chnEnable.size()); };
    host.store = [](const QList<QStringList> &) {}; // nothing of this process is kept
    AnalyzerManager manager(host, PluginFolder::standardFolders(), PluginFolder::standardGuardFolder());
    PluginFaults faults(manager);
    const int code = decode(manager, faults);
    if (code == Terminal::interrupted) {
        return code;
    }
    constexpr QSize usual(1600, 900); // at 96 dpi
    OffscreenView view(manager);
    view.showPart(job.size.isEmpty() ? usual * job.dpi / 96 : job.size, job.size.isEmpty(), part.start, part.end);
    const FileOutcome outcome = write(job, view.picture());
    if (outcome.result == FileResult::Cancelled) {
        return Terminal::interrupted;
    }
    if (!outcome.isDone()) {
        Terminal::say(QStringLiteral("%1: %2").arg(job.out, fileReason(outcome)));
        return Terminal::badInput;
    }
    return code;
}

int makePicture(const ExportJob &job)
{
    CaptureSource source = CaptureSource::openOrTell(job.path);
    if (!source.data) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    CapturePart part;
    const QString refusal = job.pick(*source.data, part);
    if (!refusal.isEmpty()) {
        Terminal::say(QStringLiteral("%1: %2").arg(job.path, refusal));
        return Terminal::badInput;
    }
    viewOptionsLoad();
    Session session(std::make_unique<UsbPlatformNone>());
    if (!gDev->smpData->adopt(*source.data)) {
        Terminal::say(QStringLiteral("%1: %2").arg(job.path, fileReason({FileResult::OtherModel})));
        return Terminal::badInput;
    }
    chooseChannels(part);
    const int code = paint(job, part);
    return code == Terminal::good && !source.warning.isEmpty() ? Terminal::badInput : code;
}

/// The size of text that desktops have; a platform without a screen has a larger one, for which the ruler has no room.
void takeDesktopFont()
{
    constexpr int points = 9;
    QFont font = QApplication::font();
    font.setPointSize(points);
    QApplication::setFont(font);
}

/// Qt's remarks on a surrounding without a desktop: nothing that whoever asked for a picture could change.
void passOver(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtFatalMsg) {
        Terminal::say(text); // and Qt ends the program
    }
}

} // namespace

bool isAsked(const QStringList &arguments)
{
    return arguments.value(0) == QLatin1String(PictureProgram::option);
}

int run(int argc, char *argv[])
{
    takeNamesOfAnyBytes(argc, argv);
    QStringList arguments;
    for (int i = 2; i < argc; ++i) {
        arguments += QString::fromLocal8Bit(argv[i]);
    }
    ExportJob job;
    const QString wrong = job.read(arguments);
    if (!wrong.isEmpty() || job.picture == ExportJob::Picture::None) {
        Terminal::say(wrong.isEmpty() ? QStringLiteral("no picture is asked for") : wrong);
        return Terminal::wrongUsage;
    }
    qInstallMessageHandler(passOver);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_FONT_DPI", QByteArray::number(job.dpi));
    int own = 1; // Qt is to see none of the arguments
    const QApplication application(own, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvanlux"));
    Terminal::catchSignals();
    memBudgetInit();
    SetAnalyzerMemoryBudget(&memBudget);
    StartUp::initGlobals({});
    globalSet(QStringLiteral("userLang"), QStringLiteral("en-US")); // as all of the command line; nothing is saved here
    takeDesktopFont();
    StartUp::initLook();
    return makePicture(job);
}

} // namespace PictureCommand
