#pragma once

#include "files/DataFileBytes.h"
#include "files/ForeignFile.h"
#include "store/SmpData.h"

#include <QByteArray>
#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

/// Reads bytes as a file of another program.
inline ForeignCapture foreign(const QByteArray &bytes, ForeignKind kind, const ForeignOptions &options = {},
                              const ForeignHook &hook = {})
{
    static const FileFolder folder; // one for all: thousands would take their time
    return readForeign(folder.write(bytes, QStringLiteral("capture")), kind, options, hook);
}

/// The positions at which a channel changes.
inline std::vector<std::int64_t> edgesOf(const SmpData &data, int chn)
{
    std::vector<std::int64_t> edges = entriesOf(data, chn);
    if (!edges.empty()) {
        edges.pop_back();
    }
    return edges;
}

/// Channel 0 to 7 of a sample as bits.
inline int levelsAt(const SmpData &data, std::int64_t pos)
{
    int levels = 0;
    for (int chn = 0; chn < 8; ++chn) {
        SmpEdgeCursor cursor;
        levels |= data.locate(chn, pos, cursor) == 1 ? 1 << chn : 0;
    }
    return levels;
}

/// Builds a zip archive with entries as they are, without the code under test or a library (APPNOTE.TXT 6.3.10).
class ZipBytes {
public:
    /// What an entry lies about.
    struct Lies {
        std::int64_t size = -1;   ///< told instead of the true one
        std::int64_t offset = -1; ///< the entry's place
        bool checksum = false;
    };

    ZipBytes &add(const QByteArray &name, const QByteArray &bytes) { return add(name, bytes, Lies()); }
    ZipBytes &add(const QByteArray &name, const QByteArray &bytes, const Lies &lies)
    {
        const std::uint32_t sum = crc(bytes) ^ (lies.checksum ? 1U : 0U);
        const auto told = std::uint32_t(lies.size >= 0 ? lies.size : bytes.size());
        return addEntry(name, bytes, stored, sum, told, told, lies.offset);
    }
    /// An entry that is packed (RFC 1951). @param size  what it tells to unpack to
    ZipBytes &addDeflated(const QByteArray &name, const QByteArray &bytes, std::int64_t size)
    {
        return addPacked(name, deflated(bytes), crc(bytes), size);
    }
    /// The same, of bytes that have been packed before.
    ZipBytes &addPacked(const QByteArray &name, const QByteArray &packed, std::uint32_t sum, std::int64_t size)
    {
        return addEntry(name, packed, deflate, sum, std::uint32_t(packed.size()), std::uint32_t(size), -1);
    }
    [[nodiscard]] static QByteArray deflated(const QByteArray &bytes)
    {
        constexpr int sizeBytes = 4; // which Qt puts in front of the head of RFC 1950
        constexpr int headBytes = 2;
        constexpr int checkBytes = 4;
        return qCompress(bytes).mid(sizeBytes + headBytes).chopped(checkBytes);
    }
    /// "version", "metadata" with so many channels, and one chunk of samples.
    ZipBytes &session(const QByteArray &metadata, const QByteArray &samples)
    {
        return add("version", "2").add("metadata", metadata).add("logic-1-1", samples);
    }
    [[nodiscard]] QByteArray bytes() const
    {
        QByteArray end("PK\5\6");
        put32(end, 0);
        put16(end, std::uint16_t(m_count));
        put16(end, std::uint16_t(m_count));
        put32(end, std::uint32_t(m_directory.size()));
        put32(end, std::uint32_t(m_entries.size()));
        put16(end, 0);
        return m_entries + m_directory + end;
    }

    static std::uint32_t crc(const QByteArray &bytes)
    {
        static const std::array<std::uint32_t, 256> table = [] {
            std::array<std::uint32_t, 256> sums{};
            for (std::uint32_t byte = 0; byte < sums.size(); ++byte) {
                std::uint32_t sum = byte;
                for (int bit = 0; bit < 8; ++bit) {
                    sum = (sum & 1U) != 0 ? sum >> 1 ^ 0xEDB88320U : sum >> 1;
                }
                sums[byte] = sum;
            }
            return sums;
        }();
        std::uint32_t sum = 0xFFFFFFFFU;
        for (const char c : bytes) {
            sum = sum >> 8 ^ table[(sum ^ std::uint8_t(c)) & 0xFFU];
        }
        return ~sum;
    }

private:
    static constexpr std::uint16_t stored = 0; // methods
    static constexpr std::uint16_t deflate = 8;

    ZipBytes &addEntry(const QByteArray &name, const QByteArray &bytes, std::uint16_t method, std::uint32_t sum,
                       std::uint32_t packed, std::uint32_t size, std::int64_t offset)
    {
        QByteArray fields;
        put16(fields, 20); // version needed
        put16(fields, 0);  // flags
        put16(fields, method);
        put16(fields, 0);    // time
        put16(fields, 0x21); // date
        put32(fields, sum);
        put32(fields, packed);
        put32(fields, size);
        put16(fields, std::uint16_t(name.size()));
        put16(fields, 0); // extra field
        QByteArray head("PK\1\2");
        put16(head, 20);
        head += fields;
        put16(head, 0); // comment
        put16(head, 0); // disk
        put16(head, 0); // attributes
        put32(head, 0);
        put32(head, std::uint32_t(offset >= 0 ? offset : m_entries.size()));
        m_directory += head + name;
        m_entries += QByteArray("PK\3\4") + fields + name + bytes;
        ++m_count;
        return *this;
    }
    static void put16(QByteArray &out, std::uint16_t value) { out.append(char(value)).append(char(value >> 8)); }
    static void put32(QByteArray &out, std::uint32_t value)
    {
        put16(out, std::uint16_t(value));
        put16(out, std::uint16_t(value >> 16));
    }
    QByteArray m_entries;
    QByteArray m_directory;
    int m_count = 0;
};

/// A file that never ends up in memory: a head, then the same bytes again and again.
class EndlessText : public QIODevice {
public:
    EndlessText(QByteArray head, QByteArray body, qint64 size)
        : m_head(std::move(head)), m_body(std::move(body)), m_size(size)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    [[nodiscard]] qint64 size() const override { return m_size; }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        const qint64 from = pos();
        const qint64 count = std::min(most, m_size - from);
        for (qint64 i = 0; i < count;) {
            const qint64 at = from + i;
            const bool inHead = at < m_head.size();
            const qint64 within = inHead ? at : (at - m_head.size()) % m_body.size();
            const QByteArray &bytes = inHead ? m_head : m_body;
            const qint64 run = std::min<qint64>(count - i, bytes.size() - within);
            std::memcpy(data + i, bytes.constData() + within, std::size_t(run));
            i += run;
        }
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    const QByteArray m_head;
    const QByteArray m_body;
    const qint64 m_size;
};
