#include "cli/Arguments.h"
#include "cli/CaptureJob.h"
#include "cli/CaptureSource.h"
#include "cli/Commands.h"
#include "cli/Terminal.h"

#include <cmath>
#include <cstdio>

namespace {

const char *const exportUsage =
    "Usage: luxcli export FILE [-f csv|text|bin|vcd|sr] [--channels LIST] [--from T] [--to T] [-o OUT]\n"
    "\n"
    "Writes digital channels of a capture (.cxdat, .sr, .vcd) for other programs.\n"
    "\n"
    "  -f, --format F     csv: a line a change, with exact times and the last sample\n"
    "                     text: a line a change, as the window exports it\n"
    "                     bin: all samples as bytes; vcd: value change dump; sr: session archive\n"
    "                     Without it the suffix of OUT tells.\n"
    "      --channels L   these channels only, such as 0-3,7 or by their names\n"
    "      --from T       from this time from the capture's start on, such as 1.5 or 20ms\n"
    "      --to T         up to this time\n"
    "  -o, --output OUT   write to this file, which appears when it is whole; without it the standard output\n"
    "  -h, --help         this text\n";

/// What is to be done.
struct ExportJob {
    CaptureKind kind = CaptureKind::None;
    double from = 0; ///< seconds
    double to = HUGE_VAL;
    QStringList channels;
    QString out;
};

/// @return empty, or what is wrong
QString exportJobOf(const Arguments::Parsed &parsed, ExportJob &job)
{
    if (!parsed.error.isEmpty() || parsed.operands.size() != 1) {
        return !parsed.error.isEmpty()     ? parsed.error
               : parsed.operands.isEmpty() ? QStringLiteral("no file is named")
                                           : QStringLiteral("more than one file");
    }
    job.out = parsed.value(QStringLiteral("--output")).value_or(QStringLiteral("-"));
    const auto format = parsed.value(QStringLiteral("--format"));
    job.kind = format ? captureKindNamed(*format) : captureKindOf(job.out);
    if (job.kind == CaptureKind::None || job.kind == CaptureKind::Cxdat) {
        return format ? QStringLiteral("there is no format \"%1\"").arg(*format)
                      : QStringLiteral("no format is told (-f)");
    }
    for (const auto &[name, time] :
         {std::pair(QStringLiteral("--from"), &job.from), {QStringLiteral("--to"), &job.to}}) {
        const auto text = parsed.value(name);
        const auto seconds = text ? Arguments::seconds(*text) : std::nullopt;
        if (text && !seconds) {
            return QStringLiteral("\"%1\" is no time").arg(*text);
        }
        *time = seconds.value_or(*time);
    }
    job.channels = CaptureJob::items(parsed.values(QStringLiteral("--channels")));
    return {};
}

} // namespace

int Commands::exportData(const QStringList &arguments)
{
    const Arguments::Parsed parsed =
        Arguments::parse(arguments, {{QStringLiteral("--format"), QStringLiteral("-f"), true},
                                     {QStringLiteral("--channels"), {}, true},
                                     {QStringLiteral("--from"), {}, true},
                                     {QStringLiteral("--to"), {}, true},
                                     {QStringLiteral("--output"), QStringLiteral("-o"), true},
                                     {QStringLiteral("--help"), QStringLiteral("-h"), false}});
    if (parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"))) {
        std::fputs(exportUsage, stdout);
        return Terminal::good;
    }
    ExportJob job;
    const QString wrong = exportJobOf(parsed, job);
    if (!wrong.isEmpty()) {
        Terminal::say(wrong + QStringLiteral("; \"luxcli export --help\" tells more"));
        return Terminal::wrongUsage;
    }
    const QString path = parsed.operands.constFirst();
    const CaptureSource source = CaptureSource::openOrTell(path);
    if (!source.data) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    CaptureOut out;
    out.kind = job.kind;
    const QString refusal = CaptureJob::pick(*source.data, job.channels, out.part.channels);
    const auto rate = double(source.data->smpFrequ());
    out.part.start = job.from * rate;
    out.part.end = std::isinf(job.to) ? double(source.data->smpCount()) : job.to * rate;
    const bool isOutside = out.part.start >= double(source.data->smpCount()) || job.to < job.from;
    if (!refusal.isEmpty() || isOutside) {
        Terminal::say(QStringLiteral("%1: %2").arg(
            path, refusal.isEmpty() ? QStringLiteral("there is nothing between these times") : refusal));
        return Terminal::badInput;
    }
    out.names = CaptureJob::names(*source.data);
    const int code = CaptureJob::write(job.out, *source.data, out);
    return code == Terminal::good && !source.warning.isEmpty() ? Terminal::badInput : code;
}
