#pragma once

#include "analyzer/ResultList.h"

#include <atomic>
#include <corvanlux/analyzer/DecoderResults.h>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

/// Results without a decoder: frames as a test puts them there. A frame's text is the letter of its analyzer and its
/// number; those with `extra` set say "hit" before that, and those with `flags` set fail.
class MadeResults : public lux::Results {
public:
    explicit MadeResults(char letter) : m_letter(letter) {}

    /// One frame each: first and last sample.
    MadeResults &frames(const std::vector<std::pair<std::int64_t, std::int64_t>> &samples)
    {
        for (const auto &[first, last] : samples) {
            frame(first, last);
        }
        return *this;
    }
    /// `count` frames, from `first` on, `step` apart and half as long.
    MadeResults &row(std::uint64_t count, std::int64_t first, std::int64_t step, std::uint64_t hitEvery = 0)
    {
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::int64_t at = first + std::int64_t(i) * step;
            frame(at, at + step / 2, hitEvery > 0 && i % hitEvery == 0);
        }
        return *this;
    }
    void frame(std::int64_t first, std::int64_t last, bool hit = false, bool fails = false)
    {
        FrameData data;
        data.firstSample = first;
        data.lastSample = last;
        data.data = GetNumFrames();
        data.extra = hit ? 1 : 0;
        data.flags = fails ? 1 : 0;
        add(data);
    }

    void describe(const FrameData &frame, lux::FrameText &out) const override
    {
        ++texts;
        if (frame.flags != 0) {
            throw std::runtime_error("no text");
        }
        const char letter[] = {m_letter, '\0'};
        out.add(frame.extra != 0 ? "Hit " : "", letter, lux::formatCount(std::int64_t(frame.data)));
    }
    void values(const FrameData &, lux::FrameValues &out) const override { out.kind("frame"); }

    mutable std::atomic<std::uint64_t> texts{0}; ///< that were made

private:
    char m_letter;
};

/// One frame that tells the base that is asked for as a number, on the given channels.
class BaseResults : public lux::Results {
public:
    explicit BaseResults(const std::vector<std::uint32_t> &channels = {})
    {
        for (const std::uint32_t channel : channels) {
            showBubblesOn(Channel(0, channel));
        }
        add({.firstSample = 0, .lastSample = 100});
    }
    void describe(const FrameData &, lux::FrameText &out) const override
    {
        out.add("base ", lux::formatCount(std::int64_t(out.base())));
    }
    void values(const FrameData &, lux::FrameValues &out) const override { out.kind("base"); }
};
