#include "settings/FileReplacement.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

constexpr int linkLimit = 40;        ///< as many links in a row as Linux follows
constexpr int nameLimit = 200;       ///< bytes: with the tail below the 255 of the usual file systems
constexpr int leftPartsLimit = 1000; ///< parts of killed programs that are stepped over

/// What all links from `path` on lead to, whether it exists or not. A ring of links leads to one of them.
QString behindLinks(QString path)
{
    for (int i = 0; i < linkLimit; ++i) {
        const QString target = QFileInfo(path).symLinkTarget();
        const bool isMagic = !QFileInfo::exists(target) && QFileInfo::exists(path); // an open file below /proc
        if (target.isEmpty() || isMagic) {
            break;
        }
        path = target;
    }
    return path;
}

std::filesystem::path nativePath(const QString &path)
{
#ifdef Q_OS_WIN
    return {path.toStdWString()};
#else
    return {QFile::encodeName(path).toStdString()};
#endif
}

WriteFault faultOfErrno(int code)
{
    switch (code) {
    case ENOSPC:
    case EFBIG:
#ifdef EDQUOT
    case EDQUOT:
#endif
        return WriteFault::DiskFull;
    case EACCES:
    case EPERM:
    case EROFS:
        return WriteFault::NoRights;
    case ENOENT:
    case ENOTDIR:
        return WriteFault::NoFolder;
    default:
        return WriteFault::Other;
    }
}

/// Gives the new file what the old one had.
void takeOverAccess(QFile &part, const QString &target)
{
    QFile::Permissions mode = QFile::permissions(target);
#ifndef Q_OS_WIN
    struct stat old {};
    if (stat(QFile::encodeName(target).constData(), &old) == 0) {
        // The owner may not be given away, but the group may be another one of the user's. The mode comes last, since a
        // change of owner clears parts of it.
        const bool groupStays = fchown(part.handle(), static_cast<uid_t>(-1), old.st_gid) == 0;
        if (fchown(part.handle(), old.st_uid, static_cast<gid_t>(-1)) != 0) {
            errno = 0; // the file is the user's from now on
        }
        if (!groupStays) {
            // What one group may do is not for another one to do.
            mode.setFlag(QFile::ReadGroup, mode.testFlag(QFile::ReadOther));
            mode.setFlag(QFile::WriteGroup, mode.testFlag(QFile::WriteOther));
            mode.setFlag(QFile::ExeGroup, mode.testFlag(QFile::ExeOther));
        }
    }
#endif
    part.setPermissions(mode);
}

/// Makes the new name last over a loss of power. Where a folder cannot be synced there is nothing to do about it.
void syncFolder(const QString &folder)
{
#ifdef Q_OS_WIN
    Q_UNUSED(folder)
#else
    const int handle = open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle >= 0) {
        fsync(handle);
        close(handle);
    }
#endif
}

} // namespace

bool writeWhole(QIODevice &device, const char *bytes, qint64 size)
{
    while (size > 0) {
        const qint64 count = device.write(bytes, size);
        if (count <= 0) {
            return false;
        }
        bytes += count;
        size -= count;
    }
    return true;
}

WriteFault writeFaultOf(QFileDevice &file)
{
    if (file.error() == QFileDevice::WriteError) {
        file.unsetError();
        (void)file.flush();
    }
    switch (file.error()) {
    case QFileDevice::ResourceError:
        return WriteFault::DiskFull;
    case QFileDevice::PermissionsError:
        return WriteFault::NoRights;
    default:
        return WriteFault::Other;
    }
}

WriteFault syncToDisk(QFileDevice &file)
{
    if (!file.flush()) {
        return writeFaultOf(file);
    }
    int done = 0;
    do {
#ifdef Q_OS_WIN
        done = _commit(file.handle());
#else
        done = fsync(file.handle());
#endif
    } while (done != 0 && errno == EINTR);
    if (done == 0 || errno == EINVAL || errno == ENOTSUP) {
        return WriteFault::None;
    }
    return faultOfErrno(errno);
}

FileReplacement::FileReplacement(const QString &path, const QString &partEnding)
    : m_target(path.isEmpty() ? path : behindLinks(path)), m_partEnding(partEnding)
{}

FileReplacement::~FileReplacement()
{
    drop();
}

WriteFault FileReplacement::begin()
{
    const QFileInfo target(m_target);
    if (m_target.isEmpty() || target.fileName().isEmpty()) {
        return target.isDir() ? WriteFault::NotPlain : WriteFault::NoFolder;
    }
    if (target.isSymLink() || (target.exists() && !target.isFile())) { // a ring of links ends in a link
        return WriteFault::NotPlain;
    }
    if (!QFileInfo(target.absolutePath()).isDir()) {
        return WriteFault::NoFolder;
    }
    if (target.exists() && !target.isWritable()) {
        return WriteFault::NoRights;
    }
    return makePart(target.absolutePath(), target.fileName());
}

WriteFault FileReplacement::makePart(const QString &folder, const QString &fileName)
{
    QString name = fileName;
    while (QFile::encodeName(name).size() > nameLimit) {
        name.chop(name.size() > 1 && name.at(name.size() - 1).isLowSurrogate() ? 2 : 1);
    }
    for (int number = 0; number < leftPartsLimit; ++number) {
        const QString path = QStringLiteral("%1/%2.%3-%4%5")
                                 .arg(folder, name, QString::number(QCoreApplication::applicationPid()),
                                      QString::number(number), m_partEnding);
        QFile part(path);
        if (part.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            m_part = path;
            if (QFile::exists(m_target)) {
                takeOverAccess(part, m_target);
            }
            return WriteFault::None;
        }
        const int code = errno;
        if (!QFileInfo::exists(path) && !QFileInfo(path).isSymLink()) {
            const WriteFault fault = faultOfErrno(code);
            return fault == WriteFault::Other && !QFileInfo(folder).isWritable() ? WriteFault::NoRights : fault;
        }
    }
    return WriteFault::Other;
}

WriteFault FileReplacement::finish()
{
    QFile part(m_part);
    WriteFault fault = WriteFault::Other;
    if (!m_part.isEmpty() && part.open(QIODevice::ReadWrite | QIODevice::ExistingOnly)) {
        fault = syncToDisk(part);
        part.close();
    }
    if (fault == WriteFault::None) {
        std::error_code error;
        std::filesystem::rename(nativePath(m_part), nativePath(m_target), error);
        if (!error) {
            m_part.clear();
            syncFolder(QFileInfo(m_target).absolutePath());
            return WriteFault::None;
        }
        fault = faultOfErrno(error.default_error_condition().value());
    }
    drop();
    return fault;
}

void FileReplacement::keepPart()
{
    const QFileInfo target(m_target);
    if (!target.exists() && !target.isSymLink() && QFileInfo(m_part).size() > 0 && QFile::rename(m_part, m_target)) {
        m_part.clear();
    }
    drop();
}

void FileReplacement::drop()
{
    if (!m_part.isEmpty()) {
        QFile::remove(std::exchange(m_part, QString()));
    }
}

WriteFault replaceTextFile(const QString &path, const QByteArray &text)
{
    FileReplacement target(path);
    const WriteFault begun = target.begin();
    if (begun != WriteFault::None) {
        return begun;
    }
    QFile file(target.partPath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        return writeFaultOf(file);
    }
    if (file.write(text) != text.size() || !file.flush()) {
        return writeFaultOf(file);
    }
    file.close();
    return target.finish();
}
