#include "analyzer/AnalyzerLibraries.h"

#include "analyzer/PluginCall.h"
#include "settings/Language.h"

#include <algorithm>

AnalyzerLibraries::AnalyzerLibraries(const QStringList &folders, const QString &guardFolder)
    : m_guard(guardFolder), m_found(PluginFolder::scan(folders, m_guard))
{}

const AnalyzerLib *AnalyzerLibraries::named(const QString &fileName) const
{
    const auto found = std::find_if(all().cbegin(), all().cend(),
                                    [&fileName](const AnalyzerLib &lib) { return lib.fileName == fileName; });
    return found != all().cend() ? &*found : nullptr;
}

std::unique_ptr<Analyzer> AnalyzerLibraries::make(const AnalyzerLib &lib, QString &fault)
{
    const PluginTrial trial(m_guard, lib.fileName, lib.path);
    Analyzer *made = nullptr;
    fault = pluginFault([&] { made = lib.createAnalyzer(); });
    if (fault.isEmpty() && (made == nullptr || made->GetAnalyzerSettings() == nullptr)) {
        fault = ::tr("The decoder could not be made.");
    }
    if (fault.isEmpty()) {
        return std::unique_ptr<Analyzer>(made);
    }
    destroy(lib, made);
    return nullptr;
}

void AnalyzerLibraries::destroy(const AnalyzerLib &lib, Analyzer *analyzer)
{
    if (analyzer != nullptr) {
        (void)pluginFault([&] { lib.destroyAnalyzer(analyzer); });
    }
}
