// Loads and saves a data file of 100 million entries on 16 channels (500 MB), next to a plain copy of the same file.
//
// All three work from and to the page cache; TMPDIR chooses the file system. The aim: load and save at no less than a
// quarter of the copy's speed. Compare the bytes per second within one run only.

#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int channels = 16;
constexpr std::int64_t entriesPerChannel = 6'250'000;
constexpr std::int64_t samples = 9 * entriesPerChannel;

void require(bool done, const char *what)
{
    if (!done) {
        std::fprintf(stderr, "bench_DataFile: cannot %s\n", what);
        std::exit(1);
    }
}

/// One channel's block: steps of 4 to 11 samples, so that the positions look like those of a real line.
QByteArray channelBlock(int chn)
{
    QByteArray bytes(DataBlockHead::size + int(entriesPerChannel) * dataEntrySize, Qt::Uninitialized);
    const auto head = encodeBlockHead({chn, chn & 1, entriesPerChannel});
    std::copy(head.begin(), head.end(), bytes.begin());
    auto *out = reinterpret_cast<std::uint8_t *>(bytes.data()) + DataBlockHead::size;
    std::uint32_t random = std::uint32_t(chn) + 1;
    std::int64_t pos = 0;
    for (std::int64_t i = 0; i < entriesPerChannel; ++i) {
        random = random * 1664525 + 1013904223;
        pos += 4 + (random >> 29);
        const std::int64_t entry = i == entriesPerChannel - 1 ? samples * 2 : pos;
        for (int byte = 0; byte < dataEntrySize; ++byte) {
            *out++ = std::uint8_t(entry >> (8 * byte));
        }
    }
    return bytes;
}

/// The file that is read; written once.
class BigFile {
public:
    static const BigFile &get()
    {
        static const BigFile file;
        return file;
    }
    [[nodiscard]] QString path() const { return m_folder.filePath(QStringLiteral("big.cxdat")); }
    [[nodiscard]] QString outPath() const { return m_folder.filePath(QStringLiteral("out.cxdat")); }
    [[nodiscard]] std::int64_t size() const { return m_size; }

private:
    BigFile()
    {
        memBudget = std::int64_t(4) << 30;
        QFile file(path());
        require(file.open(QIODevice::WriteOnly), "make the file");
        const auto head = encodeFileHead({samples * 2, 500'000'000, 0, channels});
        file.write(reinterpret_cast<const char *>(head.data()), DataFileHead::size);
        for (int chn = 0; chn < channels; ++chn) {
            const QByteArray block = channelBlock(chn);
            require(file.write(block) == block.size(), "write the file");
        }
        m_size = file.size();
    }

    QTemporaryDir m_folder;
    std::int64_t m_size = 0;
};

void copyFile(benchmark::State &state)
{
    const BigFile &big = BigFile::get();
    std::vector<char> buffer(1 << 20);
    for ([[maybe_unused]] auto _ : state) {
        QFile in(big.path());
        QFile out(big.outPath());
        require(in.open(QIODevice::ReadOnly | QIODevice::Unbuffered) &&
                    out.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered),
                "open for the copy");
        for (qint64 got = in.read(buffer.data(), qint64(buffer.size())); got > 0;
             got = in.read(buffer.data(), qint64(buffer.size())))
            require(out.write(buffer.data(), got) == got, "copy");
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * big.size());
}

void loadFile(benchmark::State &state)
{
    const BigFile &big = BigFile::get();
    SmpData data(channels, 0);
    for ([[maybe_unused]] auto _ : state) {
        DataFile file(&data);
        require(file.loadData(big.path(), 0), "load");
        state.PauseTiming();
        require(data.entryCount(0) == entriesPerChannel, "load it whole");
        data.clear();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * big.size());
}

void saveFile(benchmark::State &state)
{
    const BigFile &big = BigFile::get();
    SmpData data(channels, 0);
    require(DataFile(&data).loadData(big.path(), 0), "load");
    const std::vector<std::uint8_t> select(channels, 1);
    for ([[maybe_unused]] auto _ : state) {
        DataFile file(&data);
        file.chnSelect = select.data();
        file.setRange(0, double(data.smpCount()));
        require(file.edgeTotal() == channels * entriesPerChannel, "count the entries");
        file.file.setFileName(big.outPath());
        require(file.file.open(QIODevice::WriteOnly | QIODevice::Truncate), "open for the save");
        require(file.runWithDialog(DataFile::Mode::SaveData), "save");
        require(file.file.size() == big.size(), "save it whole");
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * big.size());
}

} // namespace

BENCHMARK(copyFile)->Iterations(3)->Repetitions(3)->MeasureProcessCPUTime()->UseRealTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(loadFile)->Iterations(3)->Repetitions(3)->MeasureProcessCPUTime()->UseRealTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(saveFile)->Iterations(3)->Repetitions(3)->MeasureProcessCPUTime()->UseRealTime()->Unit(
    benchmark::kMillisecond);

BENCHMARK_MAIN();
