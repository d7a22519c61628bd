// The results list and the export over ten million frames of two analyzers: what a user waits for, and how long.

#include "analyzer/AnalyzerDataGen.h"
#include "analyzer/MadeResults.h"
#include "analyzer/ResultsGate.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <malloc.h>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using ResultList::Step;

constexpr std::uint64_t framesEach = 5'000'000;
constexpr std::uint64_t hitEvery = 100;
constexpr int rowsOnShow = 40;
constexpr double wholeCapture = 1e12;

double msSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// Two analyzers' frames, which alternate.
std::vector<ResultSource> &sources()
{
    static MadeResults one('A');
    static MadeResults other('B');
    static std::vector<ResultSource> both = [] {
        one.row(framesEach, 0, 20, hitEvery);
        other.row(framesEach, 7, 20, hitEvery);
        return std::vector<ResultSource>{{&one, nullptr, DisplayBase::Hexadecimal},
                                         {&other, nullptr, DisplayBase::Hexadecimal}};
    }();
    return both;
}

void start(ResultList::State &list, double from, const QString &searched = {})
{
    list.rowNum = rowsOnShow;
    ResultList::reset(list, sources(), {searched, from, wholeCapture});
}

void fillPage(ResultList::State &list)
{
    while (ResultList::step(list) == Step::More) {
    }
}

void scroll(ResultList::State &list, qint64 row)
{
    ResultList::scrollTo(list, row, [] { return false; });
    fillPage(list);
}

void resetUntilTheFirstPage(benchmark::State &state)
{
    ResultList::State list;
    for (auto _ : state) {
        start(list, 5e7);
        fillPage(list);
    }
}

void scrollBy(benchmark::State &state)
{
    ResultList::State list;
    start(list, 5e7);
    fillPage(list);
    for (auto _ : state) {
        scroll(list, list.topRow + state.range(0));
    }
}

void jumpToTheMiddleAndBack(benchmark::State &state)
{
    ResultList::State list;
    start(list, 0);
    fillPage(list);
    for (auto _ : state) {
        scroll(list, qint64(framesEach));
        scroll(list, 0);
    }
}

void searchUntilTheFirstPage(benchmark::State &state)
{
    ResultList::State list;
    for (auto _ : state) {
        start(list, 0, QStringLiteral("hit"));
        fillPage(list);
    }
}

void searchTheWholeList(benchmark::State &state)
{
    ResultList::State list;
    for (auto _ : state) {
        start(list, 0, QStringLiteral("hit"));
        while (ResultList::step(list) != Step::Idle) {
        }
    }
    state.counters["rows/s"] =
        benchmark::Counter(double(2 * framesEach), benchmark::Counter::kIsIterationInvariantRate);
}

/// A new search in the middle of a scan, until its first page is told on the main thread.
void typeWhileItScans(benchmark::State &state)
{
    ResultsGate gate;
    AnalyzerDataGen list(gate, [] { return sources(); });
    list.slotRowNumChanged(rowsOnShow);
    int pages = 0;
    QObject::connect(&list, &AnalyzerDataGen::listChanged, &list, [&pages] { ++pages; });
    const auto search = [&](const QString &text) {
        list.reset({text, 0, wholeCapture});
        for (const int before = pages; pages == before || list.rows().size() < rowsOnShow;) {
            QCoreApplication::processEvents();
        }
    };
    search(QStringLiteral("hit"));
    for (auto _ : state) {
        search(QStringLiteral("hit"));
    }
}

void memoryOfTheList(benchmark::State &state)
{
    (void)sources();
    for (auto _ : state) {
        const std::size_t before = mallinfo2().uordblks;
        ResultList::State list;
        start(list, 0, QStringLiteral("hit"));
        fillPage(list);
        state.counters["bytes"] = double(mallinfo2().uordblks - before + sizeof list);
    }
}

void exportAgainstPlainWriting(benchmark::State &state)
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("frames.csv")).toStdString();
    AnalyzerResults &results = *sources()[0].results;
    for (auto _ : state) {
        Clock::time_point begin = Clock::now();
        results.StartExportThread(nullptr, DisplayBase::Hexadecimal, 0);
        results.BuildExportFile(path.c_str(), DisplayBase::Hexadecimal, 0);
        const double exported = msSince(begin);
        std::ifstream file(path, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), {});
        begin = Clock::now();
        std::FILE *plain = std::fopen(path.c_str(), "wb");
        constexpr std::size_t block = 65536;
        for (std::size_t at = 0; at < bytes.size(); at += block) {
            std::fwrite(bytes.data() + at, 1, std::min(block, bytes.size() - at), plain);
        }
        std::fclose(plain);
        state.counters["of plain writing"] = msSince(begin) / exported;
        state.counters["frames/s"] = double(framesEach) / exported * 1000;
    }
}

void cancelAnExport(benchmark::State &state)
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("frames.csv")).toStdString();
    AnalyzerResults &results = *sources()[0].results;
    for (auto _ : state) {
        results.StartExportThread(nullptr, DisplayBase::Hexadecimal, 0);
        std::thread writer([&] { results.BuildExportFile(path.c_str(), DisplayBase::Hexadecimal, 0); });
        while (results.GetProgress() < 0.01) {
            std::this_thread::yield();
        }
        const Clock::time_point begin = Clock::now();
        results.CancelExport();
        writer.join();
        state.SetIterationTime(msSince(begin) / 1000);
    }
}

BENCHMARK(resetUntilTheFirstPage)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollBy)
    ->Arg(1)
    ->Arg(-1)
    ->Arg(rowsOnShow)
    ->Arg(-rowsOnShow)
    ->Iterations(2000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(jumpToTheMiddleAndBack)->Unit(benchmark::kMillisecond);
BENCHMARK(searchUntilTheFirstPage)->Unit(benchmark::kMillisecond);
BENCHMARK(searchTheWholeList)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(typeWhileItScans)->UseRealTime()->Iterations(20)->Unit(benchmark::kMillisecond);
BENCHMARK(memoryOfTheList)->Iterations(1);
BENCHMARK(exportAgainstPlainWriting)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(cancelAnExport)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    (void)sources(); // made before anything is measured
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
