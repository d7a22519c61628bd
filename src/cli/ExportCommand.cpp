#include "cli/CaptureJob.h"
#include "cli/CaptureSource.h"
#include "cli/Commands.h"
#include "cli/ExportJob.h"
#include "cli/PictureProgram.h"
#include "cli/Terminal.h"

#include <cstdio>

namespace {

const char *const exportUsage =
    "Usage: luxcli export FILE [-f csv|text|bin|vcd|sr|png|svg] [--channels LIST] [--from T] [--to T] [-o OUT]\n"
    "                     [--size WxH] [--dpi N]\n"
    "\n"
    "Writes digital channels of a capture (.cxdat, .sr, .vcd) for other programs, or a picture of them.\n"
    "\n"
    "  -f, --format F     csv: a line a change, with exact times and the last sample\n"
    "                     text: a line a change, as the window exports it\n"
    "                     bin: all samples as bytes; vcd: value change dump; sr: session archive\n"
    "                     png, svg: a picture of the waves, with what the decoders of the file find\n"
    "                     Without it the suffix of OUT tells.\n"
    "  -c, --channels L   these channels only, such as 0-3,7 or by their names\n"
    "      --from T       from this time from the capture's start on, such as 1.5 or 20ms\n"
    "      --to T         up to this time\n"
    "      --size WxH     pixels of a picture; without it 1600 wide, and as high as its rows, at most 900\n"
    "      --dpi N        dots per inch of a picture, 96 to 960: 192 makes texts and lines twice as large\n"
    "  -o, --output OUT   write to this file, which appears when it is whole; without it the standard output\n"
    "  -h, --help         this text\n";

int exportAs(const ExportJob &job)
{
    const CaptureSource source = CaptureSource::openOrTell(job.path);
    if (!source.data) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    CaptureOut out;
    out.kind = job.kind;
    const QString refusal = job.pick(*source.data, out.part);
    if (!refusal.isEmpty()) {
        Terminal::say(QStringLiteral("%1: %2").arg(job.path, refusal));
        return Terminal::badInput;
    }
    out.names = CaptureJob::names(*source.data);
    const int code = CaptureJob::write(job.out, *source.data, out);
    return code == Terminal::good && !source.warning.isEmpty() ? Terminal::badInput : code;
}

} // namespace

int Commands::exportData(const QStringList &arguments)
{
    ExportJob job;
    const QString wrong = job.read(arguments);
    if (job.help) {
        std::fputs(exportUsage, stdout);
        return Terminal::good;
    }
    if (!wrong.isEmpty()) {
        Terminal::say(wrong + QStringLiteral("; \"luxcli export --help\" tells more"));
        return Terminal::wrongUsage;
    }
    return job.picture != ExportJob::Picture::None ? PictureProgram::run(arguments) : exportAs(job);
}
