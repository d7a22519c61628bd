#pragma once

#include "corvanlux/analyzer/Decoder.h"

#include <QDir>
#include <QFileInfo>
#include <QLibrary>

#include <memory>
#include <string>
#include <vector>

/// A decoder as the program finds it: a file with entry points. The file stays loaded.
struct PluginFile {
    std::string name; ///< of the file, without its ending
    Analyzer *(*create)() = nullptr;
    void (*destroy)(Analyzer *) = nullptr;
    const char *(*displayName)() = nullptr;
    const char *(*models)() = nullptr;

    [[nodiscard]] std::unique_ptr<Analyzer> make() const { return std::unique_ptr<Analyzer>(create()); }
};

/// All files of the system's kind in a folder, by their names. What cannot be loaded has no entry points.
inline std::vector<PluginFile> pluginsIn(const QString &folder)
{
#ifdef Q_OS_WIN
    const QString ending = QStringLiteral("*.dll");
#else
    const QString ending = QStringLiteral("*.so");
#endif
    std::vector<PluginFile> all;
    for (const QFileInfo &file : QDir(folder).entryInfoList({ending}, QDir::Files, QDir::Name)) {
        QLibrary library(file.absoluteFilePath());
        PluginFile plugin{.name = file.completeBaseName().toStdString()};
        if (library.load()) {
            plugin.create = reinterpret_cast<Analyzer *(*)()>(library.resolve("CreateAnalyzer"));
            plugin.destroy = reinterpret_cast<void (*)(Analyzer *)>(library.resolve("DestroyAnalyzer"));
            plugin.displayName = reinterpret_cast<const char *(*)()>(library.resolve("GetAnalyzerName"));
            plugin.models = reinterpret_cast<const char *(*)()>(library.resolve("GetParaInfoList"));
        }
        all.push_back(plugin);
    }
    return all;
}
