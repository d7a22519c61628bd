#pragma once

#include <QByteArray>

#include <corvanlux/analyzer/Analyzer.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>

/// Stands in the user's list for an analyzer whose plug-in makes no instance any more: decodes nothing, and keeps the
/// settings that were stored for it.
class AbsentAnalyzer final : public Analyzer {
public:
    AbsentAnalyzer(QByteArray analyzerName, QByteArray settings);
    void RunWorker() override {}
    std::uint32_t BuildSimulation(std::int64_t newestSample, std::uint32_t sampleRate,
                                  SimulationChannelDescriptor **channels) override;
    std::uint32_t NeededSampleRate() override { return 0; }
    [[nodiscard]] const char *AnalyzerName() const override { return m_name.constData(); }
    bool NeedsRestart() override { return false; }

private:
    class Settings final : public AnalyzerSettings {
    public:
        explicit Settings(QByteArray text) : m_text(std::move(text)) {}
        bool ApplyInterfaces() override { return true; }
        void LoadText(const char *text) override { m_text = text; }
        const char *SaveText() override { return m_text.constData(); }

    private:
        QByteArray m_text;
    };

    QByteArray m_name;
    Settings m_settings;
};
