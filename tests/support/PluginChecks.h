#pragma once

#include "support/DecodeDesk.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// What holds for every decoder, whatever its protocol, for tests, benchmarks and the fuzz target.

namespace pluginChecks {

/// Gives a number from 0 to `below` - 1: from a generator, or from the bytes of a fuzz run.
using Chooser = std::function<std::uint32_t(std::uint32_t below)>;

/// Channel 0, 1, ... for the first, second, ... channel setting; required ones only where all together are refused.
/// @return whether they were taken
inline bool connectChannels(Analyzer &analyzer)
{
    AnalyzerSettings &settings = *analyzer.GetAnalyzerSettings();
    for (const bool onlyRequired : {false, true}) {
        for (std::uint32_t i = 0; i < settings.GetChannelsCount(); ++i) {
            auto *face = dynamic_cast<AnalyzerSettingInterfaceChannel *>(settings.GetSettingsInterface(i));
            const bool isLeftOut = onlyRequired && face->GetSelectionOfNoneIsAllowed();
            face->SetChannel(isLeftOut ? Channel() : Channel(0, i));
        }
        if (settings.ApplyInterfaces())
            return true;
    }
    return false;
}

/// Any value that the interface offers, or nearly.
inline void choose(AnalyzerSettingInterface &face, const Chooser &random)
{
    if (auto *channel = dynamic_cast<AnalyzerSettingInterfaceChannel *>(&face); channel != nullptr) {
        const std::uint32_t index = random(18);
        channel->SetChannel(index > 16 ? Channel() : Channel(0, index)); // 16 is not in the capture
    } else if (auto *list = dynamic_cast<AnalyzerSettingInterfaceNumberList *>(&face); list != nullptr) {
        const std::uint32_t index = random(list->GetListboxNumbersCount() + 1);
        list->SetNumber(list->GetListboxNumber(index)); // the last is none of the list
    } else if (auto *integer = dynamic_cast<AnalyzerSettingInterfaceInteger *>(&face); integer != nullptr) {
        const std::array<std::int32_t, 6> values{integer->GetMin(),     integer->GetMax(), integer->GetMin() + 1,
                                                 integer->GetInteger(), 1000000,           std::int32_t(random(70000))};
        integer->SetInteger(values[random(std::uint32_t(values.size()))]);
    } else if (auto *text = dynamic_cast<AnalyzerSettingInterfaceText *>(&face); text != nullptr) {
        static constexpr std::array<const char *, 6> texts{"", "0", "ff,00-7f", "x;y", "%41=,", "a rather long text"};
        text->SetText(texts[random(std::uint32_t(texts.size()))]);
    } else if (auto *box = dynamic_cast<AnalyzerSettingInterfaceBool *>(&face); box != nullptr) {
        box->SetValue(random(2) != 0);
    }
}

/// Some settings anew. @return whether they were taken
inline bool chooseSettings(Analyzer &analyzer, const Chooser &random)
{
    AnalyzerSettings &settings = *analyzer.GetAnalyzerSettings();
    for (std::uint32_t i = 0; i < settings.GetSettingsInterfacesCount(); ++i) {
        if (random(2) != 0)
            choose(*settings.GetSettingsInterface(i), random);
    }
    return settings.ApplyInterfaces();
}

/// A stored text that somebody has edited.
inline std::string chooseText(Analyzer &analyzer, const Chooser &random)
{
    std::string text = analyzer.GetAnalyzerSettings()->SaveText();
    for (std::uint32_t edits = random(8); edits > 0; --edits) {
        static constexpr std::string_view letters = "0123456789,=%;-.anx\x01\xff";
        const std::size_t at = random(std::uint32_t(text.size() + 1));
        const char letter = letters[random(std::uint32_t(letters.size()))];
        if (random(3) == 0)
            text.erase(at, 1 + random(10));
        else if (random(2) == 0 || at == text.size())
            text.insert(at, 1, letter);
        else
            text[at] = letter;
    }
    return text;
}

/// Sixteen channels with edges at distances that change between dense and sparse.
inline std::unique_ptr<TestCapture> noise(const Chooser &random, std::int64_t sampleRate, std::int64_t samples)
{
    auto capture = std::make_unique<TestCapture>(sampleRate, samples);
    for (std::uint32_t channel = 0; channel < 16; ++channel) {
        std::vector<std::int64_t> edges;
        std::uint32_t mean = 1 + random(200);
        for (std::int64_t at = random(50); at < samples; at += 1 + std::int64_t(random(2 * mean))) {
            edges.push_back(at);
            if (random(100) == 0)
                mean = 1 + random(2000);
        }
        capture->channel(channel, random(2) != 0, edges);
    }
    return capture;
}

/// Frames and markers in order and within the capture, each frame with a kind and texts in every base.
/// @param texts  frames whose texts are asked for, from the first on
/// @return what is wrong, empty for nothing
inline std::string faultOfResults(const DecodeDesk &desk, std::int64_t sampleCount, std::uint64_t texts = 200)
{
    const DecodeStatus status = desk.analyzer->GetDecodeStatus();
    if (status != DecodeStatus::Complete && status != DecodeStatus::Stopped && status != DecodeStatus::Failed)
        return "it ended in no order: " + desk.message();
    if (status == DecodeStatus::Failed && desk.message().empty())
        return "failed without telling why";
    if (desk.message().find("in the order of time") != std::string::npos)
        return desk.message();
    if (desk.message().find("reached out of the capture") != std::string::npos)
        return desk.message();
    AnalyzerResults &results = desk.results();
    std::int64_t before = 0;
    for (std::uint64_t i = 0; i < results.GetNumFrames(); ++i) {
        const Frame frame = results.GetFrame(i);
        if (frame.firstSample < before || frame.lastSample < frame.firstSample || frame.lastSample >= sampleCount)
            return "frame " + std::to_string(i) + " is out of order or outside";
        before = frame.firstSample;
        if (i >= texts)
            continue;
        for (std::int32_t base = 0; base <= 4; ++base) {
            const DecodedFrame decoded = desk.frame(i, DisplayBase(base));
            if (decoded.text.empty() || decoded.kind.empty())
                return "frame " + std::to_string(i) + " says nothing";
            for (std::uint32_t channel = 0; channel < 16; ++channel)
                (void)desk.bubble(i, Channel(0, channel), DisplayBase(base));
        }
    }
    for (std::uint32_t channel = 0; channel < 64; ++channel) {
        std::uint64_t last = 0;
        for (const Marker &marker : desk.markers(channel)) {
            if (marker.sample < last || marker.sample >= std::uint64_t(sampleCount))
                return "a marker is out of order or outside";
            last = marker.sample;
        }
    }
    return {};
}

} // namespace pluginChecks
