#pragma once

#include "analyzer/PluginFolder.h"
#include "analyzer/PluginGuard.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

/// The plug-ins that were found, and how instances of them are made and given up, whatever they do meanwhile. Main
/// thread.
class AnalyzerLibraries {
public:
    /// Scans the folders. @param guardFolder  where culprits are remembered; empty for nowhere
    AnalyzerLibraries(const QStringList &folders, const QString &guardFolder);

    /// In the order in which they were found. Never changes.
    [[nodiscard]] const QVector<AnalyzerLib> &all() const { return m_found.libraries; }
    [[nodiscard]] const QVector<PluginFolder::Refusal> &refusals() const { return m_found.refusals; }
    [[nodiscard]] bool has(int library) const { return library >= 0 && library < all().size(); }
    /// That of a stored name, in these very letters; null for none.
    [[nodiscard]] const AnalyzerLib *named(const QString &fileName) const;
    /// Forgets that the program died with it.
    void retry(const QString &fileName) { m_guard.retry(fileName); }

    /// A new instance with settings. @param fault  why there is none, for the user
    /// @return null when the plug-in fails
    [[nodiscard]] std::unique_ptr<Analyzer> make(const AnalyzerLib &lib, QString &fault);
    /// By the plug-in's own entry point. @param analyzer  may be null
    static void destroy(const AnalyzerLib &lib, Analyzer *analyzer);

private:
    PluginGuard m_guard;
    const PluginFolder::Scan m_found;
};
