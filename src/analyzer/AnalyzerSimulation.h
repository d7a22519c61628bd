#pragma once

#include "acquisition/SmpSimulate.h"
#include "analyzer/AnalyzerLib.h"

#include <QByteArray>

#include <cstdint>
#include <mutex>
#include <vector>

/// Lets the user's analyzers drive their channels in simulated captures, by clones of their own.
///
/// The main thread tells what is to be cloned; begin(), build() and release() run on the simulation's thread, where the
/// clones live from the first to the last. A clone that throws or hands out nonsense drives nothing from then on.
class AnalyzerSimulation : public SimulationSource {
public:
    /// What a clone is made of.
    struct Model {
        AnalyzerLib lib;
        QByteArray settings; ///< SaveText
    };

    ~AnalyzerSimulation() override;
    AnalyzerSimulation() = default;

    /// For the captures that begin from now on. Main thread.
    void setModels(std::vector<Model> models);

    void begin(std::int64_t frequency) override;
    void build(std::int64_t newestSample, std::int64_t frequency, std::vector<SimulationChannel> &channels) override;
    void release() override;

private:
    struct Clone {
        AnalyzerLib lib;
        Analyzer *analyzer = nullptr; ///< of the plug-in's CreateAnalyzer; null once it has failed
    };

    static void build(Analyzer &clone, std::int64_t newestSample, std::uint32_t rate,
                      std::vector<SimulationChannel> &channels);

    std::mutex m_mutex; ///< of `m_models`
    std::vector<Model> m_models;
    std::vector<Clone> m_clones;
    std::int64_t m_rate = 0; ///< Hz; the clones have its address
};
