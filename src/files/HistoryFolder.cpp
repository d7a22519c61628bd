#include "files/HistoryFolder.h"

#include "files/DataBlocks.h"
#include "settings/Config.h"
#include "settings/FileReplacement.h"
#include "store/SmpData.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <optional>
#include <span>

namespace {

constexpr int nameTimeSize = 19; // characters
constexpr int sameNamesMost = 1000;
constexpr int pictureFileLimit = 4096;           // bytes
constexpr qint64 leftPartAge = 3600;             // seconds: a program that still writes touches its part
constexpr const char *const partEnding = "part"; // of FileReplacement

QString timeFormat()
{
    return QStringLiteral("yyyyMMdd-hhmmss-zzz");
}

/// Time, model and the rest of a capture's name.
const QRegularExpression &namePattern()
{
    static const QRegularExpression pattern(QStringLiteral(R"(^(\d{8}-\d{6}-\d{3})_([A-Za-z0-9-]*)_[0-9-]+\.cxdat$)"));
    return pattern;
}

QString picturePath(const QString &path)
{
    return path.left(path.size() - QFileInfo(path).suffix().size()) + QStringLiteral("txt");
}

/// The letters of a model that may stand in a file's name.
QString plainModel(const QString &model)
{
    QString plain = model;
    return plain.remove(QRegularExpression(QStringLiteral("[^A-Za-z0-9-]")));
}

PictureRow rowOf(const SmpData &data, int chn)
{
    PictureRow row;
    std::array<SmpWaveRun, pictureColumns> runs{};
    const double step = double(data.smpCount()) / pictureColumns;
    const int count = data.waveRuns(chn, 0.0, step, pictureColumns, runs.data());
    for (int i = 0; i < count; ++i) {
        const SmpWaveRun &run = runs[std::size_t(i)];
        const char kind = run.kind == 2 ? 'x' : run.kind == 1 ? '1' : '0';
        row.append(QByteArray(std::clamp(run.x + run.width - row.size(), 0, pictureColumns - row.size()), kind));
    }
    const char end = row.isEmpty() ? '0' : row.back(); // the column of the capture's end is none of its line
    return row.leftJustified(pictureColumns, end);
}

bool isPictureRow(const QByteArray &row)
{
    return row.size() == pictureColumns &&
           std::all_of(row.begin(), row.end(), [](char c) { return c == '0' || c == '1' || c == 'x'; });
}

QVector<PictureRow> readPicture(const QString &path)
{
    QVector<PictureRow> rows;
    QFile file(picturePath(path));
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) { // as it was written
        return rows;
    }
    for (const QByteArray &line : file.read(pictureFileLimit).split('\n')) {
        if (isPictureRow(line) && rows.size() < pictureRowsMost) {
            rows.append(line);
        }
    }
    return rows;
}

/// What the file's head tells. @return nothing for a file that is none of ours, or gone
std::optional<DataFileHead> headOf(const QString &path)
{
    QByteArray settings;
    if (!configHeadOfFile(path, settings)) {
        return {};
    }
    QFile file(path);
    std::array<std::uint8_t, DataFileHead::size> bytes{};
    DataFileHead head;
    if (!file.open(QIODevice::ReadOnly) || !file.seek(settings.size()) ||
        file.read(reinterpret_cast<char *>(bytes.data()), DataFileHead::size) != DataFileHead::size ||
        !decodeFileHead(std::span<const std::uint8_t, DataFileHead::size>(bytes), head)) {
        return {};
    }
    return head;
}

void removeCapture(const QString &path)
{
    QFile::remove(path);
    QFile::remove(picturePath(path));
}

} // namespace

QVector<PictureRow> pictureOf(const SmpData &data)
{
    QVector<int> chosen;
    for (const bool withEdges : {true, false}) {
        for (int chn = 0; chn < data.chnCount && chosen.size() < pictureRowsMost; ++chn) {
            const std::int64_t entries = data.entryCount(chn); // the last one is the end mark
            if (entries > 0 && (entries > 1) == withEdges) {
                chosen.append(chn);
            }
        }
    }
    std::sort(chosen.begin(), chosen.end());
    QVector<PictureRow> rows;
    for (const int chn : chosen) {
        rows.append(rowOf(data, chn));
    }
    return rows;
}

HistoryFolder::HistoryFolder(const QString &path) : m_path(path) {}

QString HistoryFolder::standardPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/corvan/history");
}

bool HistoryFolder::make() const
{
    if (QFileInfo(m_path).isDir()) {
        return true;
    }
    if (!QDir().mkpath(m_path)) {
        return false;
    }
    QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return true;
}

QString HistoryFolder::newPath(const QDateTime &time, const QString &model) const
{
    const QString begin = QStringLiteral("%1/%2_%3_%4")
                              .arg(m_path, time.toUTC().toString(timeFormat()), plainModel(model),
                                   QString::number(QCoreApplication::applicationPid()));
    QString path = begin + QStringLiteral(".cxdat");
    for (int number = 1; QFileInfo::exists(path) && number < sameNamesMost; ++number) {
        path = QStringLiteral("%1-%2.cxdat").arg(begin, QString::number(number));
    }
    return path;
}

QStringList HistoryFolder::namesNewestFirst() const
{
    QStringList names = QDir(m_path).entryList({QStringLiteral("*.cxdat")}, QDir::Files | QDir::NoSymLinks);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const QString &name) { return !namePattern().match(name).hasMatch(); }),
                names.end());
    std::sort(names.begin(), names.end(), [](const QString &a, const QString &b) { return a > b; });
    return names;
}

QVector<HistoryEntry> HistoryFolder::list() const
{
    QVector<HistoryEntry> entries;
    for (const QString &name : namesNewestFirst()) {
        const QString path = m_path + QLatin1Char('/') + name;
        const std::optional<DataFileHead> head = headOf(path);
        QDateTime time = QDateTime::fromString(name.left(nameTimeSize), timeFormat());
        time.setTimeSpec(Qt::UTC);
        if (head && time.isValid()) {
            entries.append({path, time, namePattern().match(name).captured(2), head->smpCount, head->smpFrequ,
                            QFileInfo(path).size(), readPicture(path)});
        }
    }
    return entries;
}

void HistoryFolder::putPicture(const QString &path, const QVector<PictureRow> &rows) const
{
    QByteArray text;
    for (const PictureRow &row : rows) {
        text += row + '\n';
    }
    static_cast<void>(replaceTextFile(picturePath(path), text));
}

void HistoryFolder::tidy(const HistoryLimits &limits) const
{
    std::int64_t bytes = 0;
    int captures = 0;
    for (const QString &name : namesNewestFirst()) {
        const QString path = m_path + QLatin1Char('/') + name;
        bytes += QFileInfo(path).size();
        ++captures;
        if (captures > 1 && (captures > limits.captures || bytes > limits.bytes)) {
            removeCapture(path);
        }
    }
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QFileInfo &file : QDir(m_path).entryInfoList(QDir::Files)) {
        const bool isLeft =
            file.suffix() == QLatin1String(partEnding) ||
            (file.suffix() == QLatin1String("txt") &&
             !QFileInfo::exists(m_path + QLatin1Char('/') + file.completeBaseName() + QStringLiteral(".cxdat")));
        if (isLeft && file.lastModified().secsTo(now) > leftPartAge) {
            QFile::remove(file.filePath());
        }
    }
}
