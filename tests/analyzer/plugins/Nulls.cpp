// A decoder that answers with null wherever it can.

#include <corvanlux/analyzer/Analyzer.h>
#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <cstdint>
#include <string_view>

namespace {

constexpr bool makesResults = std::string_view(LUX_LIE) == "null-texts";

class NullSettings : public AnalyzerSettings {
public:
    NullSettings()
    {
        m_choice.SetTitleAndToolTip(nullptr, nullptr);
        m_choice.SetKey(nullptr);
        m_choice.AddNumber(1, nullptr, nullptr, nullptr);
        AddInterface(nullptr);
        AddInterface(&m_choice);
        AddExportOption(1, nullptr);
        AddExportExtension(1, nullptr, nullptr);
        SetErrorText(nullptr);
    }
    bool ApplyInterfaces() override { return false; }
    void LoadText(const char *) override {}
    const char *SaveText() override { return nullptr; }
    const char *GetSettingBrief() override { return nullptr; }

private:
    AnalyzerSettingInterfaceNumberList m_choice;
};

class NullResults : public AnalyzerResults {
public:
    void BuildBubbleText(std::uint64_t, Channel &, DisplayBase) override {}
    void BuildExportFile(const char *, DisplayBase, std::uint32_t) override {}
    void BuildTabularText(std::uint64_t, DisplayBase) override {}
    void BuildMessageText(std::uint64_t, DisplayBase) override {}
    void BuildGroupText(std::uint64_t, DisplayBase) override {}
};

class NullAnalyzer : public Analyzer {
public:
    NullAnalyzer() { SetAnalyzerSettings(&m_settings); }
    void SetupResults() override
    {
        m_results = makesResults ? new NullResults : nullptr;
        SetAnalyzerResults(m_results);
    }
    void RunWorker() override
    {
        TellAboutDecode(nullptr);
        if (m_results != nullptr) {
            FrameData frame;
            m_results->AddFrame(frame);
        }
    }
    std::uint32_t BuildSimulation(std::int64_t, std::uint32_t, SimulationChannelDescriptor **channels) override
    {
        *channels = nullptr;
        return 5;
    }
    std::uint32_t NeededSampleRate() override { return 0; }
    const char *GetAnalyzerVersion() const override { return nullptr; }
    const char *AnalyzerName() const override { return nullptr; }
    bool NeedsRestart() override { return false; }

private:
    NullSettings m_settings;
    NullResults *m_results = nullptr; ///< the analyzer's
};

} // namespace

extern "C" LUX_PLUGIN_EXPORT Analyzer *CreateAnalyzer()
{
    return new NullAnalyzer;
}

extern "C" LUX_PLUGIN_EXPORT void DestroyAnalyzer(Analyzer *analyzer)
{
    delete analyzer;
}

extern "C" LUX_PLUGIN_EXPORT const char *GetAnalyzerName()
{
    return "Nulls";
}

extern "C" LUX_PLUGIN_EXPORT const char *GetParaInfoList()
{
    return nullptr;
}
