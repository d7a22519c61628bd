#include "analyzer/AbsentAnalyzer.h"

#include <utility>

AbsentAnalyzer::AbsentAnalyzer(QByteArray analyzerName, QByteArray settings)
    : m_name(std::move(analyzerName)), m_settings(std::move(settings))
{
    SetAnalyzerSettings(&m_settings);
}

std::uint32_t AbsentAnalyzer::BuildSimulation(std::int64_t newestSample, std::uint32_t sampleRate,
                                              SimulationChannelDescriptor **channels)
{
    (void)newestSample;
    (void)sampleRate;
    *channels = nullptr;
    return 0;
}
