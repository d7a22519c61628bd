#pragma once

#include "analyzer/AnalyzerDesk.h"
#include "analyzer/plugins/TextGate.h"

#include <QLibrary>

/// A manager over one of the plug-ins with a face, with a capture of eight channels.
class FaceDesk : public AnalyzerDesk {
public:
    explicit FaceDesk(const char *face) : AnalyzerDesk({QString::fromLatin1(face)}), m_face(QString::fromLatin1(face))
    {}

    /// Adds an analyzer on a channel; the others of its settings are as they come. @return whether there is one more
    bool add(int channel = 0)
    {
        const int before = manager->count();
        Analyzer *analyzer = manager->createAnalyzer(0);
        if (analyzer == nullptr) {
            return false;
        }
        AnalyzerSettings &settings = *analyzer->GetAnalyzerSettings();
        if (settings.GetChannelsCount() > 0) {
            lineOf(*analyzer)->SetChannel(Channel(0, std::uint32_t(channel)));
        }
        const bool taken = settings.ApplyInterfaces();
        manager->addLibIndex = 0;
        manager->addAnalyzer(analyzer);
        return taken && manager->count() == before + 1;
    }

    /// Instances of the decoder that there are.
    [[nodiscard]] int living() const
    {
        QLibrary library(folderOf(m_face) + QLatin1Char('/') + m_face);
        const auto count = reinterpret_cast<int (*)()>(library.resolve("LivingAnalyzers"));
        return count != nullptr ? count() : -1;
    }
    /// Workers of that face neither begin nor leave while it is held.
    [[nodiscard]] static TextGate &workerGateOf(const QString &face)
    {
        QLibrary library(folderOf(face) + QLatin1Char('/') + face);
        return *reinterpret_cast<TextGate *(*)()>(library.resolve("WorkerGateOf"))();
    }

private:
    const QString m_face;
};
