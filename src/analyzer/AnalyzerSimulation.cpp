#include "analyzer/AnalyzerSimulation.h"

#include "analyzer/PluginCall.h"
#include "settings/Language.h"

#include <algorithm>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <corvanlux/analyzer/SimulationChannelDescriptor.h>
#include <limits>
#include <utility>

namespace {

constexpr std::uint32_t mostLines = 64; ///< of one decoder; what it tells beyond is passed over

/// The channel's entry; entries are kept from block to block.
SimulationChannel &entryOf(int chn, std::vector<SimulationChannel> &channels)
{
    const auto same = [chn](const SimulationChannel &entry) { return entry.chn == chn; };
    const auto found = std::find_if(channels.begin(), channels.end(), same);
    if (found != channels.end()) {
        return *found;
    }
    channels.push_back({chn, 0, 0, {}});
    return channels.back();
}

int levelOf(BitState state)
{
    return state == BitState::Low ? 0 : 1;
}

} // namespace

void AnalyzerSimulation::State::make()
{
    fault = pluginFault([this] {
        analyzer = lib.createAnalyzer();
        if (analyzer == nullptr) {
            return;
        }
        if (AnalyzerSettings *values = analyzer->GetAnalyzerSettings()) {
            values->LoadText(settings.constData());
        }
        analyzer->Init(nullptr, reinterpret_cast<ConditionManager *>(&rate), nullptr);
    });
}

void AnalyzerSimulation::State::build(std::int64_t newestSample, std::uint32_t sampleRate)
{
    lines = nullptr;
    lineCount = 0;
    fault = pluginFault([&] { lineCount = analyzer->BuildSimulation(newestSample, sampleRate, &lines); });
}

void AnalyzerSimulation::State::destroy()
{
    if (analyzer != nullptr && fault.isEmpty()) {
        fault = pluginFault([this] { lib.destroyAnalyzer(std::exchange(analyzer, nullptr)); });
    }
}

AnalyzerSimulation::AnalyzerSimulation(Failed failed) : m_failed(std::move(failed)) {}

AnalyzerSimulation::~AnalyzerSimulation()
{
    AnalyzerSimulation::release();
}

void AnalyzerSimulation::setModels(std::vector<Model> models)
{
    const std::lock_guard lock(m_mutex);
    m_models = std::move(models);
}

bool AnalyzerSimulation::run(Clone &clone, std::function<void()> job) const
{
    const bool returned = clone.thread->run(std::move(job), [state = clone.state] { state->destroy(); });
    const QString fault = returned ? clone.state->fault
                                   : ::tr("The decoder could not be ended. It is left running until the program ends.");
    if (!fault.isEmpty() && m_failed) {
        m_failed(clone.state->lib.displayName, fault);
    }
    return fault.isEmpty();
}

void AnalyzerSimulation::begin(std::int64_t frequency)
{
    release();
    std::vector<Model> models;
    {
        const std::lock_guard lock(m_mutex);
        models = m_models;
    }
    for (const Model &model : models) {
        Clone clone{std::make_shared<State>(), std::make_unique<CloneThread>()};
        clone.state->lib = model.lib;
        clone.state->settings = model.settings;
        clone.state->rate = frequency;
        const bool made = run(clone, [state = clone.state] { state->make(); });
        if (made && clone.state->analyzer != nullptr) { // one that failed is left alone: it may be in any state
            m_clones.push_back(std::move(clone));
        }
    }
}

void AnalyzerSimulation::build(std::int64_t newestSample, std::int64_t frequency,
                               std::vector<SimulationChannel> &channels)
{
    const auto rate = std::uint32_t(std::min<std::int64_t>(frequency, std::numeric_limits<std::uint32_t>::max()));
    std::erase_if(m_clones, [&](Clone &clone) {
        if (!run(clone, [state = clone.state, newestSample, rate] { state->build(newestSample, rate); })) {
            return true; // left alone, as it may be in any state
        }
        take(*clone.state, channels);
        return false;
    });
}

void AnalyzerSimulation::take(const State &state, std::vector<SimulationChannel> &channels)
{
    if (state.lines == nullptr) {
        return;
    }
    for (std::uint32_t i = 0; i < std::min(state.lineCount, mostLines); ++i) {
        const Channel channel = state.lines[i].GetChannel();
        SimulationData *data = state.lines[i].GetData();
        if (!channel.isDefined() || channel.channelIndex > mostLines || data == nullptr) {
            continue;
        }
        SimulationChannel &entry = entryOf(int(channel.channelIndex), channels);
        if (entry.widths.empty()) { // of two lines on a channel the first counts
            entry.initialLevel = levelOf(state.lines[i].GetInitialBitState());
            entry.currentLevel = levelOf(state.lines[i].GetCurrentBitState());
            for (const std::uint32_t *width = data->begin; width < data->end; ++width) {
                entry.widths.push_back(std::int32_t(std::min(*width, std::uint32_t(0x7FFFFFFF))));
            }
        }
        data->end = data->begin;
    }
}

void AnalyzerSimulation::release()
{
    for (Clone &clone : m_clones) {
        (void)run(clone, [state = clone.state] { state->destroy(); });
    }
    m_clones.clear();
}
