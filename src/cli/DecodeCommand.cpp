#include "analyzer/AnalyzerManager.h"
#include "cli/AnalyzerSetup.h"
#include "cli/Arguments.h"
#include "cli/CaptureSource.h"
#include "cli/Commands.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/Terminal.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <cstdio>
#include <limits>
#include <vector>

namespace {

const char *const decodeUsage =
    "Usage: luxcli decode FILE... [-a NAME:key=value,...]... [--format jsonl|csv|text]\n"
    "                     [--from T] [--to T] [-o OUT]\n"
    "\n"
    "Decodes captures (.cxdat) and writes what was found, one line an element.\n"
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
    double from = 0;
    double to = std::numeric_limits<double>::infinity();
};

/// Runs the event loop until no worker is left. @return false when the user ended it
bool waitForWorkers(AnalyzerManager &manager)
{
    Terminal::Progress line(QStringLiteral("Decoding"));
    QEventLoop loop;
    const auto look = [&] {
        double least = 1;
        bool isRunning = false;
        for (int i = 0; i < manager.count(); ++i) {
            if (manager.isWorkerRunning(i)) {
                isRunning = true;
                least = std::min(least, manager.progress(i));
            }
        }
        line.show(least);
        if (!isRunning || Terminal::wasInterrupted()) {
            loop.quit();
        }
    };
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, look);
    QObject::connect(&manager, &AnalyzerManager::analyzerDecodedChanged, &loop, look);
    timer.start(50); // ms
    QTimer::singleShot(0, &loop, look);
    loop.exec();
    return !Terminal::wasInterrupted();
}

/// The results of one analyzer, and how far they are written.
struct Stream {
    AnalyzerResults *results;
    std::uint64_t next;
    std::uint64_t end;
    std::int64_t first; ///< sample of the next frame
};

/// The analyzer whose next frame begins first; of equal ones the first analyzer.
Stream *nextOf(std::vector<Stream> &streams)
{
    Stream *nearest = nullptr;
    for (Stream &stream : streams) {
        if (stream.next < stream.end && (nearest == nullptr || stream.first < nearest->first)) {
            nearest = &stream;
        }
    }
    return nearest;
}

std::vector<Stream> streamsOf(const AnalyzerManager &manager)
{
    std::vector<Stream> streams;
    for (int i = 0; i < manager.count(); ++i) {
        AnalyzerResults *results = nullptr;
        manager.analyzerAt(i)->GetAnalyzerResults(&results);
        const std::uint64_t count = results != nullptr ? results->GetNumFrames() : 0;
        streams.push_back({results, 0, count, count > 0 ? results->GetFrame(0).firstSample : 0});
    }
    return streams;
}

/// @return false when the user ended it, or the output is no good
bool writeFrames(AnalyzerManager &manager, FrameWriter &writer, const Output &out, double from, double to)
{
    constexpr std::uint64_t lookEvery = 1024;
    std::vector<Stream> streams = streamsOf(manager);
    std::uint64_t written = 0;
    while (Stream *stream = nextOf(streams)) {
        const std::uint64_t index = stream->next++;
        const Frame frame = stream->results->GetFrame(index);
        if (stream->next < stream->end) {
            stream->first = stream->results->GetFrame(stream->next).firstSample;
        }
        if (double(frame.lastSample) < from || double(frame.firstSample) > to) {
            continue;
        }
        writer.frame(*stream->results, index, std::size_t(stream - streams.data()));
        if (++written % lookEvery == 0 && (Terminal::wasInterrupted() || !out.isGood())) {
            return false;
        }
    }
    return true;
}

/// What the decoders have to tell of their runs. @return whether all of them came to the end
bool tellOfRuns(const AnalyzerManager &manager)
{
    bool good = true;
    for (int i = 0; i < manager.count(); ++i) {
        for (const QString &line : manager.message(i).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            Terminal::say(QStringLiteral("%1: %2").arg(manager.analyzerTitle(i), line));
        }
        good = good && manager.analyzerAt(i)->GetDecodeStatus() == DecodeStatus::Complete;
    }
    return good;
}

AnalyzerHost hostOf(const CaptureSource &source)
{
    AnalyzerHost host;
    host.model = [model = source.model] { return model; };
    host.channelCount = [count = source.data->chnCount] { return count; };
    host.store = [](const QList<QStringList> &) {}; // nothing of this process is kept
    return host;
}

/// @return a message for the user; empty when the analyzers are there
QString addAnalyzers(AnalyzerManager &manager, const Job &job, bool &wrongUsage)
{
    if (job.requests.isEmpty()) {
        manager.loadFromConfig();
        manager.captureReady();
        return manager.count() > 0 ? QString()
                                   : QStringLiteral("it has no stored analyzers that can be had; name one with -a");
    }
    for (const Arguments::Request &request : job.requests) {
        const QString error = AnalyzerSetup::add(manager, request);
        if (!error.isEmpty()) {
            wrongUsage = true;
            return error;
        }
    }
    return {};
}

int decodeFile(const QString &path, const Job &job, FrameWriter &writer, const Output &out)
{
    const CaptureSource source = CaptureSource::openOrTell(path);
    if (!source.data) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    AnalyzerManager manager(hostOf(source));
    manager.setCapture(source.data.get(), 0);
    bool wrongUsage = false;
    const QString error = addAnalyzers(manager, job, wrongUsage);
    if (!error.isEmpty()) {
        Terminal::say(wrongUsage ? error : QStringLiteral("%1: %2").arg(path, error));
        return wrongUsage ? Terminal::wrongUsage : Terminal::badInput;
    }
    if (!waitForWorkers(manager)) {
        return Terminal::interrupted;
    }
    const bool good = tellOfRuns(manager);

    FrameWriter::Capture capture{
        QFileInfo(path).completeBaseName(), source.data->smpFrequ(), source.data->smpCount(), {}};
    for (int i = 0; i < manager.count(); ++i) {
        capture.analyzers.push_back(manager.analyzerAt(i));
    }
    writer.head(capture);
    const auto rate = double(capture.rate);
    if (!writeFrames(manager, writer, out, job.from * rate, job.to * rate)) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    return good && source.warning.isEmpty() ? Terminal::good : Terminal::badInput;
}

/// @return a message for the user; empty when the arguments make sense
QString readJob(const Arguments::Parsed &parsed, Job &job)
{
    for (const QString &text : parsed.values(QStringLiteral("--analyzer"))) {
        const auto request = Arguments::request(text);
        if (!request) {
            return QStringLiteral("\"%1\" is not of the form NAME:key=value,...").arg(text);
        }
        job.requests.append(*request);
    }
    const auto readTime = [&parsed](const QString &name, double &time) {
        const auto text = parsed.value(name);
        const auto value = text ? Arguments::seconds(*text) : std::optional(time);
        time = value.value_or(0);
        return value.has_value();
    };
    if (!readTime(QStringLiteral("--from"), job.from) || !readTime(QStringLiteral("--to"), job.to)) {
        return QStringLiteral("--from and --to take a time such as 1.5 or 20ms");
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
    Output out(parsed.value(QStringLiteral("--output")).value_or(QString()));
    const QString format = parsed.value(QStringLiteral("--format")).value_or(QStringLiteral("jsonl"));
    const std::unique_ptr<FrameWriter> writer = FrameWriter::make(format, out);
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
