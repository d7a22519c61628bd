#include "protocol/ExportOptions.h"

#include "analyzer/PluginCall.h"
#include "settings/Language.h"

#include <corvanlux/analyzer/Analyzer.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>

namespace {

QString shown(const char *text, const QString &analyzer)
{
    return trAnalyzer(QString::fromUtf8(text != nullptr ? text : ""), analyzer);
}

void readOptions(const Analyzer &analyzer, QVector<ExportOption> &options)
{
    const QString name = QString::fromUtf8(analyzer.AnalyzerName());
    const AnalyzerSettings &settings = *analyzer.GetAnalyzerSettings();
    for (std::uint32_t i = 0; i < settings.GetExportOptionsCount(); ++i) {
        std::uint32_t id = 0;
        const char *title = nullptr;
        if (!settings.GetExportOption(i, &id, &title)) {
            continue;
        }
        ExportOption option{shown(title, name), {}};
        for (std::uint32_t j = 0; j < settings.GetFileExtensionCount(id); ++j) {
            const char *description = nullptr;
            const char *extension = nullptr;
            if (settings.GetFileExtension(id, j, &description, &extension)) {
                const QString ending = QString::fromUtf8(extension != nullptr ? extension : "");
                option.choices.append({id, ending, shown(description, name) + QStringLiteral(" (*.%1)").arg(ending)});
            }
        }
        options.append(option);
    }
}

} // namespace

QVector<ExportOption> exportOptionsOf(const Analyzer &analyzer)
{
    QVector<ExportOption> options;
    const QString fault = pluginFault([&] { readOptions(analyzer, options); });
    return fault.isEmpty() ? options : QVector<ExportOption>();
}
