#include "analyzer/AnalyzerSimulation.h"

#include "analyzer/PluginCall.h"

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

AnalyzerSimulation::~AnalyzerSimulation()
{
    AnalyzerSimulation::release();
}

void AnalyzerSimulation::setModels(std::vector<Model> models)
{
    const std::lock_guard lock(m_mutex);
    m_models = std::move(models);
}

void AnalyzerSimulation::begin(std::int64_t frequency)
{
    release();
    m_rate = frequency;
    std::vector<Model> models;
    {
        const std::lock_guard lock(m_mutex);
        models = m_models;
    }
    for (const Model &model : models) {
        Clone clone{model.lib, nullptr};
        const QString fault = pluginFault([&] {
            clone.analyzer = clone.lib.createAnalyzer();
            if (clone.analyzer == nullptr) {
                return;
            }
            if (AnalyzerSettings *settings = clone.analyzer->GetAnalyzerSettings()) {
                settings->LoadText(model.settings.constData());
            }
            clone.analyzer->Init(nullptr, reinterpret_cast<ConditionManager *>(&m_rate), nullptr);
        });
        if (fault.isEmpty() && clone.analyzer != nullptr) { // one that failed is left alone: it may be in any state
            m_clones.push_back(clone);
        }
    }
}

void AnalyzerSimulation::build(std::int64_t newestSample, std::int64_t frequency,
                               std::vector<SimulationChannel> &channels)
{
    const auto rate = std::uint32_t(std::min<std::int64_t>(frequency, std::numeric_limits<std::uint32_t>::max()));
    for (Clone &clone : m_clones) {
        if (clone.analyzer == nullptr) {
            continue;
        }
        const QString fault = pluginFault([&] { build(*clone.analyzer, newestSample, rate, channels); });
        if (!fault.isEmpty()) {
            clone.analyzer = nullptr; // left alone, as it may be in any state
        }
    }
}

void AnalyzerSimulation::build(Analyzer &clone, std::int64_t newestSample, std::uint32_t rate,
                               std::vector<SimulationChannel> &channels)
{
    SimulationChannelDescriptor *lines = nullptr;
    const std::uint32_t count = clone.BuildSimulation(newestSample, rate, &lines);
    if (lines == nullptr) {
        return;
    }
    for (std::uint32_t i = 0; i < std::min(count, mostLines); ++i) {
        const Channel channel = lines[i].GetChannel();
        SimulationData *data = lines[i].GetData();
        if (!channel.isDefined() || channel.channelIndex > mostLines || data == nullptr) {
            continue;
        }
        SimulationChannel &entry = entryOf(int(channel.channelIndex), channels);
        if (entry.widths.empty()) { // of two lines on a channel the first counts
            entry.initialLevel = levelOf(lines[i].GetInitialBitState());
            entry.currentLevel = levelOf(lines[i].GetCurrentBitState());
            for (const std::uint32_t *width = data->begin; width < data->end; ++width) {
                entry.widths.push_back(std::int32_t(std::min(*width, std::uint32_t(0x7FFFFFFF))));
            }
        }
        data->end = data->begin;
    }
}

void AnalyzerSimulation::release()
{
    for (const Clone &clone : m_clones) {
        if (clone.analyzer != nullptr) {
            (void)pluginFault([&clone] { clone.lib.destroyAnalyzer(clone.analyzer); });
        }
    }
    m_clones.clear();
}
