#include "protocol/DecodedWave.h"

#include "analyzer/AnalyzerManager.h"
#include "protocol/ResultsOnChannel.h"

#include <corvanlux/analyzer/Analyzer.h>
#include <utility>

DecodedWave::DecodedWave(AnalyzerManager &manager, std::function<void()> arrived, std::chrono::milliseconds most)
    : m_manager(manager), m_maker(manager, std::move(arrived), most)
{
    gDecodedSource = this;
}

DecodedWave::~DecodedWave()
{
    gDecodedSource = nullptr;
}

void DecodedWave::visit(int chn, const std::function<void(const DecodedChannel &)> &visit) const
{
    for (const Analyzer *analyzer : m_manager.analyzersOnChannel(chn)) {
        AnalyzerResults *results = nullptr;
        if (analyzer->GetAnalyzerResults(&results) && results != nullptr) {
            visit(ResultsOnChannel(*results, chn, m_manager.formatOfAnalyzer(analyzer), m_maker));
        }
    }
}

QString DecodedWave::chnLabel(int chn) const
{
    const QStringList usage = m_manager.channelUsage(-1);
    const int place = 2 * chn + 1;
    return chn >= 0 && place < usage.size() ? usage.at(place) : QString();
}
