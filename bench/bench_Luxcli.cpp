// The command line program as it was built, on long captures: processor time of the whole process, its start included.
//
// `info` tells of a data file of 10 GB (of which little is on the disk: entries are not read) and is to take 50 ms.
// `measure` and `diff` read their files of 100 million edges in eight channels; `readAll` is what `cat` takes to read
// the same bytes, for a yardstick in the same run. TMPDIR chooses the file system.

#include "files/DataBlocks.h"
#include "support/ChildUse.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int channels = 8;
constexpr std::int64_t edgesOfChannel = 12'500'000;

void require(bool done, const char *what)
{
    if (!done) {
        std::fprintf(stderr, "bench_Luxcli: cannot %s\n", what);
        std::exit(1);
    }
}

QString pathOf(const char *name)
{
    static const QTemporaryDir folder;
    return folder.filePath(QLatin1String(name));
}

QByteArray settings()
{
    return "<settings><global><devModel>1</devModel></global><devices/><analyzers/></settings>\n";
}

void write(QFile &file, const void *bytes, qint64 size)
{
    require(file.write(static_cast<const char *>(bytes), size) == size, "write the capture");
}

/// A data file whose channels change every 16 samples on average.
QString captureFile(const char *name)
{
    QFile file(pathOf(name));
    if (file.exists()) {
        return file.fileName();
    }
    require(file.open(QIODevice::WriteOnly), "open the capture");
    constexpr std::int64_t samples = edgesOfChannel * 32;
    const auto head = encodeFileHead({samples, 100'000'000, 0, channels});
    write(file, settings().constData(), settings().size());
    write(file, head.data(), qint64(head.size()));
    std::uint32_t random = 1;
    for (int chn = 0; chn < channels; ++chn) {
        const auto block = encodeBlockHead({chn, 0, edgesOfChannel + 1});
        write(file, block.data(), qint64(block.size()));
        QByteArray piece;
        std::int64_t pos = 0;
        for (std::int64_t i = 0; i <= edgesOfChannel; ++i) {
            random = random * 1664525 + 1013904223;
            pos = i < edgesOfChannel ? pos + 1 + (random >> 8) % 31 : samples;
            for (int byte = 0; byte < dataEntrySize; ++byte) {
                piece.append(char(pos >> (8 * byte)));
            }
            if (piece.size() > 1'000'000 || i == edgesOfChannel) {
                write(file, piece.constData(), piece.size());
                piece.clear();
            }
        }
    }
    return file.fileName();
}

QString hugeFile()
{
    constexpr std::int64_t entries = 2'000'000'000;
    QFile file(pathOf("huge.cxdat"));
    require(file.open(QIODevice::WriteOnly), "open the huge file");
    const auto head = encodeFileHead({1'000'000'000'000, 100'000'000, 0, channels});
    const auto block = encodeBlockHead({0, 0, entries});
    write(file, settings().constData(), settings().size());
    write(file, head.data(), qint64(head.size()));
    write(file, block.data(), qint64(block.size()));
    require(file.resize(file.size() + entries * dataEntrySize), "make the huge file so long");
    return file.fileName();
}

void run(benchmark::State &state, const QString &program, const QStringList &arguments, std::int64_t edges)
{
    for ([[maybe_unused]] auto _ : state) {
        const ChildUse use = runChild(program, arguments);
        require(use.code == 0, "run the program");
        state.SetIterationTime(use.processor);
        state.counters["MB"] = double(use.peak) / (1 << 20);
    }
    if (edges > 0) {
        state.SetItemsProcessed(std::int64_t(state.iterations()) * edges);
    }
}

void info(benchmark::State &state)
{
    run(state, QStringLiteral(LUXCLI), {QStringLiteral("info"), hugeFile()}, 0);
}

void measure(benchmark::State &state)
{
    run(state, QStringLiteral(LUXCLI),
        {QStringLiteral("measure"), captureFile("a.cxdat"), QStringLiteral("--channel"), QStringLiteral("0-7")},
        channels * edgesOfChannel);
}

void diff(benchmark::State &state)
{
    run(state, QStringLiteral(LUXCLI), {QStringLiteral("diff"), captureFile("a.cxdat"), captureFile("b.cxdat")},
        2 * channels * edgesOfChannel);
}

void readAll(benchmark::State &state)
{
    run(state, QStringLiteral("/bin/cat"), {captureFile("a.cxdat")}, channels * edgesOfChannel);
}

} // namespace

BENCHMARK(info)->Iterations(1)->Repetitions(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(readAll)->Iterations(1)->Repetitions(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(measure)->Iterations(1)->Repetitions(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(diff)->Iterations(1)->Repetitions(3)->UseManualTime()->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
