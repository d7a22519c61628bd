#pragma once

#include "analyzer/AnalyzerLib.h"

#include <QStringList>
#include <QVector>

class PluginGuard;

/// Finds the plug-ins of some folders and loads them. Main thread.
namespace PluginFolder {

/// A file that is no plug-in, or was not let in.
struct Refusal {
    QString fileName; ///< stored name
    QString reason;   ///< for the user, in English
    bool passedOver;  ///< the program died with it once
};

struct Scan {
    QVector<AnalyzerLib> libraries; ///< folder by folder, by name within each
    QVector<Refusal> refusals;
};

/// The folders that are looked at: "Analyzer" beside the program, then "Analyzer" in the user's data folder, where the
/// configuration is. A name that an earlier one has wins.
[[nodiscard]] QStringList standardFolders();
/// Where PluginGuard remembers: in the user's data folder.
[[nodiscard]] QString standardGuardFolder();

/// The name under which a file is stored: with ".dll" on every system. Empty for a file of another system's kind.
[[nodiscard]] QString storedName(const QString &diskName);
/// The model codes of GetParaInfoList: decimal numbers between commas; empty parts are left out, no number is 0.
[[nodiscard]] QVector<int> modelCodes(const QString &list);
/// Why a folder or file must not be trusted: others than the user and the system may write to it. Empty if it may, and
/// on Windows always.
[[nodiscard]] QString distrust(const QString &path);

/// Loads what is in the folders. Never throws; a file that is not let in is told in the result alone. A file that was
/// loaded and lacks an entry point stays loaded. Cost: about a millisecond a plug-in.
[[nodiscard]] Scan scan(const QStringList &folders, PluginGuard &guard);

} // namespace PluginFolder
