// With libzip. Without it SrArchiveNone.cpp takes this file's place.

#include "files/SrArchive.h"

#include "files/Deflate.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <zip.h>

struct SrArchive::Handles {
    zip_t *archive = nullptr;
    zip_file_t *entry = nullptr;
};

namespace {

/// The bytes of the list of entries, as the end of the archive tells (APPNOTE.TXT 6.3.10, section 4.3.16).
/// @return -1 for a file that has no such end
std::int64_t directorySize(QFile &file)
{
    constexpr qint64 endSize = 22;
    constexpr qint64 endMax = endSize + 65535; // with a comment
    const qint64 take = std::min(file.size(), endMax);
    if (!file.seek(file.size() - take)) {
        return -1;
    }
    const QByteArray tail = file.read(take);
    const int at = tail.lastIndexOf(QByteArray("PK\5\6"), int(std::max<qint64>(take - endSize, 0)));
    const bool isThere = at >= 0 && tail.size() - at >= endSize;
    return isThere ? std::int64_t(qFromLittleEndian<quint32>(tail.constData() + at + 12)) : -1;
}

bool leadsOut(const QByteArray &name)
{
    return name.startsWith('/') || name.contains('\\') || name.mid(1, 1) == ":" || name == ".." ||
           name.startsWith("../") || name.contains("/../") || name.endsWith("/..");
}

QString shown(const QByteArray &name)
{
    QString text = QString::fromUtf8(name.left(80));
    for (QChar &c : text) {
        c = c.isPrint() ? c : QLatin1Char('?');
    }
    return text;
}

} // namespace

bool SrArchive::isBuilt()
{
    return true;
}

SrArchive::SrArchive(const QString &path) : m_handles(std::make_unique<Handles>())
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = QStringLiteral("it cannot be opened");
        return;
    }
    const std::int64_t directory = directorySize(file);
    if (directory < 0 || directory > directoryMax) {
        m_error = directory < 0 ? QStringLiteral("it is no whole archive")
                                : QStringLiteral("a list of %1 bytes is too long").arg(directory);
        return;
    }
    int code = 0;
    m_handles->archive = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY, &code);
    if (m_handles->archive == nullptr) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        m_error = QString::fromUtf8(zip_error_strerror(&error));
        zip_error_fini(&error);
        return;
    }
    static_cast<void>(listEntries(file.size())); // told by error()
}

SrArchive::~SrArchive()
{
    if (m_handles->entry != nullptr) {
        zip_fclose(m_handles->entry);
    }
    if (m_handles->archive != nullptr) {
        zip_discard(m_handles->archive);
    }
}

bool SrArchive::fail(const QByteArray &entry, const QString &what)
{
    m_error = shown(entry) + QStringLiteral(": ") + what;
    return false;
}

bool SrArchive::listEntries(std::int64_t fileSize)
{
    const zip_int64_t count = zip_get_num_entries(m_handles->archive, 0);
    std::uint64_t packed = 0;
    for (zip_int64_t i = 0; i < count; ++i) {
        zip_stat_t stat;
        constexpr zip_uint64_t needed = ZIP_STAT_NAME | ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE;
        if (zip_stat_index(m_handles->archive, zip_uint64_t(i), 0, &stat) != 0 || (stat.valid & needed) != needed) {
            return fail(QByteArray("entry ") + QByteArray::number(qlonglong(i)), QStringLiteral("it cannot be read"));
        }
        const QByteArray name(stat.name);
        if (leadsOut(name)) {
            return fail(name, QStringLiteral("this name leads out of the archive"));
        }
        constexpr zip_uint64_t sizeMax = zip_uint64_t(1) << 60;
        if (stat.size > sizeMax || stat.comp_size > std::uint64_t(fileSize)) {
            return fail(name, QStringLiteral("its size cannot be"));
        }
        packed += stat.comp_size;
        if (packed > std::uint64_t(fileSize)) {
            return fail(name, QStringLiteral("the entries overlap"));
        }
        Entry entry{name, zip_uint64_t(i), std::int64_t(stat.size)};
        constexpr zip_uint64_t neededAtOnce = ZIP_STAT_COMP_METHOD | ZIP_STAT_CRC | ZIP_STAT_ENCRYPTION_METHOD;
        if (Deflate::isBuilt() && (stat.valid & neededAtOnce) == neededAtOnce && stat.comp_method == ZIP_CM_DEFLATE &&
            stat.encryption_method == ZIP_EM_NONE && std::max(stat.size, stat.comp_size) <= Deflate::blockMax) {
            entry.packed = std::int64_t(stat.comp_size);
            entry.checksum = stat.crc;
        }
        m_entries.push_back(entry);
    }
    return true;
}

bool SrArchive::readSmall(const char *name, std::int64_t most, QByteArray &bytes)
{
    const auto entry =
        std::find_if(m_entries.begin(), m_entries.end(), [name](const Entry &one) { return one.name == name; });
    if (entry == m_entries.end()) {
        return fail(name, QStringLiteral("it is missing"));
    }
    if (entry->size > most) {
        return fail(name, QStringLiteral("%1 bytes are too many").arg(entry->size));
    }
    bytes.resize(int(entry->size));
    return open(*entry) && read({reinterpret_cast<std::uint8_t *>(bytes.data()), std::size_t(bytes.size())}) >= 0;
}

bool SrArchive::open(const Entry &entry)
{
    if (m_handles->entry != nullptr) {
        zip_fclose(m_handles->entry);
    }
    m_open = entry.name;
    m_left = entry.size;
    m_block.clear();
    m_handles->entry = zip_fopen_index(m_handles->archive, entry.index, entry.packed > 0 ? ZIP_FL_COMPRESSED : 0);
    if (m_handles->entry == nullptr) {
        return fail(m_open, QString::fromUtf8(zip_strerror(m_handles->archive)));
    }
    return entry.packed == 0 || unpack(entry);
}

bool SrArchive::unpack(const Entry &entry)
{
    std::vector<std::uint8_t> packed(std::size_t(entry.packed));
    const std::int64_t got = readFromLibrary(packed);
    if (got < 0) {
        return false;
    }
    m_block.resize(std::size_t(entry.size));
    if (got != entry.packed || !Deflate::unpack(packed, m_block)) {
        return fail(m_open, QStringLiteral("it cannot be unpacked, or is not as long as the archive tells"));
    }
    return Deflate::checksum(m_block) == entry.checksum || fail(m_open, QStringLiteral("its checksum is another"));
}

std::int64_t SrArchive::readFromLibrary(std::span<std::uint8_t> bytes)
{
    std::int64_t got = 0;
    while (got < std::int64_t(bytes.size())) {
        const zip_int64_t more = zip_fread(m_handles->entry, bytes.data() + got, bytes.size() - std::size_t(got));
        if (more < 0) {
            fail(m_open, QString::fromUtf8(zip_file_strerror(m_handles->entry)));
            return -1;
        }
        if (more == 0) {
            break;
        }
        got += more;
    }
    return got;
}

std::int64_t SrArchive::read(std::span<std::uint8_t> bytes)
{
    if (!m_block.empty()) {
        const std::int64_t take = std::min(m_left, std::int64_t(bytes.size()));
        std::copy_n(m_block.end() - m_left, take, bytes.begin());
        m_left -= take;
        return take;
    }
    const std::int64_t got = readFromLibrary(bytes);
    if (got < 0) {
        return got;
    }
    m_left -= got;
    if (m_left < 0 || (m_left > 0 && got < std::int64_t(bytes.size()))) {
        fail(m_open, QStringLiteral("it is not as long as the archive tells"));
        return -1;
    }
    return got;
}
