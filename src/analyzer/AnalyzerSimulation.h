#pragma once

#include "acquisition/SmpSimulate.h"
#include "analyzer/AnalyzerLib.h"
#include "analyzer/CloneThread.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// Lets the user's analyzers drive their channels in simulated captures, by clones of their own.
///
/// The main thread tells what is to be cloned; begin(), build() and release() run on the simulation's thread. Each
/// clone lives on a thread of its own from the first to the last, so that one that never returns holds nobody up for
/// long: it is left behind with what it can reach. A clone that does not return, throws or hands out nonsense drives
/// nothing from then on.
class AnalyzerSimulation : public SimulationSource {
public:
    /// What a clone is made of.
    struct Model {
        AnalyzerLib lib;
        QByteArray settings; ///< SaveText
    };

    /// Told once for each clone that failed: the decoder's name, and what it did, for the user. On the simulation's
    /// thread.
    using Failed = std::function<void(const QString &name, const QString &what)>;

    explicit AnalyzerSimulation(Failed failed = {});
    ~AnalyzerSimulation() override;

    /// For the captures that begin from now on. Main thread.
    void setModels(std::vector<Model> models);

    void begin(std::int64_t frequency) override;
    void build(std::int64_t newestSample, std::int64_t frequency, std::vector<SimulationChannel> &channels) override;
    void release() override;

private:
    /// What a clone's thread can reach.
    struct State {
        AnalyzerLib lib;
        QByteArray settings;
        std::int64_t rate = 0;        ///< Hz; the clone has its address
        Analyzer *analyzer = nullptr; ///< of the plug-in's CreateAnalyzer
        SimulationChannelDescriptor *lines = nullptr;
        std::uint32_t lineCount = 0;
        QString fault;

        void make();
        void build(std::int64_t newestSample, std::uint32_t sampleRate);
        /// The plug-in's work. An analyzer that has failed is left alone: it may be in any state.
        void destroy();
    };
    struct Clone {
        std::shared_ptr<State> state;
        std::unique_ptr<CloneThread> thread;
    };

    /// Runs a job of the clone. @return false when it failed, and was told
    bool run(Clone &clone, std::function<void()> job) const;
    static void take(const State &state, std::vector<SimulationChannel> &channels);

    Failed m_failed;
    std::mutex m_mutex; ///< of `m_models`
    std::vector<Model> m_models;
    std::vector<Clone> m_clones; ///< those that have not failed
};
