#include "cli/Decoding.h"

#include "analyzer/AnalyzerManager.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/PluginFaults.h"
#include "cli/Terminal.h"
#include "store/SmpData.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <vector>

namespace Decoding {

namespace {

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

/// What the decoders have to tell of their runs. @return whether all of them came to the end, and none is at fault
bool tellOfRuns(const AnalyzerManager &manager, PluginFaults &faults)
{
    QStringList messages;
    for (int i = 0; i < manager.count(); ++i) {
        messages.append(manager.message(i));
    }
    bool good = !faults.say(messages);
    for (int i = 0; i < manager.count(); ++i) {
        for (const QString &line : messages.at(i).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            Terminal::say(QStringLiteral("%1: %2").arg(manager.analyzerTitle(i), line));
        }
        good = good && !manager.endedEarly(i) && manager.analyzerAt(i)->GetDecodeStatus() == DecodeStatus::Complete;
    }
    return good;
}

} // namespace

QString readRequests(const Arguments::Parsed &parsed, QVector<Arguments::Request> &requests)
{
    for (const QString &text : parsed.values(QStringLiteral("--analyzer"))) {
        const auto request = Arguments::request(text);
        if (!request) {
            return QStringLiteral("\"%1\" is not of the form NAME:key=value,...").arg(text);
        }
        requests.append(*request);
    }
    return {};
}

int finish(AnalyzerManager &manager, PluginFaults &faults)
{
    if (!waitForWorkers(manager)) {
        return Terminal::interrupted;
    }
    return tellOfRuns(manager, faults) ? Terminal::good : Terminal::badInput;
}

int write(AnalyzerManager &manager, PluginFaults &faults, const SmpData &data, const QString &name, FrameWriter &writer,
          const Output &out, const Span &span)
{
    const int code = finish(manager, faults);
    if (code == Terminal::interrupted) {
        return code;
    }
    FrameWriter::Capture capture{name, data.smpFrequ(), data.smpCount(), {}};
    for (int i = 0; i < manager.count(); ++i) {
        capture.analyzers.push_back(manager.analyzerAt(i));
    }
    writer.head(capture);
    const auto rate = double(capture.rate);
    if (!writeFrames(manager, writer, out, span.from * rate, span.to * rate)) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    manager.lookAfterReaders(); // there is no event loop that would
    return faults.say() ? int(Terminal::badInput) : code;
}

} // namespace Decoding
