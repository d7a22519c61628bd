#pragma once

#include "AnalyzerResults.h"
#include "AnalyzerSettings.h"
#include "AnalyzerTypes.h"
#include "ProgressManager.h"
#include "SimulationChannelDescriptor.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

struct DeviceCollection;

namespace lux {
class ChannelReader;
}

/// A decoder. Made by a plug-in's CreateAnalyzer, destroyed by its virtual destructor or DestroyAnalyzer.
///
/// A run: Init, SetupResults, InitialWorkerThread, StartProcessing on the main thread; then RunWorker on the thread
/// that ProgressManager::StartWorker starts, which ends in WorkerEnded. Plug-ins derive from lux::Decoder (Decoder.h).
/// The order of the virtual operations is binding; further ones only ever follow the last.
class LUX_ANALYZER_API Analyzer {
public:
    Analyzer();
    Analyzer(const Analyzer &) = delete;
    Analyzer &operator=(const Analyzer &) = delete;
    virtual ~Analyzer();
    /// Decodes until the readers leave it at the data's end; see DecodeToEnd() for what the thread should call.
    virtual void RunWorker() = 0;
    /// Generates the signal up to `newestSample`. @return the number of descriptors in the array
    virtual std::uint32_t BuildSimulation(std::int64_t newestSample, std::uint32_t sampleRate,
                                          SimulationChannelDescriptor **channels) = 0;
    /// The lowest sample rate in Hz with which the present settings can be decoded, 0 for any.
    [[nodiscard]] virtual std::uint32_t NeededSampleRate() = 0;
    [[nodiscard]] virtual const char *GetAnalyzerVersion() const;
    [[nodiscard]] virtual const char *AnalyzerName() const = 0;
    /// Asked once when a worker has ended by itself: true runs it again on the same capture.
    [[nodiscard]] virtual bool NeedsRestart() = 0;
    /// Makes new, empty results; those of the last run are gone.
    virtual void SetupResults();

    /// May be called again before each run. In a simulation the first and the last are null, and the second is the
    /// address of a signed 64-bit sample rate. What is pointed at must live through the run.
    void Init(DeviceCollection *device, ConditionManager *condition, ProgressManager *progress);
    [[nodiscard]] AnalyzerSettings *GetAnalyzerSettings() const;
    /// @return false, with null, while there are no results
    bool GetAnalyzerResults(AnalyzerResults **results) const;
    /// Takes the capture's facts over and clears the last run's stop.
    void InitialWorkerThread();
    /// Ends in ProgressManager::StartWorker.
    void StartProcessing();
    /// Asks the worker to leave; it does at its next read, within 20 ms. Any thread.
    void StopWorkerThread();

    /// RunWorker with all that may leave it caught, then WorkerEnded: what the worker thread calls. Also right for a
    /// decoder that overrides RunWorker itself.
    void DecodeToEnd();
    /// How the last run went. Any thread.
    [[nodiscard]] DecodeStatus GetDecodeStatus() const;
    /// Sentences for the user about the last run, a line each; empty for nothing to tell. Once the run is over, any
    /// thread. Copied into `text`, which is always ended; @return the length of the whole message.
    std::size_t GetDecodeMessage(char *text, std::size_t size) const;

    struct Private;
    [[nodiscard]] Private *internals() const { return m_private; } ///< for the runtime itself

protected:
    // ---- for the decoder -------------------------------------------------------------------------------------------

    /// The settings stay the caller's.
    void SetAnalyzerSettings(AnalyzerSettings *settings);
    /// The results become the analyzer's; those before are destroyed.
    void SetAnalyzerResults(AnalyzerResults *results);
    /// A reader at sample 0 of a channel; the same object for the same channel, until the run is over. One for the
    /// undefined channel is low and never changes. Leaves the decode with a message when the capture lacks the channel.
    lux::ChannelReader &GetChannelReader(const Channel &channel);
    [[nodiscard]] std::int64_t GetSampleCount() const;
    [[nodiscard]] std::int64_t GetSampleRate() const; ///< Hz; in a simulation that of the simulation
    [[nodiscard]] std::int64_t GetTriggerSample() const;
    /// Leaves the decode: it has Failed, with this sentence for the user.
    [[noreturn]] void FailDecode(const char *message);
    /// Adds a remark to GetDecodeMessage(); such as the bit rate that was found.
    void TellAboutDecode(const char *message);

private:
    Private *m_private;
};
static_assert(sizeof(Analyzer) == 2 * sizeof(void *));

/// The bytes that results may still take, shared by all decoders of the process; may come below 0 by one block. Null,
/// as it is in the beginning, for no limit. To be called before a decoder is made; `bytesLeft` must outlive them all.
LUX_ANALYZER_API void SetAnalyzerMemoryBudget(std::atomic<std::int64_t> *bytesLeft);
