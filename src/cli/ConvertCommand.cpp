#include "cli/Arguments.h"
#include "cli/CaptureJob.h"
#include "cli/CaptureSource.h"
#include "cli/Commands.h"
#include "cli/Quantity.h"
#include "cli/Terminal.h"
#include "files/CaptureFiller.h"
#include "settings/Config.h"
#include "settings/ConfigDocument.h"

#include <cstdio>

namespace {

const char *const convertUsage =
    "Usage: luxcli convert IN OUT [--from F] [--to F] [--channels LIST] [--rate R] [--bytes N]\n"
    "\n"
    "Converts a capture between data files (cxdat), session archives (sr), value change dumps (vcd),\n"
    "comma-separated values (csv) and plain bytes (raw). The suffixes tell the kinds.\n"
    "\n"
    "      --from F       the kind of IN: cxdat, sr, vcd, csv or raw\n"
    "      --to F         the kind of OUT: these, or text\n"
    "  -c, --channels L   these channels only, such as 0-3,7 or by their names; of other programs' files in\n"
    "                     this order. Needed where there are more than 32.\n"
    "      --rate R       the sample rate of IN where it does not tell it, such as 24M or 12.5kHz: raw, and\n"
    "                     csv without times; the times of other csv are rounded to its samples\n"
    "      --bytes N      raw: bytes a sample; without it as many as the channels need\n"
    "  -h, --help         this text\n"
    "\n"
    "OUT appears when it is whole; \"-\" is the standard output.\n";

/// What is to be done.
struct Conversion {
    CaptureKind from = CaptureKind::None;
    CaptureKind to = CaptureKind::None;
    QString in;
    QString out;
    ForeignOptions options;
};

/// The kind that is told, or that of the suffix. @return empty, or what is wrong
QString takeKind(const Arguments::Parsed &parsed, const QString &option, const QString &path, CaptureKind &kind)
{
    const auto told = parsed.value(option);
    kind = told ? captureKindNamed(*told) : captureKindOf(path);
    if (kind != CaptureKind::None) {
        return {};
    }
    return told ? QStringLiteral("there is no kind of file \"%1\"").arg(*told)
                : QStringLiteral("the suffix of \"%1\" tells no kind of file (%2)").arg(path, option);
}

/// @return empty, or what is wrong
QString conversionOf(const Arguments::Parsed &parsed, Conversion &job)
{
    if (!parsed.error.isEmpty() || parsed.operands.size() != 2) {
        return parsed.error.isEmpty() ? QStringLiteral("one file to read and one to write are needed") : parsed.error;
    }
    job.in = parsed.operands.at(0);
    job.out = parsed.operands.at(1);
    QString wrong = CaptureJob::overwritten(job.in, job.out);
    if (wrong.isEmpty()) {
        wrong = takeKind(parsed, QStringLiteral("--from"), job.in, job.from);
    }
    if (wrong.isEmpty()) {
        wrong = takeKind(parsed, QStringLiteral("--to"), job.out, job.to);
    }
    if (wrong.isEmpty()) {
        wrong = CaptureJob::readChannels(parsed, job.options.channels);
    }
    const auto rate = parsed.value(QStringLiteral("--rate"));
    const auto bytes = parsed.value(QStringLiteral("--bytes"));
    job.options.rate = rate ? Quantity::frequency(*rate).value_or(0) : 0;
    job.options.unitSize = bytes ? bytes->toInt() : 0;
    if (rate && (job.options.rate < 1 || job.options.rate > CaptureFiller::positionMax)) {
        wrong = QStringLiteral("\"%1\" is no rate such as 24M or 12.5kHz").arg(*rate);
    } else if (bytes && (job.options.unitSize < 1 || job.options.unitSize > 128)) {
        wrong = QStringLiteral("\"%1\" is no number of bytes").arg(*bytes);
    }
    return wrong;
}

ForeignKind foreignKind(CaptureKind kind)
{
    switch (kind) {
    case CaptureKind::Bin:
        return ForeignKind::Raw;
    case CaptureKind::Csv:
    case CaptureKind::Text:
        return ForeignKind::Csv;
    case CaptureKind::Sr:
        return ForeignKind::Sr;
    case CaptureKind::Vcd:
        return ForeignKind::Vcd;
    case CaptureKind::Cxdat:
    case CaptureKind::None:
        break;
    }
    return ForeignKind::None;
}

int convertAs(const Conversion &job)
{
    const ForeignKind kind = foreignKind(job.from);
    const CaptureSource source = CaptureSource::openOrTell(job.in, kind, job.options);
    if (!source.data) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    CaptureOut out;
    out.kind = job.to;
    // Other programs' channels have been picked as they were read.
    const QString refusal = CaptureJob::pick(
        *source.data, kind == ForeignKind::None ? job.options.channels : QStringList(), out.part.channels);
    if (!refusal.isEmpty()) {
        Terminal::say(QStringLiteral("%1: %2").arg(job.in, refusal));
        return Terminal::badInput;
    }
    out.part.end = double(source.data->smpCount());
    out.names = CaptureJob::names(*source.data);
    const ConfigDocument settings = configCopy();
    out.settings = &settings;
    const int code = CaptureJob::write(job.out, *source.data, out);
    return code == Terminal::good && !source.warning.isEmpty() ? Terminal::badInput : code;
}

} // namespace

int Commands::convert(const QStringList &arguments)
{
    const Arguments::Parsed parsed =
        Arguments::parse(arguments, {{QStringLiteral("--from"), {}, true},
                                     {QStringLiteral("--to"), {}, true},
                                     {QStringLiteral("--channels"), QStringLiteral("-c"), true},
                                     {QStringLiteral("--rate"), {}, true},
                                     {QStringLiteral("--bytes"), {}, true},
                                     {QStringLiteral("--help"), QStringLiteral("-h"), false}});
    if (parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"))) {
        std::fputs(convertUsage, stdout);
        return Terminal::good;
    }
    Conversion job;
    const QString wrong = conversionOf(parsed, job);
    if (!wrong.isEmpty()) {
        Terminal::say(wrong + QStringLiteral("; \"luxcli convert --help\" tells more"));
        return Terminal::wrongUsage;
    }
    return convertAs(job);
}
