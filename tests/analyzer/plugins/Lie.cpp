// A decoder that is sound but for one thing, which LUX_LIE names. Built once for each thing.

#include "TextGate.h"

#include <array>
#include <atomic>
#include <chrono>
#include <corvanlux/analyzer/Decoder.h>
#include <corvanlux/analyzer/ExportWriter.h>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

namespace {

constexpr std::string_view lie = LUX_LIE;

std::atomic<int> live{0};      // analyzers
std::atomic<int> destroyed{0}; // by DestroyAnalyzer
TextGate textGate;

/// Ends the process if the environment says so.
void dieIfAsked()
{
    if (std::getenv("LUX_TEST_DIE") != nullptr) {
        std::_Exit(66);
    }
}

/// Of the process's end, asked for by the environment: a decoder that is still there and hears it fails.
struct Bell {
    Bell() = default;
    Bell(const Bell &) = delete;
    Bell &operator=(const Bell &) = delete;
    ~Bell()
    {
        hasRung = isWanted;
        while (isWanted && spinning > 0) {
            std::this_thread::yield();
        }
    }
    const bool isWanted = std::getenv("LUX_TEST_INTERRUPT") != nullptr;
    std::atomic<bool> hasRung{false};
    std::atomic<int> spinning{0};
};
Bell bell;

[[noreturn]] void throwUp()
{
    if (lie == "throws-number") {
        throw 5;
    }
    throw std::runtime_error("the plug-in threw");
}

[[noreturn]] void spin()
{
    ++bell.spinning;
    if (bell.isWanted) {
        (void)std::raise(SIGINT); // as a user who has waited for long enough
    }
    for (volatile std::uint64_t i = 0;;) {
        i = i + 1;
        std::this_thread::yield(); // the other tests want to get on
        if (bell.hasRung) {
            std::abort(); // what it works with is going away
        }
    }
}

/// Of all frames but those that begin within the first samples.
void spinBehindTheFirst(const FrameData &frame)
{
    constexpr std::int64_t soundSamples = 200;
    if (frame.firstSample >= soundSamples) {
        spin();
    }
}

class LieSettings : public AnalyzerSettings {
public:
    LieSettings()
    {
        line.SetKey("line");
        line.SetTitleAndToolTip("Line", "");
        AddInterface(&line);
        if (lie == "sound" || lie == "exports" || lie == "text-waits" || lie == "text-throws") {
            AddExportOption(3, "Edges & more");
            AddExportExtension(3, "Text file", "txt");
            AddExportExtension(3, "CSV file", "csv");
        }
        if (lie == "exports") {
            AddExportOption(7, "Levels");
            AddExportExtension(7, "Log file", "log");
        }
    }
    bool ApplyInterfaces() override
    {
        if (lie == "settings-throw") {
            throwUp();
        }
        return true;
    }
    void LoadText(const char *text) override
    {
        if (lie == "load-throws") {
            throwUp();
        }
        line.SetFromText(text);
    }
    const char *SaveText() override
    {
        if (lie == "save-throws") {
            throwUp();
        }
        return lie == "semicolon" ? "a;b" : line.GetAsText();
    }

    AnalyzerSettingInterfaceChannel line;
};

/// What a decoder of one kind leaves behind only when it is allowed to.
struct Slow {
    Slow() = default;
    Slow(const Slow &) = delete;
    Slow &operator=(const Slow &) = delete;
    ~Slow()
    {
        while (lie == "leaves-late" && textGate.held) {
            std::this_thread::yield();
        }
    }
};

class LieResults : public lux::Results {
public:
    explicit LieResults(const LieSettings &)
    {
        if (lie == "setup-throws") {
            throwUp();
        }
    }
    void describe(const FrameData &frame, lux::FrameText &out) const override
    {
        if (lie == "text-throws") {
            throwUp();
        }
        if (lie == "text-waits") {
            ++textGate.inside;
            while (textGate.held) {
                std::this_thread::yield();
            }
            --textGate.inside;
        }
        if (lie == "text-spins") {
            spinBehindTheFirst(frame);
        }
        out.add("edge ", lux::formatCount(frame.firstSample));
    }
    void values(const FrameData &frame, lux::FrameValues &out) const override
    {
        if (lie == "values-throw") {
            throwUp();
        }
        if (lie == "values-spin") {
            spinBehindTheFirst(frame);
        }
        out.kind("edge");
    }
    /// Of the decoder with two options the second tells what was asked for.
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override
    {
        if (lie == "exports" && optionId == 7) {
            out.line("option 7, format ", lux::formatCount(std::int64_t(out.base())));
            return;
        }
        exportFrames(out);
    }
};

/// A frame for each edge of the line.
class LieAnalyzer : public lux::Decoder<LieSettings, LieResults> {
public:
    static constexpr const char *name = "Lie";

    LieAnalyzer() : Decoder(name)
    {
        if (lie == "create-throws") {
            throwUp();
        }
        if (lie == "no-settings") {
            SetAnalyzerSettings(nullptr);
        }
        ++live;
    }
    LieAnalyzer(const LieAnalyzer &) = delete;
    LieAnalyzer &operator=(const LieAnalyzer &) = delete;
    ~LieAnalyzer() override { --live; }
    bool NeedsRestart() override
    {
        if (lie == "restart-throws" || lie == "throws-number") {
            throwUp();
        }
        const bool restartsOnce = lie == "restarts" || lie == "restarts-once";
        return (restartsOnce && ++m_runs < 2) || lie == "restarts-always";
    }

protected:
    void decode() override
    {
        keepRun();
        const Slow slow;
        lux::ChannelReader &line = reader(m_settings.line.GetChannel());
        if (lie == "decode-throws") {
            throwUp();
        }
        if (lie == "channel-999") {
            (void)reader(Channel(0, 999)).nextEdge();
        }
        for (;;) {
            if (lie == "swallows") {
                readForEver(line);
            } else if (lie == "spins") {
                spin();
            } else if (lie == "returns") {
                return;
            }
            addFrames(line.nextEdge());
        }
    }

    void simulate(lux::Simulation &simulation) override
    {
        if (lie == "simulation-throws") {
            throwUp();
        }
        if (lie == "simulation-spins") {
            spin();
        }
        lux::SimulationLine &line = simulation.line(m_settings.line.GetChannel(), true);
        simulation.hold(10);
        line.toggle();
    }

private:
    /// Fails a further run that finds another capture than the first one.
    void keepRun()
    {
        const std::array run{sampleRate(), sampleCount(), GetTriggerSample()};
        if (lie == "restarts" && m_runs > 0 && run != m_firstRun) {
            fail("another capture");
        }
        m_firstRun = run;
    }
    void addFrames(lux::Sample edge)
    {
        if (lie == "disorder") {
            results().add({.firstSample = (std::int64_t(1) << 50) - edge, .lastSample = -edge});
        } else if (lie == "hoards") {
            for (;;) {
                results().add({.firstSample = edge, .lastSample = edge});
            }
        } else if (lie == "marks") {
            for (int i = 0; i < 1000; ++i) {
                results().mark(m_settings.line.GetChannel(), edge - i, MarkerType(i));
            }
        }
        results().add({.firstSample = edge, .lastSample = edge});
    }
    /// Meets the end of the data again and again, and waits for the system in between.
    static void readForEver(lux::ChannelReader &line)
    {
        for (;;) {
            try {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                (void)line.nextEdge();
            } catch (...) {
            }
        }
    }

    int m_runs = 0;
    std::array<std::int64_t, 3> m_firstRun{}; ///< rate, samples, trigger
};

/// Comes while the file is being loaded.
[[maybe_unused]] const bool loaded = [] {
    if (lie == "dies") {
        dieIfAsked();
    }
    return true;
}();

} // namespace

#ifndef LUX_LACKS_CREATE
extern "C" LUX_PLUGIN_EXPORT Analyzer *CreateAnalyzer()
{
    if (lie == "create-dies") {
        dieIfAsked();
    }
    return lie == "creates-null" ? nullptr : new LieAnalyzer;
}
#endif

/// For the tests: how many there are.
extern "C" LUX_PLUGIN_EXPORT int LiveAnalyzers()
{
    return live;
}

/// For the tests: how many went through the entry point, and not through their destructor alone.
extern "C" LUX_PLUGIN_EXPORT int DestroyedAnalyzers()
{
    return destroyed;
}

extern "C" LUX_PLUGIN_EXPORT TextGate *TextGateOf()
{
    return &textGate;
}

#ifndef LUX_LACKS_DESTROY
extern "C" LUX_PLUGIN_EXPORT void DestroyAnalyzer(Analyzer *analyzer)
{
    ++destroyed;
    delete analyzer;
}
#endif

#ifndef LUX_LACKS_NAME
extern "C" LUX_PLUGIN_EXPORT const char *GetAnalyzerName()
{
    if (lie == "name-throws") {
        throwUp();
    }
    return lie == "no-name" ? nullptr : LieAnalyzer::name;
}
#endif

#ifdef LUX_MODELS
extern "C" LUX_PLUGIN_EXPORT const char *GetParaInfoList()
{
    return LUX_MODELS;
}
#endif
