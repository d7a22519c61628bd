#include "cli/CaptureCommand.h"

#include "cli/Commands.h"
#include "cli/Decoding.h"
#include "cli/InstrumentCapture.h"
#include "cli/Quantity.h"
#include "cli/Terminal.h"
#include "device/UsbPlatform.h"
#include "device/UsbPlatforms.h"
#include "files/CaptureFile.h"
#include "settings/FileReplacement.h"

#include <QFileInfo>

#include <cstdio>
#include <limits>

namespace CaptureCommand {

namespace {

constexpr int mostCaptures = 1'000'000;

const char *const captureUsage =
    "Usage: luxcli capture [-o OUT.cxdat] [-a NAME:key=value,...]... [OPTION...]\n"
    "\n"
    "Captures with the instrument that is plugged in, saves the capture, decodes it at once, or both.\n"
    "The user's own settings count for nothing here, and stay as they are.\n"
    "\n"
    "  -o, --output OUT       save to this file, which appears when it is whole; its name ends in .cxdat\n"
    "  -a, --analyzer NAME:key=value,...  decode, as \"luxcli decode\" does, and write the frames to the\n"
    "                         standard output; may be given several times\n"
    "      --format F         of the frames: jsonl (the default), csv or text\n"
    "      --rate R           samples a second, such as 100M or 62.5MHz\n"
    "      --depth N          samples, such as 10M\n"
    "  -c, --channels LIST    channels to capture, such as 0-7,9; without it all that the rate allows\n"
    "  -t, --trigger N:KIND   rising, falling, high or low on channel N; several must hold together\n"
    "      --position P       percent of the depth before the trigger, 0 to 99\n"
    "      --threshold V      input threshold in volts, such as 1.8\n"
    "      --timeout T        give up when the trigger has not come after this time, such as 30s\n"
    "      --repeat N         so many captures: OUT-1.cxdat, OUT-2.cxdat and so on\n"
    "      --model M          name or code of the model that it must be, or that is simulated\n"
    "      --simulate         without an instrument and a trigger: square waves, and what the\n"
    "                         decoders simulate\n"
    "  -h, --help             this text\n"
    "\n"
    "Ctrl+C ends a capture and keeps what there is. Exit code: 0 good, 1 no capture, 2 wrong usage; 130 when\n"
    "Ctrl+C ended it.\n";

QVector<Arguments::Option> options()
{
    return CaptureChoice::options() + QVector<Arguments::Option>{
                                          {QStringLiteral("--analyzer"), QStringLiteral("-a"), true},
                                          {QStringLiteral("--format"), {}, true},
                                          {QStringLiteral("--help"), QStringLiteral("-h"), false},
                                          {QStringLiteral("--model"), {}, true},
                                          {QStringLiteral("--output"), QStringLiteral("-o"), true},
                                          {QStringLiteral("--repeat"), {}, true},
                                          {QStringLiteral("--simulate"), {}, false},
                                          {QStringLiteral("--timeout"), {}, true},
                                      };
}

QString readPath(const Arguments::Parsed &parsed, Job &job)
{
    job.path = parsed.value(QStringLiteral("--output")).value_or(QString());
    if (!job.path.isEmpty() && QFileInfo(job.path).suffix() != QLatin1String("cxdat")) {
        return QStringLiteral("the name of a data file ends in .cxdat, and \"%1\" does not").arg(job.path);
    }
    return job.path.isEmpty() && job.requests.isEmpty()
               ? QStringLiteral("nothing is to be done with the capture: name a file with -o, or a decoder with -a")
               : QString();
}

QString readRun(const Arguments::Parsed &parsed, Job &job)
{
    if (const auto text = parsed.value(QStringLiteral("--timeout"))) {
        constexpr std::int64_t msPerSecond = 1000;
        const auto time = Quantity::time(*text);
        const auto ms = time ? Quantity::samples(*time, msPerSecond) : std::nullopt;
        if (!ms || *ms > std::numeric_limits<int>::max()) {
            return QStringLiteral("--timeout takes a time such as 30s or 500ms");
        }
        job.timeoutMs = int(*ms);
    }
    if (const auto text = parsed.value(QStringLiteral("--repeat"))) {
        const auto count = Quantity::count(*text);
        if (!count || *count < 1 || *count > mostCaptures) {
            return QStringLiteral("--repeat takes a number of captures, 1 to 1000000");
        }
        job.repeat = int(*count);
    }
    job.model = parsed.value(QStringLiteral("--model"));
    job.simulates = parsed.has(QStringLiteral("--simulate"));
    const bool waits = !job.choice.triggers.isEmpty() || job.choice.position;
    return job.simulates && waits ? QStringLiteral("a simulated capture has no trigger: --trigger and --position are "
                                                   "for instruments")
                                  : QString();
}

/// What would keep the first capture from being saved, before it is made.
QString obstacleTo(const Job &job)
{
    if (job.path.isEmpty()) {
        return {};
    }
    const QString path = numberedPath(job.path, 1, job.repeat);
    const WriteFault fault = FileReplacement(path).begin();
    return fault == WriteFault::None ? QString()
                                     : QStringLiteral("%1: %2").arg(path, fileReason({fileResultOf(fault)}));
}

} // namespace

QString read(const Arguments::Parsed &parsed, Job &job)
{
    if (!parsed.operands.isEmpty()) {
        return QStringLiteral("\"%1\" is one word too many").arg(parsed.operands.first());
    }
    for (const QString &error : {job.choice.read(parsed), Decoding::readRequests(parsed, job.requests),
                                 readRun(parsed, job), readPath(parsed, job)}) {
        if (!error.isEmpty()) {
            return error;
        }
    }
    job.format = parsed.value(QStringLiteral("--format")).value_or(job.format);
    Output nowhere{QString()};
    return FrameWriter::make(job.format, nowhere, false) ? QString()
                                                         : QStringLiteral("there is no format \"%1\"").arg(job.format);
}

QString numberedPath(const QString &path, int number, int count)
{
    if (count < 2 || path.isEmpty()) {
        return path;
    }
    const QFileInfo info(path);
    const QString digits = QString::number(number).rightJustified(int(QString::number(count).size()), QLatin1Char('0'));
    const QString end = QLatin1Char('.') + info.suffix();
    return path.chopped(end.size()) + QLatin1Char('-') + digits + end;
}

bool isModel(const QString &named, const QString &name, int code)
{
    return named.compare(name, Qt::CaseInsensitive) == 0 || named == QString::number(code);
}

int run(const QStringList &arguments, const Host &host)
{
    const Arguments::Parsed parsed = Arguments::parse(arguments, options());
    if (parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"))) {
        std::fputs(captureUsage, stdout);
        return Terminal::good;
    }
    Job job;
    QString error = parsed.error.isEmpty() ? read(parsed, job) : parsed.error;
    if (!error.isEmpty()) {
        Terminal::say(error + QStringLiteral("; \"luxcli capture --help\" tells more"));
        return Terminal::wrongUsage;
    }
    error = obstacleTo(job);
    if (!error.isEmpty()) {
        Terminal::say(error);
        return Terminal::badInput;
    }
    return InstrumentCapture(job, host).run();
}

} // namespace CaptureCommand

int Commands::capture(const QStringList &arguments)
{
    return CaptureCommand::run(arguments, {makeUsbPlatform, {}, Terminal::takeInterrupt});
}
