// A decoder whose settings have the face that LUX_FACE names. Built once for each.

#include "analyzer/plugins/TextGate.h"

#include <corvanlux/analyzer/Decoder.h>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr std::string_view face = LUX_FACE;

TextGate workerGate; ///< a worker does not begin, nor leave, while it is held

using lux::Presence;

/// One setting of each kind, or many of one.
class FaceSettings : public lux::Settings {
public:
    FaceSettings()
    {
        if (face == "kinds" || face == "forty" || face == "slow" || face == "fails") {
            line = std::make_unique<lux::ChannelSetting>(*this, "line", "Line", "The line & its edges");
            other = std::make_unique<lux::ChannelSetting>(*this, "other", "Other", "", Presence::Optional);
        }
        if (face == "channels") {
            line = std::make_unique<lux::ChannelSetting>(*this, "line", "Line", "");
        }
        if (face == "kinds" || face == "plain") {
            // In the plain one two choices have one number.
            const int third = face == "plain" ? 2 : 3;
            list = std::make_unique<lux::NumberListSetting>(
                *this, "list", "List", "",
                std::initializer_list<lux::Choice>{{1, "a", "First"}, {2, "b", "Second"}, {third, "c", "Third"}}, 2);
            number = std::make_unique<lux::IntegerSetting>(*this, "number", "Number", "A count",
                                                           lux::IntegerSetting::Range{1, 10}, 5);
            small = std::make_unique<lux::IntegerSetting>(*this, "small", "Small", "",
                                                          lux::IntegerSetting::Range{-3, 3}, 0);
            text = std::make_unique<lux::TextSetting>(*this, "text", "Text", "", "word");
            flag = std::make_unique<lux::BoolSetting>(*this, "flag", "", "Check this & that", "A flag", true);
        }
        for (int i = 0; face == "forty" && i < 38; ++i) {
            names.push_back("n" + std::to_string(i));
            names.push_back("Number " + std::to_string(i));
        }
        for (std::size_t i = 0; i + 1 < names.size(); i += 2) {
            many.push_back(std::make_unique<lux::IntegerSetting>(*this, names[i].c_str(), names[i + 1].c_str(), "",
                                                                 lux::IntegerSetting::Range{0, 99}, 1));
        }
    }

    std::unique_ptr<lux::ChannelSetting> line;
    std::unique_ptr<lux::ChannelSetting> other;
    std::unique_ptr<lux::NumberListSetting> list;
    std::unique_ptr<lux::IntegerSetting> number;
    std::unique_ptr<lux::IntegerSetting> small;
    std::unique_ptr<lux::TextSetting> text;
    std::unique_ptr<lux::BoolSetting> flag;
    std::vector<std::string> names;
    std::vector<std::unique_ptr<lux::IntegerSetting>> many;

protected:
    std::string check() const override
    {
        return text != nullptr && text->value() == "refuse" ? "This \"Text\" is refused" : std::string();
    }
};

class FaceResults : public lux::Results {
public:
    explicit FaceResults(const FaceSettings &) {}
    void describe(const FrameData &frame, lux::FrameText &out) const override
    {
        out.add("edge ", lux::formatCount(frame.firstSample));
    }
    void values(const FrameData &, lux::FrameValues &out) const override { out.kind("edge"); }
};

int living = 0;

class FaceAnalyzer : public lux::Decoder<FaceSettings, FaceResults> {
public:
    static constexpr const char *name = "Face";
    FaceAnalyzer() : Decoder(name) { ++living; }
    ~FaceAnalyzer() override { --living; }

protected:
    /// A frame between each two edges, with a marker at its begin.
    void decode() override
    {
        if (face == "fails") {
            fail("The line is of no use");
        }
        while (workerGate.held) {
            std::this_thread::yield();
        }
        const Channel channel = m_settings.line ? m_settings.line->value() : Channel(0, 0);
        lux::ChannelReader &line = reader(channel);
        results().ShowBubblesOn(channel);
        while (face == "slow") {
            results().DropFrame(results().OpenFrame(0)); // until it is stopped
            std::this_thread::yield();
        }
        for (lux::Sample from = line.nextEdge();;) {
            const lux::Sample to = line.nextEdge();
            results().mark(channel, from, MarkerType::Dot);
            results().add({.firstSample = from, .lastSample = to});
            from = to;
        }
    }
    void simulate(lux::Simulation &) override {}
};

} // namespace

LUX_PLUGIN(FaceAnalyzer)

/// How many instances there are.
extern "C" LUX_PLUGIN_EXPORT int LivingAnalyzers()
{
    return living;
}

extern "C" LUX_PLUGIN_EXPORT TextGate *WorkerGateOf()
{
    return &workerGate;
}
