#pragma once

#include "acquisition/SmpThread.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

class QRandomGenerator;
class SmpHost;

/// What one channel of a simulated capture carries in one block, when a decoder's own simulation drives it.
struct SimulationChannel {
    int chn = 0;                      ///< digital channel
    int initialLevel = 0;             ///< level at position 0; looked at in a run's first block
    int currentLevel = 0;             ///< level in which this block's widths end
    std::vector<std::int32_t> widths; ///< run widths in samples
};

/// Who drives channels in a simulated capture. The analyzer manager implements it; null means that nobody does.
/// All operations are called on the simulation's thread, begin() first and release() last, once each a run. It must
/// outlive the run. What it hands out is not trusted: a channel that is not captured is passed over, a width below 1
/// counts as none.
class SimulationSource {
public:
    virtual ~SimulationSource() = default;
    virtual void begin(std::int64_t frequency) = 0;
    /// Fills `channels` with the data up to `newestSample`; the widths go on where the last block's ended, and the last
    /// width is that of a run that may go on in the next block. `channels` comes in as it was left by the last block,
    /// with empty widths, so that its storage can be used again. Of two entries for a channel the first counts.
    virtual void build(std::int64_t newestSample, std::int64_t frequency, std::vector<SimulationChannel> &channels) = 0;
    virtual void release() = 0;
};

/// The settings of one simulated run, taken when it starts.
struct SimulationSettings {
    std::int64_t frequency = 0;       ///< Hz
    std::int64_t depth = 0;           ///< samples
    std::vector<std::uint8_t> enable; ///< one flag per digital channel
};

/// Fills the host's capture store with generated square waves in real time, when no instrument is connected.
///
/// A member of the device object, and joined before that goes. Sole writer of the store during a run. It writes no
/// analog samples. Even channels start low, odd ones high; each is a wave of fixed period and random duty.
class SmpSimulate final : public SmpThread {
    Q_OBJECT
public:
    explicit SmpSimulate(SmpHost &host);
    /// Aborts a run and waits for the thread.
    ~SmpSimulate() override;

    /// Starts a run, unless one is busy or the host has no store. Main thread; returns at once.
    void startRun(const SimulationSettings &settings, SimulationSource *source);

    /// True from startRun() until the capture is closed; the run's last signals may still be on their way. Any thread.
    [[nodiscard]] bool isBusy() const { return m_busy.load(std::memory_order_acquire); }

    /// Ends a run without publishing its data; checked once a block. Any thread; follow it by the host's wake().
    std::atomic<bool> abort{false};

    /// Makes the runs that follow repeat the same duties; by default each is seeded anew. Between runs.
    void setSeed(std::optional<std::uint32_t> seed) { m_seed = seed; }

    // ---- the arithmetic of a run, pure -----------------------------------------------------------------------------

    static constexpr int periodSteps = 6;

    /// The real-time length of a block in milliseconds: 100 to 2000. Both arguments above 0.
    [[nodiscard]] static int blockMs(std::int64_t depth, std::int64_t frequency);
    /// The samples of a block of `ms` milliseconds.
    [[nodiscard]] static std::int64_t blockSamples(int ms, std::int64_t frequency);
    /// The wave period of the first channel, in samples: 20 to 2000.
    [[nodiscard]] static int basePeriod(std::int64_t depth, std::int64_t blockSamples);
    /// The period of class `step`, 0 to 5: each is a quarter longer than the last.
    [[nodiscard]] static int stepPeriod(int basePeriod, int step);
    /// Run widths of whole periods, high and low in turn, that cover at least `blockSamples`; none is below 2.
    [[nodiscard]] static std::vector<std::int32_t> genRuns(std::int64_t blockSamples, int period,
                                                           QRandomGenerator &random);
    /// `widths` without its empty runs, whose neighbours become one, so that the sum and all edges but the empty runs'
    /// stay. `lastLevel` is the level of the last run, and is changed when that one is empty.
    [[nodiscard]] static std::vector<std::int32_t> joinEmptyRuns(std::span<const std::int32_t> widths, int &lastLevel);

protected:
    void work() override;

private:
    struct Block;

    [[nodiscard]] bool isStopped() const;
    void publish(int sta, int err);
    void beginRun(Block &block, QRandomGenerator &random);
    [[nodiscard]] bool runBlocks(Block &block);
    [[nodiscard]] bool fillBlock(Block &block);
    [[nodiscard]] bool fillChannel(Block &block, std::size_t chn);
    void takeFromSource(Block &block);

    SmpHost &m_host;
    SimulationSettings m_settings;        ///< written before the thread starts, then its own
    SimulationSource *m_source = nullptr; ///< the same
    std::optional<std::uint32_t> m_seed;  ///< the same
    std::atomic<bool> m_busy{false};
};
