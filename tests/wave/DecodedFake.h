#pragma once

#include "wave/DecodedSource.h"

#include <algorithm>
#include <string>
#include <vector>

/// Results made up by a test, on one channel. Counts what it is asked.
class DecodedFake : public DecodedChannel {
public:
    struct Made {
        DecodedSpan span;
        std::vector<std::string> texts;
    };
    std::vector<Made> frames; ///< in the order of their first samples
    std::vector<DecodedMarker> markers;
    bool bubbles = true;
    bool marks = true;   ///< its markers are shown on the channel
    bool shares = false; ///< its frames with other channels
    mutable int rangeQueries = 0;
    mutable int textQueries = 0;

    DecodedFake &add(std::int64_t first, std::int64_t last, std::vector<std::string> texts = {"t"})
    {
        frames.push_back({{first, last}, std::move(texts)});
        return *this;
    }
    DecodedFake &mark(std::uint64_t sample, int type = 0)
    {
        markers.push_back({sample, type});
        return *this;
    }

    bool hasBubbles() const override { return bubbles; }
    bool sharesFrames() const override { return shares; }
    bool framesInRange(std::int64_t first, std::int64_t last, std::uint64_t &firstFrame,
                       std::uint64_t &lastFrame) const override
    {
        ++rangeQueries;
        const auto in = [&](const Made &made) { return made.span.last > first && made.span.first <= last; };
        const auto from = std::find_if(frames.begin(), frames.end(), in);
        if (from == frames.end()) {
            return false;
        }
        const auto to = std::find_if(frames.rbegin(), frames.rend(), in);
        firstFrame = std::uint64_t(from - frames.begin());
        lastFrame = std::uint64_t(frames.rend() - to - 1);
        return true;
    }
    DecodedSpan frame(std::uint64_t index) const override { return frames.at(index).span; }
    DecodedTexts textsOf(std::uint64_t frame) const override
    {
        ++textQueries;
        m_pointers.clear();
        for (const std::string &text : frames.at(frame).texts) {
            m_pointers.push_back(text.c_str());
        }
        return {m_pointers.data(), std::uint32_t(m_pointers.size())};
    }
    bool hasMarkers() const override { return marks && !markers.empty(); }
    std::uint64_t markerCount() const override { return markers.size(); }
    bool markersInRange(std::int64_t first, std::int64_t last, std::uint64_t &firstMarker,
                        std::uint64_t &lastMarker) const override
    {
        ++rangeQueries;
        const auto before = [](const DecodedMarker &marker, std::int64_t at) {
            return std::int64_t(marker.sample) < at;
        };
        const auto from = std::lower_bound(markers.begin(), markers.end(), first, before);
        const auto to = std::lower_bound(markers.begin(), markers.end(), last + 1, before);
        if (from >= to) {
            return false;
        }
        firstMarker = std::uint64_t(from - markers.begin());
        lastMarker = std::uint64_t(to - markers.begin()) - 1;
        return true;
    }
    DecodedMarker marker(std::uint64_t index) const override { return markers.at(index); }

private:
    mutable std::vector<const char *> m_pointers;
};

/// Shows the decoders of each channel to the waves while it lives.
class DecodedFakes : public DecodedSource {
public:
    DecodedFakes() { gDecodedSource = this; }
    ~DecodedFakes() override { gDecodedSource = nullptr; }
    DecodedFakes(const DecodedFakes &) = delete;
    DecodedFakes &operator=(const DecodedFakes &) = delete;

    void visit(int chn, const std::function<void(const DecodedChannel &)> &visit) const override
    {
        asked.push_back(chn);
        for (const auto &[on, decoded] : decoders) {
            if (on == chn) {
                visit(*decoded);
            }
        }
    }
    QString chnLabel(int chn) const override { return chn == 1 ? QStringLiteral("I2C - SCL") : QString(); }

    std::vector<std::pair<int, const DecodedChannel *>> decoders; ///< channel and results
    mutable std::vector<int> asked;
};
