#pragma once

#include "analyzer/BubbleMaker.h"
#include "analyzer/DisplayFormat.h"
#include "wave/DecodedSource.h"

#include <corvanlux/analyzer/AnalyzerResults.h>
#include <string>
#include <vector>

/// The results of one analyzer as the row of one channel shows them. A plain view: whoever makes it knows that the
/// results live on. Main thread.
class ResultsOnChannel : public DecodedChannel {
public:
    /// @param maker  of the texts; not owned
    ResultsOnChannel(AnalyzerResults &results, int chn, int format, BubbleMaker &maker)
        : m_results(results), m_channel(0, std::uint32_t(chn)), m_base(displayBaseOf(format)), m_maker(maker)
    {}

    bool hasBubbles() const override { return m_results.DoBubblesAppearOnChannel(m_channel); }
    bool sharesFrames() const override
    {
        for (std::uint32_t i = 0; i < maxChannels; ++i) {
            if (i != m_channel.channelIndex && m_results.DoBubblesAppearOnChannel(Channel(0, i))) {
                return true;
            }
        }
        return false;
    }
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
        m_texts.clear();
        const BubbleMaker::Texts *made = m_maker.texts({&m_results, frame, m_channel.channelIndex, m_base});
        if (made != nullptr) {
            for (const std::string &text : *made) {
                m_texts.push_back(text.c_str());
            }
        }
        return {m_texts.data(), std::uint32_t(m_texts.size())};
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
    static constexpr std::uint32_t maxChannels = 64; ///< that results know

    AnalyzerResults &m_results;
    const Channel m_channel;
    const DisplayBase m_base;
    BubbleMaker &m_maker;
    mutable std::vector<const char *> m_texts; ///< what textsOf() told last
};
