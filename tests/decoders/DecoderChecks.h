#pragma once

#include "support/DecodeDesk.h"

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

// What the tests of all decoders ask alike.

namespace decoderChecks {

/// Frames in order and within the capture, each with texts and a kind. @return what is wrong, empty for nothing
inline std::string faultOf(const DecodeDesk &desk, std::int64_t sampleCount)
{
    if (desk.analyzer->GetDecodeStatus() != DecodeStatus::Complete) {
        return "not complete: " + desk.message();
    }
    std::int64_t before = 0;
    std::uint64_t number = 0;
    for (const DecodedFrame &frame : desk.frames()) {
        const std::string where = "frame " + std::to_string(number++) + " at " + std::to_string(frame.first) + ": ";
        if (frame.first < before || frame.last < frame.first || frame.last >= sampleCount) {
            return where + "out of order or outside";
        }
        if (frame.text.empty() || frame.kind.empty()) {
            return where + "says nothing";
        }
        before = frame.first;
    }
    return {};
}

/// Edges at random distances of 1 to 2 x `mean` samples.
inline std::vector<std::int64_t> randomEdges(std::uint32_t seed, std::int64_t mean, std::int64_t sampleCount)
{
    std::mt19937 random(seed);
    std::vector<std::int64_t> edges;
    for (std::int64_t at = 1; at < sampleCount; at += 1 + std::int64_t(random()) % (2 * mean)) {
        edges.push_back(at);
    }
    return edges;
}

/// The line with a spike in the middle of pulses and pauses that have room for it.
/// @param width  samples of a spike @param every  1 for each pulse and pause, 2 for each second one
inline EdgeLine withSpikes(const EdgeLine &line, std::int64_t width, std::size_t every = 1)
{
    constexpr std::int64_t room = 4;
    std::size_t count = 0;
    EdgeLine spiked(line.startLevel());
    std::vector<std::int64_t> ends = line.edges();
    ends.push_back(line.position());
    for (const std::int64_t end : ends) {
        const std::int64_t begin = spiked.position();
        if (++count % every == 0 && end - begin >= room * width) {
            spiked.hold((end - begin - width) / 2).set(!spiked.level()).hold(width).set(!spiked.level());
        }
        spiked.holdUntil(end).set(!spiked.level());
    }
    return spiked;
}

/// Frames of a capture that was cut at its end: the first ones of the whole, of which the last may end early.
inline std::string faultOfCut(const std::vector<DecodedFrame> &cut, const std::vector<DecodedFrame> &whole)
{
    if (cut.size() > whole.size()) {
        return "more frames than the whole has";
    }
    for (std::size_t i = 0; i < cut.size(); ++i) {
        if (cut[i].first != whole[i].first || cut[i].summary() != whole[i].summary() || cut[i].last > whole[i].last) {
            return "frame " + std::to_string(i) + " is " + cut[i].summary() + ", not " + whole[i].summary();
        }
    }
    return {};
}

/// Writes a file, numbers in hexadecimal.
inline void exportTo(const DecodeDesk &desk, const std::string &path, std::uint32_t option)
{
    AnalyzerResults &results = desk.results();
    results.StartExportThread(nullptr, DisplayBase::Hexadecimal, option);
    results.BuildExportFile(path.c_str(), DisplayBase::Hexadecimal, option);
}

/// The text of a file, which is removed.
[[nodiscard]] inline std::string exported(const DecodeDesk &desk, const std::string &path, std::uint32_t option)
{
    exportTo(desk, path, option);
    std::string text;
    if (std::FILE *file = std::fopen(path.c_str(), "rb"); file != nullptr) {
        char bytes[4096];
        for (std::size_t n = std::fread(bytes, 1, sizeof bytes, file); n > 0;
             n = std::fread(bytes, 1, sizeof bytes, file)) {
            text.append(bytes, n);
        }
        std::fclose(file);
        std::remove(path.c_str());
    }
    return text;
}

} // namespace decoderChecks
