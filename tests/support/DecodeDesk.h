#pragma once

#include "corvanlux/analyzer/Analyzer.h"
#include "corvanlux/analyzer/AnalyzerSettingInterface.h"
#include "corvanlux/analyzer/DeviceCollection.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// What tests of the runtime and of decoders share: captures out of lists of edges, and a run of a decoder on them
// without the program. Standard C++ only.

/// One channel of a capture that a test writes: levels and times, in samples.
class EdgeLine {
public:
    explicit EdgeLine(bool idleLevel = false) : m_startLevel(idleLevel), m_level(idleLevel) {}
    /// The level from the present position on.
    EdgeLine &set(bool high)
    {
        if (high == m_level)
            return *this;
        m_level = high;
        if (!m_edges.empty() && m_edges.back() == m_pos)
            m_edges.pop_back();
        else
            m_edges.push_back(m_pos);
        return *this;
    }
    EdgeLine &hold(std::int64_t samples)
    {
        m_pos += samples;
        return *this;
    }
    EdgeLine &holdUntil(std::int64_t position)
    {
        m_pos = std::max(m_pos, position);
        return *this;
    }
    /// A level for a time: line.bit(1, 104).
    EdgeLine &bit(bool high, std::int64_t samples) { return set(high).hold(samples); }
    [[nodiscard]] std::int64_t position() const { return m_pos; }
    [[nodiscard]] bool level() const { return m_level; }
    [[nodiscard]] bool startLevel() const { return m_startLevel; }
    [[nodiscard]] const std::vector<std::int64_t> &edges() const { return m_edges; }

private:
    bool m_startLevel;
    bool m_level;
    std::int64_t m_pos = 0;
    std::vector<std::int64_t> m_edges;
};

/// A closed capture: owns its trees. Channels that are not given do not exist.
class TestCapture {
public:
    explicit TestCapture(std::int64_t sampleRate, std::int64_t sampleCount, std::int32_t channels = 16)
        : m_roots(std::size_t(channels), nullptr)
    {
        m_device.chnRoots = m_roots.data();
        m_device.chnCount = channels;
        m_device.smpFrequ = sampleRate;
        m_device.smpCount = sampleCount;
    }
    TestCapture(const TestCapture &) = delete;
    TestCapture &operator=(const TestCapture &) = delete;

    /// @param edges  rising positions; what lies outside the capture is left out
    TestCapture &channel(std::uint32_t index, bool startLevel, const std::vector<std::int64_t> &edges)
    {
        auto root = std::make_unique<SmpEdgeRoot>();
        root->midCount = 0;
        root->startLevel = startLevel ? 1 : 0;
        for (const std::int64_t edge : edges) {
            if (edge >= 0 && edge < m_device.smpCount)
                append(*root, edge);
        }
        append(*root, m_device.smpCount);
        m_roots[index] = root.get();
        m_ownRoots.push_back(std::move(root));
        return *this;
    }
    TestCapture &channel(std::uint32_t index, const EdgeLine &line)
    {
        return channel(index, line.startLevel(), line.edges());
    }
    [[nodiscard]] DeviceCollection &device() { return m_device; }
    [[nodiscard]] const SmpEdgeRoot *root(std::uint32_t index) const { return m_roots[index]; }

private:
    void append(SmpEdgeRoot &root, std::int64_t position)
    {
        if (root.midCount == 0 ||
            (mid(root).leafCount == SmpEdgeMid::capacity && leaf(root).count == SmpEdgeLeaf::capacity)) {
            m_mids.push_back(std::make_unique<SmpEdgeMid>());
            m_mids.back()->leafCount = 0;
            root.mids[root.midCount++] = m_mids.back().get();
        }
        if (mid(root).leafCount == 0 || leaf(root).count == SmpEdgeLeaf::capacity) {
            m_leaves.push_back(std::make_unique<SmpEdgeLeaf>());
            m_leaves.back()->count = 0;
            mid(root).leaves[mid(root).leafCount++] = m_leaves.back().get();
        }
        leaf(root).setPosition(leaf(root).count++, position);
        mid(root).leafLast[mid(root).leafCount - 1] = position;
        root.midLast[root.midCount - 1] = position;
    }
    static SmpEdgeMid &mid(SmpEdgeRoot &root) { return *root.mids[root.midCount - 1]; }
    static SmpEdgeLeaf &leaf(SmpEdgeRoot &root) { return *mid(root).leaves[mid(root).leafCount - 1]; }

    DeviceCollection m_device;
    std::vector<SmpEdgeRoot *> m_roots;
    std::vector<std::unique_ptr<SmpEdgeRoot>> m_ownRoots;
    std::vector<std::unique_ptr<SmpEdgeMid>> m_mids;
    std::vector<std::unique_ptr<SmpEdgeLeaf>> m_leaves;
};

/// The thread of one decoder, as a test runs it.
class TestProgress final : public ProgressManager {
public:
    /// @param analyzer  runs on a thread of its own; null: StartWorker only counts
    explicit TestProgress(Analyzer *analyzer = nullptr) : m_analyzer(analyzer) {}
    ~TestProgress() { join(); }
    void StartWorker() override
    {
        ++started;
        if (m_analyzer != nullptr)
            m_thread = std::thread([this] { m_analyzer->DecodeToEnd(); });
    }
    void WorkerEnded() override { ++ended; }
    void SetProgress(double value) override
    {
        ++reports;
        progress = value;
    }
    void join()
    {
        if (m_thread.joinable())
            m_thread.join();
    }
    int started = 0;
    int ended = 0;
    int reports = 0;
    double progress = 0;

private:
    Analyzer *m_analyzer;
    std::thread m_thread;
};

/// One value of a decoded frame, as text: "65", "1", "0A1B", "null".
struct NamedValue {
    std::string name;
    std::string text;
    bool operator==(const NamedValue &) const = default;
};

/// A frame with all that a test asks about it.
struct DecodedFrame {
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::string kind;
    std::vector<NamedValue> values;
    std::string text;

    /// The value of this name; "(absent)" without one.
    [[nodiscard]] std::string value(const std::string &name) const
    {
        for (const NamedValue &named : values) {
            if (named.name == name)
                return named.text;
        }
        return "(absent)";
    }
    /// "byte v=65 pe=0": kind and values in a line.
    [[nodiscard]] std::string summary() const
    {
        std::string out = kind;
        for (const NamedValue &named : values)
            out += ' ' + named.name + '=' + named.text;
        return out;
    }
};

/// Runs one decoder. Holds the decoder, which a test may also reach itself.
class DecodeDesk {
public:
    /// @param settings  as a stored text: "rx=0,baudrate=115200"
    explicit DecodeDesk(std::unique_ptr<Analyzer> decoder, const std::string &settings = {})
        : analyzer(std::move(decoder))
    {
        analyzer->GetAnalyzerSettings()->LoadText(settings.c_str());
    }

    /// Sets settings one after the other, "key=value", as a dialog does. @return the refusal, empty for none
    std::string edit(const std::vector<std::pair<std::string, std::string>> &values)
    {
        AnalyzerSettings *settings = analyzer->GetAnalyzerSettings();
        for (const auto &[key, value] : values) {
            bool taken = false;
            for (std::uint32_t i = 0; i < settings->GetSettingsInterfacesCount(); ++i) {
                AnalyzerSettingInterface *face = settings->GetSettingsInterface(i);
                if (face->GetKey() == key)
                    taken = face->SetFromText(value.c_str());
            }
            if (!taken)
                return "cannot set " + key + " to " + value;
        }
        return settings->ApplyInterfaces() ? std::string() : settings->GetSaveErrorMessage();
    }
    /// A whole run on this thread.
    DecodeDesk &run(TestCapture &capture)
    {
        analyzer->Init(&capture.device(), nullptr, &progress);
        analyzer->SetupResults();
        analyzer->InitialWorkerThread();
        analyzer->StartProcessing();
        analyzer->DecodeToEnd();
        return *this;
    }
    /// Starts a run on a thread of its own; `worker` must come from TestProgress(desk.analyzer.get()).
    void start(TestCapture &capture, TestProgress &worker)
    {
        analyzer->Init(&capture.device(), nullptr, &worker);
        analyzer->SetupResults();
        analyzer->InitialWorkerThread();
        analyzer->StartProcessing();
    }
    [[nodiscard]] AnalyzerResults &results() const
    {
        AnalyzerResults *found = nullptr;
        analyzer->GetAnalyzerResults(&found);
        return *found;
    }
    [[nodiscard]] DecodedFrame frame(std::uint64_t index, DisplayBase base = DisplayBase::Hexadecimal) const
    {
        AnalyzerResults &from = results();
        const Frame words = from.GetFrame(index);
        DecodedFrame out;
        out.first = words.firstSample;
        out.last = words.lastSample;
        from.BuildFrameValues(index);
        out.kind = from.GetFrameKind();
        const FrameValue *values = nullptr;
        std::uint32_t count = 0;
        from.GetFrameValues(&values, &count);
        for (std::uint32_t i = 0; i < count; ++i)
            out.values.push_back({values[i].name, textOf(values[i])});
        from.BuildTabularText(index, base);
        out.text = from.GetTabularTextString();
        return out;
    }
    [[nodiscard]] std::vector<DecodedFrame> frames(DisplayBase base = DisplayBase::Hexadecimal) const
    {
        std::vector<DecodedFrame> all;
        for (std::uint64_t i = 0; i < results().GetNumFrames(); ++i)
            all.push_back(frame(i, base));
        return all;
    }
    /// All frames as summaries.
    [[nodiscard]] std::vector<std::string> summaries() const
    {
        std::vector<std::string> all;
        for (const DecodedFrame &decoded : frames())
            all.push_back(decoded.summary());
        return all;
    }
    /// The texts of a bubble, from short to long.
    [[nodiscard]] std::vector<std::string> bubble(std::uint64_t index, Channel channel, DisplayBase base) const
    {
        AnalyzerResults &from = results();
        from.BuildBubbleText(index, channel, base);
        const char *const *strings = nullptr;
        std::uint32_t count = 0;
        from.GetResultStrings(&strings, &count);
        return {strings, strings + count};
    }
    [[nodiscard]] std::vector<Marker> markers(std::uint32_t channel) const
    {
        std::vector<Marker> all;
        const Channel asked(0, channel);
        for (std::uint64_t i = 0; i < results().GetNumMarkers(asked); ++i)
            all.push_back(results().GetMarker(asked, i));
        return all;
    }
    [[nodiscard]] std::string message() const
    {
        char text[1024];
        analyzer->GetDecodeMessage(text, sizeof text);
        return text;
    }

    /// The decoder's own simulation as a capture, made block by block.
    /// @param block  samples a call; the capture is as long as whole blocks reach `samples`
    /// @param before  samples of the first levels ahead of it
    [[nodiscard]] std::unique_ptr<TestCapture> simulate(std::int64_t rate, std::int64_t samples, std::int64_t block,
                                                        std::int64_t before = 0)
    {
        struct Line {
            bool startLevel = false;
            bool lastLevel = false;
            std::int64_t pos = 0;
            std::vector<std::int64_t> ends; ///< of the runs; the last one is open
        };
        std::vector<std::pair<std::uint32_t, Line>> lines;
        analyzer->Init(nullptr, reinterpret_cast<ConditionManager *>(&rate), nullptr);
        std::int64_t done = 0;
        for (; done < samples; done += block) {
            SimulationChannelDescriptor *channels = nullptr;
            const std::uint32_t count = analyzer->BuildSimulation(done + block, std::uint32_t(rate), &channels);
            for (std::uint32_t i = 0; i < count; ++i) {
                const std::uint32_t index = channels[i].GetChannel().channelIndex;
                auto it = std::find_if(lines.begin(), lines.end(), [index](const auto &l) { return l.first == index; });
                if (it == lines.end()) {
                    const bool initial = channels[i].GetInitialBitState() != BitState::Low;
                    it = lines.insert(it, {index, Line{initial, !initial, 0, {}}});
                }
                Line &line = it->second;
                const SimulationData data = *channels[i].GetData();
                const bool current = channels[i].GetCurrentBitState() != BitState::Low;
                const bool first = (data.end - data.begin) % 2 == 0 ? !current : current;
                bool joins = first == line.lastLevel && !line.ends.empty();
                for (const std::uint32_t *width = data.begin; width != data.end; ++width) {
                    line.pos += *width;
                    if (joins)
                        line.ends.pop_back();
                    joins = false;
                    line.ends.push_back(line.pos);
                }
                if (data.begin != data.end)
                    line.lastLevel = current;
            }
        }
        auto capture = std::make_unique<TestCapture>(rate, before + done, 64);
        for (auto &[index, line] : lines) {
            for (std::int64_t &end : line.ends)
                end += before;
            if (index < 64)
                capture->channel(index, line.startLevel, line.ends);
        }
        return capture;
    }

    std::unique_ptr<Analyzer> analyzer;
    TestProgress progress;

private:
    static std::string textOf(const FrameValue &value)
    {
        switch (value.type) {
        case FrameValueType::Number:
        case FrameValueType::Flag:
            return std::to_string(value.number);
        case FrameValueType::Text:
        case FrameValueType::Hex:
            return value.text;
        case FrameValueType::None:
            break;
        }
        return "null";
    }
};
