#pragma once

#include <QProcess>
#include <QStandardPaths>
#include <QString>

#include <optional>
#include <string>

// Files are read back by modules of Python that others made.

namespace pythonReader {

/// What a script says of a file.
/// @param module  is imported before @param script  the file is sys.argv[1]
/// @return without line ends and doubled spaces; nothing when Python or the module is not installed
inline std::optional<std::string> read(const char *module, const char *script, const QString &path)
{
    constexpr int notThere = 77;
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty()) {
        return std::nullopt;
    }
    const QString begin = QStringLiteral("import sys\ntry:\n    import %1\nexcept ImportError:\n    sys.exit(%2)\n");
    QProcess reader;
    reader.start(python,
                 {QStringLiteral("-c"), begin.arg(QLatin1String(module)).arg(notThere) + QLatin1String(script), path});
    if (reader.waitForFinished() && reader.exitCode() == notThere) {
        return std::nullopt;
    }
    const QByteArray said = reader.exitCode() == 0 ? reader.readAllStandardOutput() : reader.readAllStandardError();
    return QString::fromLatin1(said).simplified().toStdString();
}

} // namespace pythonReader
