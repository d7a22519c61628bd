#include "acquisition/SmpSimulate.h"

#include "acquisition/SmpHost.h"
#include "acquisition/SmpState.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <algorithm>
#include <limits>

namespace {

constexpr int shortestBlockMs = 100;
constexpr int longestBlockMs = 2000;
constexpr double fewestBlockSamples = 20000.0;
constexpr std::int64_t positionLimit = std::int64_t(1) << 40;

/// The period class of the next channel. It goes on from channel to channel, from run to run and from one device object
/// to the next, so that two captures differ. Only a simulation's thread uses it, and one of those runs at a time.
std::atomic<int> nextPeriodStep{0};

int takePeriodStep()
{
    const int step = nextPeriodStep.load(std::memory_order_relaxed);
    nextPeriodStep.store((step + 1) % SmpSimulate::periodSteps, std::memory_order_relaxed);
    return step;
}

} // namespace

/// What a run carries from block to block; one entry per digital channel.
struct SmpSimulate::Block {
    SmpData &data;
    int ms = 0;
    std::int64_t samples = 0; ///< of one block
    std::int64_t done = 0;    ///< samples of the blocks so far
    std::vector<std::int64_t> pos;
    std::vector<std::vector<std::int32_t>> runs; ///< the generated block, used for every block of the run
    std::vector<int> lastLevel;                  ///< level in which a source's data ended
    std::vector<SimulationChannel> source;
};

SmpSimulate::SmpSimulate(SmpHost &host) : m_host(host) {}

SmpSimulate::~SmpSimulate()
{
    abort.store(true, std::memory_order_release);
    m_host.wake();
    join();
}

void SmpSimulate::startRun(const SimulationSettings &settings, SimulationSource *source)
{
    if (isBusy() || !m_host.smpData) {
        return;
    }
    join(); // the last run's thread may still have a signal to emit
    m_settings = settings;
    m_settings.enable.resize(std::size_t(m_host.smpData->chnCount), 0);
    m_source = source;
    abort.store(false, std::memory_order_release);
    m_busy.store(true, std::memory_order_release);
    if (!launch()) {
        m_host.smpData->readmit(); // the last capture can be read again
        m_busy.store(false, std::memory_order_release);
        m_host.report(smpState::starting, smpError::noMemory, 0);
    }
}

int SmpSimulate::blockMs(std::int64_t depth, std::int64_t frequency)
{
    const double samples = double(depth);
    const double runMs = samples / double(frequency) * 1000.0;
    const auto blocks = [runMs](int ms) { return std::max(1.0, runMs / ms); };
    int ms = shortestBlockMs;
    while (blocks(ms) > 100.0 && ms < longestBlockMs) {
        ms += 100;
    }
    if (samples / blocks(ms) >= fewestBlockSamples) {
        return ms;
    }
    while (ms < 500) {
        ms += 100;
        if (samples / blocks(ms) >= fewestBlockSamples) {
            break;
        }
    }
    return ms;
}

std::int64_t SmpSimulate::blockSamples(int ms, std::int64_t frequency)
{
    return std::int64_t(ms / 1000.0 * double(frequency));
}

int SmpSimulate::basePeriod(std::int64_t depth, std::int64_t blockSamples)
{
    int period = 200;
    while (depth / period < 1000 && period >= 21) {
        period -= 20;
    }
    while (depth / period > 1000000 && period < 2000) {
        period += 100;
    }
    while (double(blockSamples) / period > 50000.0 && period < 2000) {
        period += 100;
    }
    return period;
}

int SmpSimulate::stepPeriod(int basePeriod, int step)
{
    int period = basePeriod;
    for (int i = 0; i < step; ++i) {
        period += period >> 2;
    }
    return period;
}

std::vector<std::int32_t> SmpSimulate::genRuns(std::int64_t blockSamples, int period, QRandomGenerator &random)
{
    const auto count = std::size_t((blockSamples + period - 1) / period);
    std::vector<std::int32_t> runs;
    runs.reserve(2 * count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto share = float(random.bounded(1024) * 0.0009765625); // 1 / 1024
        const int high = std::clamp(int(share * float(period)), 2, period - 2);
        runs.push_back(high);
        runs.push_back(period - high);
    }
    return runs;
}

std::vector<std::int32_t> SmpSimulate::joinEmptyRuns(std::span<const std::int32_t> widths, int &lastLevel)
{
    constexpr std::int64_t widest = std::numeric_limits<std::int32_t>::max();
    std::vector<std::int32_t> joined;
    joined.reserve(widths.size());
    bool sameRun = false; // the next run has the level of the last one kept
    for (const std::int32_t width : widths) {
        if (width < 1) {
            sameRun = !sameRun && !joined.empty();
            continue;
        }
        if (sameRun) {
            joined.back() = std::int32_t(std::min(widest, std::int64_t(joined.back()) + width));
        } else {
            joined.push_back(width);
        }
        sameRun = false;
    }
    if (sameRun) {
        lastLevel = 1 - lastLevel;
    }
    return joined;
}

void SmpSimulate::work()
{
    m_host.report(smpState::starting, 0, 0);
    if (!m_host.openStore([this] { return isStopped(); })) {
        publish(smpState::done, 0); // the last capture can be read again
        return;
    }
    Block block{*m_host.smpData, 0, 0, 0, {}, {}, {}, {}};
    QRandomGenerator random(m_seed ? *m_seed : QRandomGenerator::global()->generate());
    beginRun(block, random);
    if (m_source != nullptr) {
        m_source->begin(m_settings.frequency);
    }
    const bool ok = block.samples < 1 || runBlocks(block);
    if (m_source != nullptr) {
        m_source->release();
    }
    SmpWriter(block.data).setSmpCount(std::min(m_settings.depth, block.done));
    block.data.finish(block.data.smpCount());
    if (ok) {
        publish(smpState::done, 0);
    } else {
        publish(smpState::reading, smpError::noMemory);
    }
}

bool SmpSimulate::isStopped() const
{
    return m_host.smpStop.load(std::memory_order_acquire) || abort.load(std::memory_order_acquire);
}

/// Tells how the run has ended. The store is closed.
void SmpSimulate::publish(int sta, int err)
{
    // From here on the next run may be asked for: it waits for this thread's end before it starts.
    m_busy.store(false, std::memory_order_release);
    m_host.report(sta, err, 0);
    if (!abort.load(std::memory_order_acquire)) {
        emit m_host.sigSmpDataReady();
    }
}

void SmpSimulate::beginRun(Block &block, QRandomGenerator &random)
{
    const std::size_t count = m_settings.enable.size();
    block.pos.assign(count, 0);
    block.runs.resize(count);
    block.lastLevel.assign(count, 0);
    block.data.begin(0, m_settings.frequency, m_settings.enable);
    SmpWriter(block.data).setStartLevels(0);
    if (m_settings.frequency < 1 || m_settings.depth < 1) {
        m_settings.depth = 0; // nothing to capture
        return;
    }
    block.ms = blockMs(m_settings.depth, m_settings.frequency);
    block.samples = blockSamples(block.ms, m_settings.frequency);
    const int period = basePeriod(m_settings.depth, block.samples);
    for (std::size_t chn = 0; chn < count; ++chn) {
        if (m_settings.enable[chn] != 0) {
            block.runs[chn] = genRuns(block.samples, stepPeriod(period, takePeriodStep()), random);
            SmpWriter(block.data).setStartLevel(int(chn), (chn & 1) != 0);
        }
    }
}

bool SmpSimulate::runBlocks(Block &block)
{
    while (!isStopped()) {
        QElapsedTimer clock;
        clock.start();
        if (!fillBlock(block)) {
            return false;
        }
        block.done += block.samples;
        const std::int64_t percent = block.done * 100 / m_settings.depth;
        if (percent >= 100) {
            break;
        }
        m_host.report(smpState::sampling, 0, int(percent));
        m_host.waitForStop(int(std::max<std::int64_t>(block.ms - clock.elapsed() - 2, 1)), abort);
    }
    return true;
}

bool SmpSimulate::fillBlock(Block &block)
{
    takeFromSource(block);
    bool ok = true;
    for (std::size_t chn = 0; ok && chn < m_settings.enable.size(); ++chn) {
        if (m_settings.enable[chn] != 0) {
            ok = fillChannel(block, chn);
        }
    }
    for (SimulationChannel &channel : block.source) {
        channel.widths.clear();
    }
    return ok;
}

void SmpSimulate::takeFromSource(Block &block)
{
    if (m_source == nullptr) {
        return;
    }
    m_source->build(block.done + block.samples, m_settings.frequency, block.source);
    if (block.done > 0) {
        return;
    }
    for (const SimulationChannel &channel : block.source) {
        const bool isThere = channel.chn >= 0 && std::size_t(channel.chn) < m_settings.enable.size();
        if (!isThere || m_settings.enable[std::size_t(channel.chn)] == 0) {
            continue;
        }
        const bool high = channel.initialLevel != 0;
        SmpWriter(block.data).setStartLevel(channel.chn, high);
        block.lastLevel[std::size_t(channel.chn)] = high ? 0 : 1;
    }
}

bool SmpSimulate::fillChannel(Block &block, std::size_t chn)
{
    const int number = int(chn);
    std::int64_t &pos = block.pos[chn];
    const auto driven = std::find_if(block.source.begin(), block.source.end(),
                                     [number](const SimulationChannel &channel) { return channel.chn == number; });
    if (driven == block.source.end()) {
        return block.data.addPulses(block.runs[chn], number, pos);
    }
    int lastLevel = driven->currentLevel != 0 ? 1 : 0;
    std::vector<std::int32_t> widths = joinEmptyRuns(driven->widths, lastLevel);
    const int firstLevel = widths.size() % 2 == 0 ? 1 - lastLevel : lastLevel;
    std::int64_t end = pos;
    const auto tooFar = std::find_if(widths.begin(), widths.end(), [&end](std::int32_t width) {
        end += width;
        return end >= positionLimit;
    });
    widths.erase(tooFar, widths.end());
    if (widths.empty()) {
        return true;
    }
    const bool join = block.lastLevel[chn] == firstLevel;
    block.lastLevel[chn] = lastLevel;
    return block.data.addPulsesJoin(widths, number, pos, join);
}
