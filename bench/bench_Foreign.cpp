// Other programs' files: value change dumps and session archives there and back, and comma-separated values, next to
// what the same bytes cost without any work on them.
//
// A dump of 8 channels, 100 MB and some: the aim is 150 MB/s each way. A session archive of 200 million samples of 8
// channels, of which one changes every other sample on average: its bytes are those of the samples. The same with one
// change in eight samples (`packed`), which the archive packs. 5 million lines of comma-separated values: at least a
// tenth of fwrite. All work from and to the page cache; TMPDIR chooses the file system. Compare the bytes per second
// within one run only.

#include "files/CaptureWriter.h"
#include "files/ForeignFile.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int channels = 8;

void require(bool done, const char *what)
{
    if (!done) {
        std::fprintf(stderr, "bench_Foreign: cannot %s\n", what);
        std::exit(1);
    }
}

/// Each channel changes after 1 to 2 * `mean` - 1 samples, at random.
std::unique_ptr<SmpData> capture(std::int64_t samples, std::uint32_t mean)
{
    memBudget = std::int64_t(4) << 30;
    auto data = std::make_unique<SmpData>(channels, 0);
    const std::vector<std::uint8_t> enable(channels, 1);
    data->begin(0, 100'000'000, enable);
    std::uint32_t random = 1;
    for (int chn = 0; chn < channels; ++chn) {
        std::vector<std::int32_t> widths;
        for (std::int64_t end = 0; end < samples;) {
            random = random * 1664525 + 1013904223;
            widths.push_back(1 + std::int32_t((random >> 8) % (2 * mean - 1)));
            end += widths.back();
        }
        std::int64_t pos = 0;
        require(data->addPulses(widths, chn, pos), "make the capture");
    }
    SmpWriter(*data).setSmpCount(samples);
    data->finish(samples);
    return data;
}

/// A folder on the file system under test, and the name in it.
QString target()
{
    static const QTemporaryDir folder;
    return folder.filePath(QStringLiteral("target"));
}

CaptureOut all(const SmpData &data, CaptureKind kind)
{
    CaptureOut out;
    out.kind = kind;
    out.part.channels.assign(channels, 1);
    out.part.end = double(data.smpCount());
    for (int chn = 0; chn < channels; ++chn) {
        out.names.append(QStringLiteral("D%1").arg(chn));
    }
    return out;
}

/// Writes to a device, so that the time of the disk is no part of it; an archive to its file.
void write(const SmpData &data, CaptureKind kind)
{
    if (kind == CaptureKind::Sr) {
        require(writeCaptureFile(target(), data, all(data, kind)).isDone(), "write the archive");
        return;
    }
    QFile file(target());
    require(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "open the file");
    require(writeCaptureTo(file, data, all(data, kind)).isDone() && file.flush(), "write the file");
}

void writeKind(benchmark::State &state, CaptureKind kind, const SmpData &data)
{
    for ([[maybe_unused]] auto _ : state) {
        write(data, kind);
    }
    const std::int64_t bytes = kind == CaptureKind::Sr ? data.smpCount() : QFileInfo(target()).size();
    state.SetBytesProcessed(std::int64_t(state.iterations()) * bytes);
}

void readKind(benchmark::State &state, CaptureKind kind, ForeignKind as, const SmpData &data)
{
    write(data, kind);
    ForeignOptions options;
    options.rate = as == ForeignKind::Csv ? data.smpFrequ() : 0;
    for ([[maybe_unused]] auto _ : state) {
        const ForeignCapture read = readForeign(target(), as, options);
        require(read.isDone() && read.capture->smpCount() == data.smpCount(), "read the file");
    }
    const std::int64_t bytes = kind == CaptureKind::Sr ? data.smpCount() : QFileInfo(target()).size();
    state.SetBytesProcessed(std::int64_t(state.iterations()) * bytes);
}

/// 9 million changes, 100 MB and some as a dump.
const SmpData &busy()
{
    static const auto data = capture(40'000'000, 36);
    return *data;
}

const SmpData &samples()
{
    static const auto data = capture(200'000'000, 16);
    return *data;
}

/// A change of one channel in eight samples: an archive packs it.
const SmpData &calmer()
{
    static const auto data = capture(200'000'000, 64);
    return *data;
}

void fwriteValues(benchmark::State &state)
{
    write(busy(), CaptureKind::Csv);
    QFile source(target());
    require(source.open(QIODevice::ReadOnly), "read the file");
    const QByteArray bytes = source.readAll();
    const QByteArray path = QFile::encodeName(target()) + "2";
    for ([[maybe_unused]] auto _ : state) {
        std::FILE *file = std::fopen(path.constData(), "w");
        require(file != nullptr, "open for fwrite");
        require(std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), file) == std::size_t(bytes.size()),
                "fwrite");
        require(std::fclose(file) == 0, "close after fwrite");
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * bytes.size());
}

void vcdWrite(benchmark::State &state)
{
    writeKind(state, CaptureKind::Vcd, busy());
}

void vcdRead(benchmark::State &state)
{
    readKind(state, CaptureKind::Vcd, ForeignKind::Vcd, busy());
}

void srWrite(benchmark::State &state)
{
    writeKind(state, CaptureKind::Sr, samples());
}

void srRead(benchmark::State &state)
{
    readKind(state, CaptureKind::Sr, ForeignKind::Sr, samples());
}

void srWritePacked(benchmark::State &state)
{
    writeKind(state, CaptureKind::Sr, calmer());
}

void srReadPacked(benchmark::State &state)
{
    readKind(state, CaptureKind::Sr, ForeignKind::Sr, calmer());
}

void csvWrite(benchmark::State &state)
{
    writeKind(state, CaptureKind::Csv, busy());
}

void csvRead(benchmark::State &state)
{
    readKind(state, CaptureKind::Csv, ForeignKind::Csv, busy());
}

} // namespace

BENCHMARK(vcdWrite)->Iterations(1)->Repetitions(3)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(vcdRead)->Iterations(1)->Repetitions(3)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(srWrite)->Iterations(1)->Repetitions(3)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(srRead)->Iterations(1)->Repetitions(3)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(srWritePacked)->Iterations(1)->Repetitions(3)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(srReadPacked)->Iterations(1)->Repetitions(3)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(fwriteValues)->Iterations(1)->Repetitions(3)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(csvWrite)->Iterations(1)->Repetitions(3)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(csvRead)->Iterations(1)->Repetitions(3)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
