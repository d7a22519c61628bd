#include "analyzer/AnalyzerManager.h"
#include "cli/AnalyzerSetup.h"
#include "cli/Arguments.h"
#include "cli/CaptureJob.h"
#include "cli/CaptureSource.h"
#include "cli/Commands.h"
#include "cli/Decoding.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/PluginFaults.h"
#include "cli/Quantity.h"
#include "cli/Terminal.h"

#include <QFileInfo>

#include <algorithm>
#include <cstdio>

namespace {

const char *const decodeUsage =
    "Usage: luxcli decode FILE... [-a NAME:key=value,...]... [--format jsonl|csv|text]\n"
    "                     [--from T] [--to T] [-o OUT]\n"
    "\n"
    "Decodes captures (.cxdat, .sr, .vcd) and writes what was found, one line an element.\n"
    "\n"
    "  -a, --analyzer NAME:key=value,...  a decoder and its settings; may be given several\n"
    "                     times. Without it those that are stored in the file.\n"
    "                     \"luxcli analyzers\" lists the names, \"luxcli analyzers NAME\" the keys.\n"
    "      --format F     jsonl (the default), csv or text\n"
    "      --from T       leave out what ends before this time from the capture's start, such as 1.5 or 20ms\n"
    "      --to T         leave out what begins behind this time\n"
    "  -o, --output OUT   write to this file, which appears when it is whole\n"
    "  -h, --help         this text\n";

/// What is to be done with each file.
struct Job {
    QVector<Arguments::Request> requests;
    Decoding::Span span;
};

AnalyzerHost hostOf(const CaptureSource &source)
{
    AnalyzerHost host;
    host.model = [model = source.model] { return model; };
    host.channelCount = [count = source.data->chnCount] { return count; };
    host.store = [](const QList<QStringList> &) {}; // nothing of this process is kept
    return host;
}

/// @return the exit code, good when the analyzers are there; the user is told why not
int addAnalyzers(AnalyzerManager &manager, PluginFaults &faults, const Job &job, const QString &path)
{
    if (job.requests.isEmpty()) {
        manager.loadFromConfig();
        manager.captureReady();
        if (manager.count() > 0) {
            return Terminal::good;
        }
        faults.say();
        Terminal::say(QStringLiteral("%1: it has no stored analyzers that can be had; name one with -a").arg(path));
        return Terminal::badInput;
    }
    for (const Arguments::Request &request : job.requests) {
        const AnalyzerSetup::Refusal refusal = AnalyzerSetup::add(manager, request);
        if (!refusal.error.isEmpty()) {
            faults.say();
            Terminal::say(refusal.error);
            return refusal.code;
        }
    }
    return Terminal::good;
}

int decodeFile(const QString &path, const Job &job, FrameWriter &writer, Output &out)
{
    const CaptureSource source = CaptureSource::openOrTell(path);
    if (!source.data) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    AnalyzerManager manager(hostOf(source));
    PluginFaults faults(manager);
    AnalyzerSetup::sayPassedOver(manager);
    const bool isShort = job.requests.isEmpty() && AnalyzerSetup::sayNotFound(manager, path);
    manager.setCapture(source.data.get(), std::uint32_t(source.model));
    int code = addAnalyzers(manager, faults, job, path);
    if (code != Terminal::good) {
        return code;
    }
    code = Decoding::write(manager, faults, *source.data, QFileInfo(path).completeBaseName(), writer, out, job.span);
    return source.warning.isEmpty() && !isShort ? code : std::max(code, int(Terminal::badInput));
}

/// @return a message for the user; empty when the arguments make sense
QString readJob(const Arguments::Parsed &parsed, Job &job)
{
    if (QString error = Decoding::readRequests(parsed, job.requests); !error.isEmpty()) {
        return error;
    }
    const auto readTime = [&parsed](const QString &name, double &time) {
        const auto text = parsed.value(name);
        const auto value = text ? Quantity::time(*text) : std::nullopt;
        time = value ? value->toDouble() : time;
        return value || !text;
    };
    const QString out = parsed.value(QStringLiteral("--output")).value_or(QString());
    for (const QString &path : parsed.operands) {
        if (QString error = CaptureJob::overwritten(path, out); !error.isEmpty()) {
            return error;
        }
    }
    if (!readTime(QStringLiteral("--from"), job.span.from) || !readTime(QStringLiteral("--to"), job.span.to)) {
        return QStringLiteral("--from and --to take a time such as 1.5 or 20ms");
    }
    if (job.span.to < job.span.from) {
        return QStringLiteral("there is nothing between these times");
    }
    return parsed.operands.isEmpty() ? QStringLiteral("no file is named") : QString();
}

} // namespace

int Commands::decode(const QStringList &arguments)
{
    const Arguments::Parsed parsed =
        Arguments::parse(arguments, {{QStringLiteral("--analyzer"), QStringLiteral("-a"), true},
                                     {QStringLiteral("--format"), {}, true},
                                     {QStringLiteral("--from"), {}, true},
                                     {QStringLiteral("--to"), {}, true},
                                     {QStringLiteral("--output"), QStringLiteral("-o"), true},
                                     {QStringLiteral("--help"), QStringLiteral("-h"), false}});
    if (parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"))) {
        std::fputs(decodeUsage, stdout);
        return Terminal::good;
    }
    Job job;
    QString error = parsed.error.isEmpty() ? readJob(parsed, job) : parsed.error;
    const auto outPath = error.isEmpty() ? parsed.value(QStringLiteral("--output")) : std::nullopt;
    Output out(outPath.value_or(QString()));
    const QString format = parsed.value(QStringLiteral("--format")).value_or(QStringLiteral("jsonl"));
    const std::unique_ptr<FrameWriter> writer = FrameWriter::make(format, out, parsed.operands.size() > 1);
    if (error.isEmpty() && !writer) {
        error = QStringLiteral("there is no format \"%1\"").arg(format);
    }
    if (!error.isEmpty()) {
        Terminal::say(error + QStringLiteral("; \"luxcli decode --help\" tells more"));
        return Terminal::wrongUsage;
    }
    int code = out.isGood() ? Terminal::good : Terminal::badInput;
    for (const QString &path : parsed.operands) {
        if (out.isGood() && code != Terminal::interrupted && code != Terminal::wrongUsage) {
            code = std::max(code, decodeFile(path, job, *writer, out));
        }
    }
    if (code == Terminal::interrupted || code == Terminal::wrongUsage) {
        return code;
    }
    return out.finish(code);
}
