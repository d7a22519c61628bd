// The decoders next to sigrok-cli on the same signal, in seconds of processor time. The signals are a tenth of what
// docs/performance.md tells of, since the other program takes long; it reads them from a session archive as this
// program writes them, and what its reading alone takes is told and left out. Without sigrok-cli nothing is measured.

#include "DecoderTraffic.h"
#include "files/CaptureWriter.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"
#include "support/PluginFiles.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace {

constexpr int lines = 8;
constexpr std::int64_t tenthOfUart = 20000000; ///< samples
constexpr std::int64_t tenthOfSpi = 10000000;

/// A signal, and how both programs are told to decode it.
struct Protocol {
    const char *name;
    const char *plugin;
    const char *settings;
    const char *foreign; ///< what sigrok-cli is to decode
    std::unique_ptr<TestCapture> (*make)(const PluginFile &plugin, const char *settings);
};

template<class Add>
std::unique_ptr<TestCapture> written(const std::vector<bool> &idleLevels, std::int64_t samples, const Add &add)
{
    Traffic traffic(idleLevels);
    add(traffic);
    return traffic.capture(samples);
}

std::unique_ptr<TestCapture> uartSignal(const PluginFile & /*plugin*/, const char * /*settings*/)
{
    return written({true}, tenthOfUart, [](Traffic &to) {
        for (int i = 0; i < 200000; ++i) {
            addUart(to);
        }
    });
}

std::unique_ptr<TestCapture> spiSignal(const PluginFile & /*plugin*/, const char * /*settings*/)
{
    return written({false, false, false, true}, tenthOfSpi, [](Traffic &to) {
        for (int i = 0; i < 100000 / 8; ++i) {
            addSpi(to);
        }
    });
}

std::unique_ptr<TestCapture> i2cSignal(const PluginFile & /*plugin*/, const char * /*settings*/)
{
    return written({true, true}, tenthOfUart, [](Traffic &to) {
        while (to.now() < tenthOfUart - 10000) {
            addI2c(to);
        }
    });
}

/// What the decoder itself simulates.
template<std::int64_t rate, std::int64_t samples>
std::unique_ptr<TestCapture> simulatedSignal(const PluginFile &plugin, const char *settings)
{
    return DecodeDesk(plugin.make(), settings).simulate(rate, samples, samples / 16);
}

std::vector<Protocol> protocols()
{
    constexpr std::int64_t rate = 48000000;
    return {
        {"uart", "UART", "rx=0,baudrate=10000000", "uart:rx=D0:baudrate=10000000", uartSignal},
        {"spi", "SPI", "clk=0,mosi=1,miso=2,cs=3", "spi:clk=D0:mosi=D1:miso=D2:cs=D3", spiSignal},
        {"i2c", "I2C", "scl=0,sda=1", "i2c:scl=D0:sda=D1", i2cSignal},
        {"can", "CAN", "can_rx=0,baudrate=1000000", "can:can_rx=D0:nominal_bitrate=1000000",
         simulatedSignal<rate, tenthOfUart>},
        {"usb", "USB", "dp=0,dm=1,speed=full", "usb_signalling:dp=D0:dm=D1:signalling=full-speed,usb_packet",
         simulatedSignal<rate, tenthOfUart>},
    };
}

/// The runs of a channel up to its last edge, in samples.
std::vector<std::int32_t> widthsOf(const SmpEdgeRoot &root, std::int64_t samples)
{
    std::vector<std::int32_t> widths;
    std::int64_t last = 0;
    for (int i = 0; i < root.midCount; ++i) {
        for (int k = 0; k < root.mids[i]->leafCount; ++k) {
            const SmpEdgeLeaf &leaf = *root.mids[i]->leaves[k];
            for (int n = 0; n < leaf.count; ++n) {
                const std::int64_t edge = leaf.position(n);
                if (edge < samples) { // the last entry is the capture's end
                    widths.push_back(std::int32_t(edge - last));
                    last = edge;
                }
            }
        }
    }
    return widths;
}

/// Writes the signal for the other program. @return whether that was done
bool writeArchive(const QString &path, const TestCapture &signal, const DeviceCollection &device)
{
    memBudget = std::int64_t(4) << 30;
    SmpData data(lines, 0);
    data.begin(0, device.smpFrequ, std::vector<std::uint8_t>(lines, 1));
    SmpWriter writer(data);
    QStringList names;
    for (int line = 0; line < lines; ++line) {
        names.append(QStringLiteral("D%1").arg(line));
        const SmpEdgeRoot *root = signal.root(std::uint32_t(line));
        if (root == nullptr) {
            continue;
        }
        writer.setStartLevel(line, root->startLevel != 0);
        const std::vector<std::int32_t> widths = widthsOf(*root, device.smpCount);
        std::int64_t end = 0;
        if (!data.addPulses(widths, line, end)) {
            return false;
        }
    }
    writer.setSmpCount(device.smpCount);
    data.finish(device.smpCount);
    CaptureOut out;
    out.kind = CaptureKind::Sr;
    out.part.channels.assign(lines, 1);
    out.part.end = double(device.smpCount);
    out.names = names;
    return writeCaptureFile(path, data, out).isDone();
}

/// Seconds of processor time of sigrok-cli with these arguments; below 0 when it fails.
double foreignSeconds(const QStringList &arguments)
{
    const auto used = [] {
        rusage all{};
        getrusage(RUSAGE_CHILDREN, &all);
        constexpr double micro = 1e-6;
        return double(all.ru_utime.tv_sec + all.ru_stime.tv_sec) +
               double(all.ru_utime.tv_usec + all.ru_stime.tv_usec) * micro;
    };
    const double before = used();
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QStringLiteral("sigrok-cli"), arguments);
    const bool isDone = process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit;
    return isDone && process.exitCode() == 0 ? used() - before : -1;
}

/// The least of some rounds, without the capture's making.
double ownSeconds(const PluginFile &plugin, const Protocol &protocol, TestCapture &signal, std::uint64_t &frames)
{
    constexpr int rounds = 4;
    double least = std::numeric_limits<double>::max();
    for (int i = 0; i < rounds; ++i) {
        DecodeDesk desk(plugin.make(), protocol.settings);
        const std::clock_t start = std::clock();
        desk.run(signal);
        least = std::min(least, double(std::clock() - start) / CLOCKS_PER_SEC);
        frames = desk.results().GetNumFrames();
    }
    return least;
}

void compare(benchmark::State &state, const PluginFile &plugin, const Protocol &protocol)
{
    const QTemporaryDir folder;
    const QString archive = folder.filePath(QStringLiteral("signal.sr"));
    if (QStandardPaths::findExecutable(QStringLiteral("sigrok-cli")).isEmpty()) {
        state.SkipWithError("sigrok-cli is not installed");
        return;
    }
    const std::unique_ptr<TestCapture> signal = protocol.make(plugin, protocol.settings);
    if (!writeArchive(archive, *signal, signal->device())) {
        state.SkipWithError("cannot write the archive");
        return;
    }
    for (auto _ : state) {
        std::uint64_t frames = 0;
        const double own = ownSeconds(plugin, protocol, *signal, frames);
        const double reading =
            foreignSeconds({QStringLiteral("-i"), archive, QStringLiteral("-O"), QStringLiteral("binary")});
        const double foreign = foreignSeconds(
            {QStringLiteral("-i"), archive, QStringLiteral("-P"), QString::fromLatin1(protocol.foreign)});
        if (reading < 0 || foreign < 0) {
            state.SkipWithError("sigrok-cli has failed");
            return;
        }
        state.counters["samples"] = double(signal->device().smpCount);
        state.counters["frames"] = double(frames);
        state.counters["own s"] = own;
        state.counters["foreign s"] = foreign - reading;
        state.counters["its reading s"] = reading;
        state.counters["times"] = (foreign - reading) / own;
    }
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const std::vector<PluginFile> plugins = pluginsIn(QStringLiteral(LUX_PLUGIN_FOLDER));
    const std::vector<Protocol> all = protocols();
    for (const Protocol &protocol : all) {
        const auto plugin = std::find_if(plugins.begin(), plugins.end(),
                                         [&protocol](const PluginFile &file) { return file.name == protocol.plugin; });
        if (plugin != plugins.end()) {
            benchmark::RegisterBenchmark((std::string("againstSigrok/") + protocol.name).c_str(),
                                         [&, plugin](benchmark::State &state) { compare(state, *plugin, protocol); })
                ->Iterations(1);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
