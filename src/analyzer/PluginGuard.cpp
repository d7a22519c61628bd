#include "analyzer/PluginGuard.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QUuid>

#include <utility>

namespace {

constexpr qint64 longestList = 65536; // bytes

/// From this age on, in ms, it is the system's lock on a file that decides, which ends with its owner. The process id
/// in the file tells nothing: in a container each start may have the same one.
constexpr int oldLock = 1;

/// A plug-in as it is remembered: its name, and what tells its file from another one of that name.
QString entryOf(const QString &name, const QString &path)
{
    const QFileInfo file(path);
    return QStringLiteral("%1\t%2\t%3").arg(name).arg(file.size()).arg(file.lastModified().toMSecsSinceEpoch());
}

QString nameOf(const QString &entry)
{
    return entry.section(QLatin1Char('\t'), 0, 0);
}

QString textOf(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QString::fromUtf8(file.read(longestList));
}

} // namespace

PluginGuard::PluginGuard(QString folder)
    : m_folder(std::move(folder)), m_mark(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
    if (!m_folder.isEmpty()) {
        takeCulprits();
    }
}

PluginGuard::~PluginGuard()
{
    if (m_lock) {
        QFile::remove(tryingPath());
        m_lock->unlock();
    }
}

QString PluginGuard::listPath() const
{
    return m_folder + QStringLiteral("/passed-over");
}

QString PluginGuard::tryingPath() const
{
    return QStringLiteral("%1/%2.trying").arg(m_folder, m_mark);
}

QStringList PluginGuard::entries() const
{
    return m_folder.isEmpty() ? QStringList() : textOf(listPath()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void PluginGuard::takeCulprits()
{
    const QDir folder(m_folder);
    for (const QString &trying : folder.entryList({QStringLiteral("*.trying")}, QDir::Files)) {
        const QString path = folder.filePath(trying);
        QLockFile lock(path.chopped(int(qstrlen("trying"))) + QStringLiteral("lock"));
        lock.setStaleLockTime(oldLock);
        if (!lock.tryLock(0)) {
            continue; // its guard lives
        }
        addCulprit(textOf(path).trimmed());
        QFile::remove(path);
    }
}

void PluginGuard::addCulprit(const QString &entry)
{
    QStringList list = entries();
    if (nameOf(entry).isEmpty() || list.contains(entry)) {
        return;
    }
    QSaveFile file(listPath());
    if (file.open(QIODevice::WriteOnly)) {
        list.append(entry);
        file.write(list.join(QLatin1Char('\n')).toUtf8());
        file.commit();
    }
}

QStringList PluginGuard::blocked() const
{
    QStringList names;
    for (const QString &entry : entries()) {
        names.append(nameOf(entry));
    }
    names.removeDuplicates();
    return names;
}

bool PluginGuard::isBlocked(const QString &name, const QString &path) const
{
    return entries().contains(entryOf(name, path));
}

void PluginGuard::retry(const QString &name)
{
    if (m_folder.isEmpty()) {
        return; // nothing is remembered
    }
    QStringList kept;
    for (const QString &entry : entries()) {
        if (nameOf(entry) != name) {
            kept.append(entry);
        }
    }
    QSaveFile file(listPath());
    if (file.open(QIODevice::WriteOnly)) {
        file.write(kept.join(QLatin1Char('\n')).toUtf8());
        file.commit();
    }
}

bool PluginGuard::makeReady()
{
    if (m_folder.isEmpty()) {
        return false;
    }
    if (!m_lock) {
        QDir().mkpath(m_folder);
        m_lock = std::make_unique<QLockFile>(QStringLiteral("%1/%2.lock").arg(m_folder, m_mark));
        m_lock->tryLock(0);
    }
    return m_lock->isLocked();
}

void PluginGuard::begin(const QString &name, const QString &path)
{
    if (m_depth++ > 0 || !makeReady()) {
        return;
    }
    QFile file(tryingPath());
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        file.write(entryOf(name, path).toUtf8());
    }
}

void PluginGuard::end()
{
    if (--m_depth > 0 || !m_lock) {
        return;
    }
    QFile::resize(tryingPath(), 0);
}
