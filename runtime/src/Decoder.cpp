#include "corvanlux/analyzer/Decoder.h"

#include "AnalyzerPrivate.h"
#include "Hidden.h"
#include "SimulationEnd.h"

namespace lux {
namespace {

constexpr int mostIdleCalls = 1000; ///< of simulate() without time passing, before it is taken to have nothing to say

} // namespace

struct LUX_HIDDEN DecoderBase::Private {
    const char *name;
    std::unique_ptr<Simulation> simulation;
    std::int64_t simulatedTo = -1; ///< the newest sample asked for
    bool isLoop = false;           ///< simulate() does not return: it is not asked again
};

DecoderBase::DecoderBase(const char *name) : m_private(new Private{name, nullptr}) {}

DecoderBase::~DecoderBase()
{
    delete m_private;
}

void DecoderBase::RunWorker()
{
    internals()->runGuarded([this] {
        const auto *settings = dynamic_cast<const Settings *>(GetAnalyzerSettings());
        const std::string problem = settings == nullptr ? std::string() : settings->problem();
        if (!problem.empty())
            fail(problem);
        decode();
    });
}

std::uint32_t DecoderBase::NeededSampleRate()
{
    return 0;
}

const char *DecoderBase::AnalyzerName() const
{
    return m_private->name;
}

bool DecoderBase::NeedsRestart()
{
    return false;
}

void DecoderBase::SetupResults()
{
    SetAnalyzerResults(makeResults().release());
}

void DecoderBase::simulate(Simulation & /*simulation*/) {}

std::uint32_t DecoderBase::BuildSimulation(std::int64_t newestSample, std::uint32_t sampleRate,
                                           SimulationChannelDescriptor **channels)
{
    std::unique_ptr<Simulation> &simulation = m_private->simulation;
    if (simulation == nullptr || newestSample <= m_private->simulatedTo ||
        simulation->sampleRate() != std::int64_t(sampleRate)) {
        simulation = std::make_unique<Simulation>(std::int64_t(sampleRate));
        m_private->isLoop = false;
    }
    m_private->simulatedTo = newestSample;
    try {
        int idle = 0;
        while (simulation->position() <= newestSample && idle < mostIdleCalls && !m_private->isLoop) {
            const std::int64_t before = simulation->position();
            simulation->beginElement();
            simulate(*simulation);
            idle = simulation->position() == before ? idle + 1 : 0;
        }
    } catch (const detail::SimulationEnd &) {
        m_private->isLoop = true; // what there is by now is handed out, and the lines then stay as they are
    }
    simulation->beginElement();
    simulation->holdUntil(newestSample + 1);
    return simulation->takeBlock(newestSample, channels);
}

} // namespace lux
