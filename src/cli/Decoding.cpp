#include "cli/Decoding.h"

#include "analyzer/AnalyzerManager.h"
#include "cli/FrameThread.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/PluginFaults.h"
#include "cli/Quantity.h"
#include "cli/Terminal.h"
#include "store/SmpData.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>
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

std::vector<AnalyzerResults *> resultsOf(const AnalyzerManager &manager)
{
    std::vector<AnalyzerResults *> all;
    for (int i = 0; i < manager.count(); ++i) {
        AnalyzerResults *results = nullptr;
        manager.analyzerAt(i)->GetAnalyzerResults(&results);
        all.push_back(results);
    }
    return all;
}

/// @return false when the user ended it, the output is no good, or the text of a decoder does not come to an end
bool writeFrames(AnalyzerManager &manager, FrameThread::Task task, FrameWriter &writer, const Output &out)
{
    constexpr std::chrono::milliseconds step{50}; // between two looks at the thread
    ResultsGate &gate = manager.gate();
    const auto work = std::make_shared<FrameThread>(gate, std::move(task), writer, out);
    std::thread thread([work] { work->run(); });
    while (!work->waitForEnd(step) && !work->reader()->isLost() && !Terminal::wasInterrupted()) {
        manager.lookAfterReaders(); // there is no event loop that would
    }
    gate.endThread(thread, work->reader(), [&work](std::chrono::milliseconds most) { return work->waitForEnd(most); });
    return work->isWhole();
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
          Output &out, const Span &span)
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
    FrameThread::Task task{resultsOf(manager), Quantity::samplesWithParts(span.from, rate),
                           Quantity::samplesWithParts(span.to, rate)};
    const bool isWhole = writeFrames(manager, std::move(task), writer, out);
    if (!isWhole && Terminal::wasInterrupted()) {
        return Terminal::interrupted;
    }
    manager.lookAfterReaders();
    const bool isFaulty = faults.say();
    if (!isWhole && out.isGood()) {
        out.abandon(); // a decoder's text did not come to an end
    }
    return isFaulty || !isWhole ? int(Terminal::badInput) : code;
}

} // namespace Decoding
