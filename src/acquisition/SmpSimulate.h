#pragma once

#include <QThread>

#include <atomic>
#include <cstdint>
#include <vector>

class SmpHost;

/// What one channel of a simulated capture carries in one block, when a decoder's own simulation drives it.
struct SimulationChannel {
    int chn = 0;                      ///< digital channel
    int initialLevel = 0;             ///< level at position 0; looked at in a run's first block
    int currentLevel = 0;             ///< level in which this block's widths end
    std::vector<std::int32_t> widths; ///< run widths in samples
};

/// Who drives channels in a simulated capture. The analyzer manager implements it; null means that nobody does.
/// All operations are called on the simulation's thread, begin() first and release() last, once each a run.
class SimulationSource {
public:
    virtual ~SimulationSource() = default;
    virtual void begin(std::int64_t frequency) = 0;
    /// Fills `channels` with the data up to `newestSample`; the widths go on where the last block's ended.
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
/// A member of the device object. Sole writer of the store during a run. It writes no analog samples.
class SmpSimulate : public QThread {
    Q_OBJECT
public:
    explicit SmpSimulate(SmpHost &host);
    ~SmpSimulate() override;

    /// Starts a run, unless one is running. Main thread.
    void startRun(const SimulationSettings &settings, SimulationSource *source);

    /// Ends a run without publishing its data; checked once a block. Any thread.
    std::atomic<bool> abort{false};

    // ---- the arithmetic of a run, pure -----------------------------------------------------------------------------

    /// The real-time length of a block in milliseconds: 100 to 2000.
    [[nodiscard]] static int blockMs(std::int64_t depth, std::int64_t frequency);
    /// The wave period of the first channel, in samples.
    [[nodiscard]] static int basePeriod(std::int64_t depth, std::int64_t blockSamples);

protected:
    void run() override;

private:
    SmpHost &m_host;
    SimulationSettings m_settings;
    SimulationSource *m_source = nullptr;
};
