#pragma once

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <string>

/// Packet captures as the field's own reader sees them.
namespace pcapFields {

/// @return where tshark is, empty where it is not installed
inline QString reader()
{
    return QStandardPaths::findExecutable(QStringLiteral("tshark"));
}

/// The fields of each packet by the names that tshark gives them, a line each, parted by tabs.
inline QStringList read(const std::string &pcap, const QStringList &names)
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("read.pcap")));
    if (!file.open(QIODevice::WriteOnly)) {
        return {};
    }
    file.write(pcap.data(), qint64(pcap.size()));
    file.close();
    QStringList arguments = {QStringLiteral("-r"), file.fileName(), QStringLiteral("-T"), QStringLiteral("fields")};
    for (const QString &name : names) {
        arguments << QStringLiteral("-e") << name;
    }
    QProcess process;
    process.start(reader(), arguments);
    if (!process.waitForFinished()) {
        return {};
    }
    return QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace pcapFields
