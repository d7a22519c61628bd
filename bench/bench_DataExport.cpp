// Exports of 16 channels, next to what the same bytes cost without any work on them.
//
// Text: five million lines, against fwrite of the same bytes from memory. The aim: at least a tenth of its speed, and
// two million lines a second. Binary: 200 million samples with one transition in a thousand samples of each channel,
// against a plain copy of the result. The aim: at least a third of its speed. All work from and to the page cache;
// TMPDIR chooses the file system. Compare the bytes per second within one run only.

#include "files/DataFile.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int channels = 16;

void require(bool done, const char *what)
{
    if (!done) {
        std::fprintf(stderr, "bench_DataExport: cannot %s\n", what);
        std::exit(1);
    }
}

/// Each channel changes after 1 to 2 * `mean` - 1 samples, at random.
void fill(SmpData &data, std::int64_t samples, std::uint32_t mean)
{
    memBudget = std::int64_t(4) << 30;
    const std::vector<std::uint8_t> enable(channels, 1);
    data.begin(0, 500'000'000, enable);
    std::uint32_t random = 1;
    for (int chn = 0; chn < channels; ++chn) {
        std::vector<std::int32_t> widths;
        std::int64_t end = 0;
        for (;;) {
            random = random * 1664525 + 1013904223;
            const std::int64_t width = 1 + std::int64_t(random >> 8) % (2 * mean - 1);
            end += width;
            if (end >= samples) {
                break;
            }
            widths.push_back(std::int32_t(width));
        }
        std::int64_t pos = 0;
        require(data.addPulses(widths, chn, pos), "make the capture");
    }
    SmpWriter(data).setSmpCount(samples);
    data.finish(samples);
    SmpWriter(data).setTrgPos(samples / 20);
}

/// A folder on the file system under test, and the names in it.
class Folder {
public:
    static const Folder &get()
    {
        static const Folder folder;
        return folder;
    }
    [[nodiscard]] QString source() const { return m_folder.filePath(QStringLiteral("source")); }
    [[nodiscard]] QString target() const { return m_folder.filePath(QStringLiteral("target")); }

private:
    QTemporaryDir m_folder;
};

/// Exports the whole capture into `path`. @return the bytes written
std::int64_t exported(SmpData &data, DataFile::Mode job, const QString &path)
{
    const std::vector<std::uint8_t> select(channels, 1);
    const bool text = job == DataFile::Mode::ExportText;
    DataFile file(&data);
    file.chnSelect = select.data();
    file.setRange(0, double(data.smpCount()));
    require(file.edgeTotal() > 0, "count the entries");
    file.file.setFileName(path);
    const auto mode = QIODevice::WriteOnly | QIODevice::Truncate;
    require(file.file.open(text ? mode | QIODevice::Text : mode), "open the export");
    require(file.runWithDialog(job), "export");
    return file.file.size();
}

/// 5 million lines and some: of 16 channels that change every 32 samples on average, at least one changes every other.
SmpData &busyCapture()
{
    static SmpData data(channels, 0);
    if (data.smpCount() == 0) {
        fill(data, 12'500'000, 32);
    }
    return data;
}

/// The transitions are one in a thousand samples.
SmpData &quietCapture()
{
    static SmpData data(channels, 0);
    if (data.smpCount() == 0) {
        fill(data, 200'000'000, 1000);
    }
    return data;
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), "read the export");
    return file.readAll();
}

void fwriteText(benchmark::State &state)
{
    exported(busyCapture(), DataFile::Mode::ExportText, Folder::get().source());
    const QByteArray bytes = contents(Folder::get().source());
    const QByteArray path = QFile::encodeName(Folder::get().target());
    for ([[maybe_unused]] auto _ : state) {
        std::FILE *file = std::fopen(path.constData(), "w");
        require(file != nullptr, "open for fwrite");
        require(std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), file) == std::size_t(bytes.size()),
                "fwrite");
        require(std::fclose(file) == 0, "close after fwrite");
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * bytes.size());
}

void exportText(benchmark::State &state)
{
    std::int64_t bytes = 0;
    for ([[maybe_unused]] auto _ : state) {
        bytes = exported(busyCapture(), DataFile::Mode::ExportText, Folder::get().target());
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * bytes);
    state.SetItemsProcessed(std::int64_t(state.iterations()) * contents(Folder::get().target()).count('\n'));
}

void copyBinary(benchmark::State &state)
{
    const std::int64_t bytes = exported(quietCapture(), DataFile::Mode::ExportBinary, Folder::get().source());
    std::vector<char> buffer(128 * 1024); // that of cp
    for ([[maybe_unused]] auto _ : state) {
        QFile in(Folder::get().source());
        QFile out(Folder::get().target());
        require(in.open(QIODevice::ReadOnly | QIODevice::Unbuffered) &&
                    out.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered),
                "open for the copy");
        for (qint64 got = in.read(buffer.data(), qint64(buffer.size())); got > 0;
             got = in.read(buffer.data(), qint64(buffer.size()))) {
            require(out.write(buffer.data(), got) == got, "copy");
        }
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * bytes);
}

void exportBinary(benchmark::State &state)
{
    std::int64_t bytes = 0;
    for ([[maybe_unused]] auto _ : state) {
        bytes = exported(quietCapture(), DataFile::Mode::ExportBinary, Folder::get().target());
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * bytes);
}

} // namespace

BENCHMARK(fwriteText)
    ->Iterations(2)
    ->Repetitions(5)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(exportText)
    ->Iterations(2)
    ->Repetitions(5)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(copyBinary)
    ->Iterations(2)
    ->Repetitions(5)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(exportBinary)
    ->Iterations(2)
    ->Repetitions(5)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    configLoad(); // the header line names the channels
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
