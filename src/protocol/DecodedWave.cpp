#include "protocol/DecodedWave.h"

#include "analyzer/AnalyzerManager.h"
#include "analyzer/PluginCall.h"

#include <corvanlux/analyzer/Analyzer.h>

namespace {

/// The results of one analyzer on one channel.
class ResultsOnChannel : public DecodedChannel {
public:
    ResultsOnChannel(AnalyzerResults &results, int chn, int format)
        : m_results(results), m_channel(0, std::uint32_t(chn)), m_base(DisplayBase(format))
    {}

    bool hasBubbles() const override { return m_results.DoBubblesAppearOnChannel(m_channel); }
    bool framesInRange(std::int64_t first, std::int64_t last, std::uint64_t &firstFrame,
                       std::uint64_t &lastFrame) const override
    {
        return m_results.GetFramesInRange(first, last, &firstFrame, &lastFrame);
    }
    DecodedSpan frame(std::uint64_t index) const override
    {
        const Frame frame = m_results.GetFrame(index);
        return {frame.firstSample, frame.lastSample};
    }
    DecodedTexts textsOf(std::uint64_t frame) const override
    {
        DecodedTexts out;
        const QString fault = pluginFault([&] {
            Channel channel = m_channel;
            m_results.BuildBubbleText(frame, channel, m_base);
            m_results.GetResultStrings(&out.texts, &out.count);
        });
        return fault.isEmpty() && out.texts != nullptr ? out : DecodedTexts();
    }

    bool hasMarkers() const override { return m_results.DoMarkersAppearOnChannel(m_channel); }
    std::uint64_t markerCount() const override { return m_results.GetNumMarkers(m_channel); }
    bool markersInRange(std::int64_t first, std::int64_t last, std::uint64_t &firstMarker,
                        std::uint64_t &lastMarker) const override
    {
        return m_results.GetMarkersInRange(m_channel, first, last, &firstMarker, &lastMarker);
    }
    DecodedMarker marker(std::uint64_t index) const override
    {
        const Marker marker = m_results.GetMarker(m_channel, index);
        return {marker.sample, int(marker.type)};
    }

private:
    AnalyzerResults &m_results;
    const Channel m_channel;
    const DisplayBase m_base;
};

} // namespace

DecodedWave::DecodedWave(const AnalyzerManager &manager) : m_manager(manager)
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
            visit(ResultsOnChannel(*results, chn, m_manager.formatOfAnalyzer(analyzer)));
        }
    }
}

QString DecodedWave::chnLabel(int chn) const
{
    const QStringList usage = m_manager.channelUsage(-1);
    const int place = 2 * chn + 1;
    return chn >= 0 && place < usage.size() ? usage.at(place) : QString();
}
