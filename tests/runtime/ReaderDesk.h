#pragma once

#include "corvanlux/analyzer/Decoder.h"
#include "support/DecodeDesk.h"

#include <functional>
#include <memory>
#include <utility>

/// A decoder whose decode() is the test's: so that readers and results run where they do in a decoder.
namespace readerDesk {

class ScriptSettings : public lux::Settings {
public:
    lux::ChannelSetting a{*this, "a", "A", ""};
    lux::ChannelSetting b{*this, "b", "B", "", lux::Presence::Optional};
};

class ScriptResults : public lux::Results {
public:
    explicit ScriptResults(const ScriptSettings & /*settings*/) {}

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override
    {
        out.add("F");
        out.add("Frame ", out.number(frame.data, 8));
    }
    void values(const FrameData &frame, lux::FrameValues &out) const override
    {
        out.kind("frame").number("v", frame.data);
    }
};

class ScriptDecoder final : public lux::Decoder<ScriptSettings, ScriptResults> {
public:
    static constexpr const char *name = "Script";
    using Script = std::function<void(ScriptDecoder &)>;
    explicit ScriptDecoder(Script steps) : Decoder(name), script(std::move(steps)) {}
    lux::ChannelReader &readerOf(std::uint32_t channel) { return reader(Channel(0, channel)); }
    lux::ChannelReader &readerOfNone() { return reader(Channel()); }
    ScriptResults &out() { return results(); }
    [[nodiscard]] std::int64_t rate() const { return sampleRate(); }
    void failWith(const std::string &text) { fail(text); }
    void tellThat(const std::string &text) { tell(text); }
    Script script;

protected:
    void decode() override { script(*this); }
};

/// Runs `script` as a decode of `capture`. @return the desk with what it left
inline std::unique_ptr<DecodeDesk> decode(TestCapture &capture, ScriptDecoder::Script script)
{
    auto desk = std::make_unique<DecodeDesk>(std::make_unique<ScriptDecoder>(std::move(script)), "a=0");
    desk->run(capture);
    return desk;
}

} // namespace readerDesk
