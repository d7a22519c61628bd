#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

/// A zip archive that is read, with what makes one of a stranger harmless. Private to this folder.
///
/// Refused are archives whose list of entries is longer than directoryMax, whose entries overlap (their packed sizes
/// are more than the file), and those with a name that is absolute or leads out of a folder, though nothing is ever
/// unpacked to a name of the archive. One thread at a time.
class SrArchive {
public:
    static constexpr std::int64_t directoryMax = std::int64_t(6) << 20; ///< bytes

    struct Entry {
        QByteArray name;
        std::uint64_t index = 0;
        std::int64_t size = 0;      ///< bytes, unpacked, as the archive tells
        std::int64_t packed = 0;    ///< bytes in the file, of a deflated entry that is unpacked at once; else 0
        std::uint32_t checksum = 0; ///< of such a one
    };

    /// False for a build without the library: opening then always fails.
    [[nodiscard]] static bool isBuilt();

    explicit SrArchive(const QString &path);
    ~SrArchive();
    SrArchive(const SrArchive &) = delete;
    SrArchive &operator=(const SrArchive &) = delete;

    /// Why the last operation failed, with the entry's name; empty if none did.
    [[nodiscard]] const QString &error() const { return m_error; }
    [[nodiscard]] const std::vector<Entry> &entries() const { return m_entries; }

    /// Reads a whole entry of at most `most` bytes.
    [[nodiscard]] bool readSmall(const char *name, std::int64_t most, QByteArray &bytes);
    /// Begins to read an entry; the one before is done with.
    [[nodiscard]] bool open(const Entry &entry);
    /// The next bytes: as many as there is room for, less at the end, then 0. @return -1 when it is broken, or not as
    /// long as told
    [[nodiscard]] std::int64_t read(std::span<std::uint8_t> bytes);

private:
    struct Handles; ///< of the library
    [[nodiscard]] bool listEntries(std::int64_t fileSize);
    /// Unpacks the whole entry. @return false if it is broken, which error() tells
    [[nodiscard]] bool unpack(const Entry &entry);
    /// Up to so many bytes of what the library reads. @return -1 when it is broken
    [[nodiscard]] std::int64_t readFromLibrary(std::span<std::uint8_t> bytes);
    bool fail(const QByteArray &entry, const QString &what);

    std::unique_ptr<Handles> m_handles;
    std::vector<Entry> m_entries;
    QByteArray m_open;                 ///< the entry that is being read
    std::int64_t m_left = 0;           ///< bytes that it still promises
    std::vector<std::uint8_t> m_block; ///< all of it, if it was unpacked at once; else empty
    QString m_error;
};
