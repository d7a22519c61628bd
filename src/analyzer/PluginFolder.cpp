#include "analyzer/PluginFolder.h"

#include "analyzer/PluginCall.h"
#include "analyzer/PluginGuard.h"
#include "settings/Config.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QSet>

#include <algorithm>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace PluginFolder {

namespace {

#if defined(Q_OS_WIN)
const QLatin1String diskSuffix(".dll");
#elif defined(Q_OS_MACOS)
const QLatin1String diskSuffix(".dylib");
#else
const QLatin1String diskSuffix(".so");
#endif

#if defined(Q_OS_WIN)
constexpr Qt::CaseSensitivity fileNameCase = Qt::CaseInsensitive; // "SPI.DLL" is a library too
#else
constexpr Qt::CaseSensitivity fileNameCase = Qt::CaseSensitive;
#endif

/// The entry points of a loaded file. @return empty, or which is missing
QString resolve(QLibrary &file, AnalyzerLib &lib)
{
    lib.createAnalyzer = reinterpret_cast<AnalyzerLib::Create>(file.resolve("CreateAnalyzer"));
    lib.destroyAnalyzer = reinterpret_cast<AnalyzerLib::Destroy>(file.resolve("DestroyAnalyzer"));
    lib.getAnalyzerName = reinterpret_cast<AnalyzerLib::Name>(file.resolve("GetAnalyzerName"));
    if (lib.createAnalyzer == nullptr || lib.destroyAnalyzer == nullptr || lib.getAnalyzerName == nullptr) {
        return QStringLiteral("it lacks an entry point of a decoder");
    }
    return {};
}

/// What the plug-in tells of itself. @return empty, or what went wrong
QString ask(QLibrary &file, AnalyzerLib &lib)
{
    QString models;
    QString fault = pluginFault([&] {
        const char *name = lib.getAnalyzerName();
        lib.displayName = QString::fromUtf8(name != nullptr ? name : "");
        const auto list = reinterpret_cast<AnalyzerLib::Name>(file.resolve("GetParaInfoList"));
        const char *codes = list != nullptr ? list() : nullptr;
        models = QString::fromLatin1(codes != nullptr ? codes : "");
    });
    if (fault.isEmpty() && lib.displayName.isEmpty()) {
        return QStringLiteral("it has no name");
    }
    lib.supportedModels = modelCodes(models);
    return fault;
}

/// Loads one file. @return empty, or why it is no plug-in
QString load(const QString &path, AnalyzerLib &lib)
{
    lib.path = path;
    QString reason = distrust(path);
    if (!reason.isEmpty()) {
        return reason;
    }
    QLibrary file(path); // its end does not unload the file
    if (!file.load()) {
        return file.errorString();
    }
    reason = resolve(file, lib);
    return reason.isEmpty() ? ask(file, lib) : reason;
}

/// Whether a name comes back from the stored lists as it was: ";" and "," part these, and what is read is trimmed.
bool canBeStored(const QString &fileName)
{
    return fileName == fileName.trimmed() && std::none_of(fileName.cbegin(), fileName.cend(), [](QChar c) {
               return c == QLatin1Char(';') || c == QLatin1Char(',') || c.category() == QChar::Other_Control;
           });
}

void scanFolder(const QString &folder, PluginGuard &guard, QSet<QString> &names, Scan &result)
{
    const QDir dir(folder);
    const QStringList files = dir.entryList({QLatin1Char('*') + diskSuffix}, QDir::Files, QDir::Name);
    const QString reason = files.isEmpty() ? QString() : distrust(dir.absolutePath());
    const QString notStored = QStringLiteral(
        "its name cannot be stored: it holds a \";\", a \",\" or a control character, or begins with a blank");
    for (const QString &file : files) {
        AnalyzerLib lib;
        lib.fileName = storedName(file);
        if (lib.fileName.isEmpty()) {
            continue; // the pattern of the folder knows no case
        }
        const QString path = dir.absoluteFilePath(file);
        if (!reason.isEmpty()) {
            result.refusals.append({lib.fileName, reason, false});
        } else if (!canBeStored(lib.fileName)) {
            result.refusals.append({lib.fileName, notStored, false});
        } else if (names.contains(lib.fileName)) {
            result.refusals.append({lib.fileName, QStringLiteral("another folder has one of this name"), false});
        } else if (guard.isBlocked(lib.fileName, path)) {
            result.refusals.append({lib.fileName, QStringLiteral("the program ended while it was tried"), true});
        } else {
            const PluginTrial trial(guard, lib.fileName, path);
            const QString fault = load(path, lib);
            if (fault.isEmpty()) {
                names.insert(lib.fileName);
                result.libraries.append(lib);
            } else {
                result.refusals.append({lib.fileName, fault, false});
            }
        }
    }
}

} // namespace

QStringList standardFolders()
{
    return {QCoreApplication::applicationDirPath() + QStringLiteral("/Analyzer/"),
            QFileInfo(configPath()).path() + QStringLiteral("/Analyzer/")};
}

QString standardGuardFolder()
{
    return QFileInfo(configPath()).path() + QStringLiteral("/Analyzer.tried");
}

QString storedName(const QString &diskName)
{
    if (!diskName.endsWith(diskSuffix, fileNameCase)) {
        return {};
    }
    return diskName.chopped(diskSuffix.size()) + QStringLiteral(".dll");
}

QVector<int> modelCodes(const QString &list)
{
    QVector<int> codes;
    for (const QString &part : list.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        codes.append(part.trimmed().toInt());
    }
    return codes;
}

QString distrust(const QString &path)
{
#ifdef Q_OS_UNIX
    const QFileInfo file(path); // follows links
    const bool own = file.ownerId() == 0 || file.ownerId() == geteuid();
    // The group of the user's own is as good as the user.
    const bool group = file.permission(QFile::WriteGroup) && file.groupId() != 0 && file.groupId() != getegid();
    if (!own || group || file.permission(QFile::WriteOther)) {
        return QStringLiteral("others may write to %1").arg(file.absoluteFilePath());
    }
#else
    // There a folder outside of the user's own and of "Program Files" lets everybody who is signed in change it, by its
    // default rights, and a stick has no rights at all: to refuse these would take the decoders from a program that was
    // unpacked there, which lies as open as they do. The user's data folder, the other one, is the user's alone.
    Q_UNUSED(path)
#endif
    return {};
}

Scan scan(const QStringList &folders, PluginGuard &guard)
{
    Scan result;
    QSet<QString> names;
    for (const QString &folder : folders) {
        scanFolder(folder, guard, names, result);
    }
    return result;
}

} // namespace PluginFolder
