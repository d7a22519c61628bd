// With libzip. Without it SrArchiveNone.cpp takes this file's place.

#include "files/SrWriter.h"

#include "files/Deflate.h"
#include "files/SrMetadata.h"
#include "store/SmpData.h"
#include "store/SmpEdgeReader.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>
#include <zip.h>

namespace {

/// What all entries of an archive share.
struct Job {
    const SmpData &data;
    const DataPieceHook &afterPiece;
    std::vector<int> chosen;
    int row = 1;           ///< bytes a sample
    std::int64_t done = 0; ///< samples
    bool isCancelled = false;
};

/// Makes the rows of a range.
///
/// A piece is first filled with what changes: each channel's transitions are set as bits of their rows, channel by
/// channel, which no branch depends on. Then each row is the one before it, with its changes.
class Rows {
public:
    static constexpr std::int64_t pieceSize = 1 << 16;             ///< bytes
    static constexpr std::size_t wordSize = sizeof(std::uint64_t); ///< bytes that are written at once

    Rows(const Job &job, std::int64_t first, std::int64_t count) : m_row(job.row), m_pos(first), m_end(first + count)
    {
        for (const int chn : job.chosen) {
            const SmpEdgeReader reader(job.data, chn, first);
            m_levels |= std::uint64_t(reader.level()) << m_readers.size();
            m_readers.push_back(reader);
        }
    }

    /// Puts whole rows into a piece, which has room for another word behind it. @return the bytes put; 0 at the end
    [[nodiscard]] std::int64_t put(std::uint8_t *to, std::int64_t bytes)
    {
        const std::int64_t rows = std::min(m_end - m_pos, bytes / m_row);
        std::memset(to, 0, std::size_t(rows * m_row) + wordSize);
        for (std::size_t column = 0; column < m_readers.size(); ++column) {
            putChanges(to, column, m_pos + rows);
        }
        m_pos += rows;
        if (wordSize % std::size_t(m_row) == 0) {
            addUpWords(to, rows * m_row);
        } else {
            addUpRows(to, rows);
        }
        return rows * m_row;
    }

private:
    void putChanges(std::uint8_t *to, std::size_t column, std::int64_t stop)
    {
        SmpEdgeReader &reader = m_readers[column];
        const auto bit = std::uint8_t(1U << column % 8);
        std::uint8_t *const first = to + column / 8;
        while (reader.next() < stop) { // which is at most where the end mark stands
            const SmpEdgeReader::Block block = reader.block();
            int passed = 0;
            for (std::int64_t pos = reader.next(); pos < stop;) {
                first[(pos - m_pos) * m_row] ^= bit;
                pos = ++passed < block.size() ? block.position(passed) : stop;
            }
            reader.pass(passed);
        }
    }

    /// Rows of 1, 2 or 4 bytes, several in a word; the machines that this is built for are little-endian.
    void addUpWords(std::uint8_t *to, std::int64_t bytes)
    {
        const int rowBits = m_row * 8;
        std::uint64_t last = m_levels; // in the lowest row
        for (std::int64_t at = 0; at < bytes; at += std::int64_t(wordSize)) {
            std::uint64_t word = 0;
            std::memcpy(&word, to + at, wordSize);
            word ^= last;
            for (int shift = rowBits; shift < 64; shift *= 2) {
                word ^= word << shift;
            }
            std::memcpy(to + at, &word, wordSize);
            last = word >> (64 - rowBits);
        }
        m_levels = last; // behind the last row nothing changes
    }

    void addUpRows(std::uint8_t *to, std::int64_t rows)
    {
        for (; rows > 0; --rows, to += m_row) {
            std::uint64_t changed = 0;
            std::memcpy(&changed, to, std::size_t(m_row));
            m_levels ^= changed;
            std::memcpy(to, &m_levels, std::size_t(m_row));
        }
    }

    const int m_row;
    std::int64_t m_pos;
    const std::int64_t m_end;
    std::vector<SmpEdgeReader> m_readers;
    std::uint64_t m_levels = 0; ///< before m_pos
};

/// One entry of samples, as the library asks for its bytes while it writes the archive: its samples, or those packed.
class Chunk {
public:
    Chunk(Job &job, std::int64_t first, std::int64_t count, bool packs)
        : m_job(job),
          m_first(first),
          m_count(count),
          m_packsItself(packs && Deflate::isBuilt() && count * job.row <= Deflate::blockMax)
    {}

    static zip_int64_t answer(void *self, void *data, zip_uint64_t size, zip_source_cmd_t command)
    {
        return static_cast<Chunk *>(self)->answerTo(data, size, command);
    }

private:
    zip_int64_t answerTo(void *data, zip_uint64_t size, zip_source_cmd_t command)
    {
        switch (command) {
        case ZIP_SOURCE_SUPPORTS:
            return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
                                                  ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, -1);
        case ZIP_SOURCE_OPEN:
            return open() ? 0 : -1;
        case ZIP_SOURCE_READ:
            return read(static_cast<std::uint8_t *>(data), zip_int64_t(size));
        case ZIP_SOURCE_CLOSE:
            m_rows.reset();
            m_piece = std::vector<std::uint8_t>(); // there may be thousands of chunks
            return 0;
        case ZIP_SOURCE_STAT: {
            auto *stat = static_cast<zip_stat_t *>(data);
            zip_stat_init(stat);
            stat->size = zip_uint64_t(m_count * m_job.row);
            stat->valid = ZIP_STAT_SIZE;
            if (m_packsItself) { // then it tells what the library finds out of what is not packed
                stat->comp_method = ZIP_CM_DEFLATE;
                stat->crc = m_checksum;
                stat->valid |= ZIP_STAT_COMP_METHOD | ZIP_STAT_CRC;
            }
            return sizeof *stat;
        }
        case ZIP_SOURCE_ERROR: {
            zip_error_t error;
            zip_error_init_with_code(&error, ZIP_ER_CANCELLED);
            return zip_error_to_data(&error, data, size);
        }
        default:
            return command == ZIP_SOURCE_FREE ? 0 : -1;
        }
    }
    /// @return false when it was cancelled, or memory is spent
    [[nodiscard]] bool open()
    {
        m_rows = std::make_unique<Rows>(m_job, m_first, m_count);
        m_used = m_filled = 0;
        if (!m_packsItself) {
            m_piece.resize(std::size_t(Rows::pieceSize) + Rows::wordSize);
            return true;
        }
        std::vector<std::uint8_t> block(std::size_t(m_count * m_job.row) + Rows::wordSize);
        std::int64_t made = 0;
        for (std::int64_t got = -1; got != 0; made += got) {
            got = m_rows->put(block.data() + made, Rows::pieceSize);
            if (!goesOn(got)) {
                return false;
            }
        }
        block.resize(std::size_t(made));
        m_checksum = Deflate::checksum(block);
        if (!Deflate::pack(block, m_piece)) {
            return false;
        }
        m_filled = std::int64_t(m_piece.size());
        return true;
    }
    /// After each piece. @return false when the job is cancelled
    [[nodiscard]] bool goesOn(std::int64_t bytes)
    {
        m_job.done += bytes / m_job.row;
        m_job.isCancelled = bytes > 0 && m_job.afterPiece && !m_job.afterPiece(m_job.done);
        return !m_job.isCancelled;
    }
    /// The next piece of what is not packed here.
    [[nodiscard]] bool refill()
    {
        m_used = 0;
        m_filled = m_packsItself ? 0 : m_rows->put(m_piece.data(), Rows::pieceSize);
        return goesOn(m_filled);
    }
    zip_int64_t read(std::uint8_t *to, zip_int64_t size)
    {
        zip_int64_t put = 0;
        while (put < size) {
            if (m_used == m_filled) {
                if (!refill()) {
                    return -1;
                }
                if (m_filled == 0) {
                    break;
                }
            }
            const std::int64_t take = std::min<std::int64_t>(size - put, m_filled - m_used);
            std::memcpy(to + put, m_piece.data() + m_used, std::size_t(take));
            put += take;
            m_used += take;
        }
        return put;
    }

    Job &m_job;
    const std::int64_t m_first;
    const std::int64_t m_count;
    const bool m_packsItself; ///< the library gets packed bytes
    std::uint32_t m_checksum = 0;
    std::unique_ptr<Rows> m_rows;
    std::vector<std::uint8_t> m_piece; ///< of rows, or all that is packed
    std::int64_t m_used = 0;
    std::int64_t m_filled = 0;
};

QByteArray metadataOf(const Job &job, const QStringList &names)
{
    QByteArray text = "[device 1]\ncapturefile=logic-1\ntotal probes=" + QByteArray::number(int(job.chosen.size())) +
                      "\nsamplerate=" + srRateText(job.data.smpFrequ()) + "\ntotal analog=0\n";
    for (std::size_t i = 0; i < job.chosen.size(); ++i) {
        QByteArray name = names.value(job.chosen[i]).simplified().toUtf8();
        if (name.isEmpty()) {
            name = "D" + QByteArray::number(job.chosen[i]);
        }
        text += "probe" + QByteArray::number(int(i) + 1) + '=' + name + '\n';
    }
    return text + "unitsize=" + QByteArray::number(job.row) + '\n';
}

/// Transitions of the chosen channels in a range.
std::int64_t edgesIn(const Job &job, std::int64_t first, std::int64_t count)
{
    std::int64_t edges = 0;
    for (const int chn : job.chosen) {
        edges += std::max<std::int64_t>(job.data.edgeCount(chn, first, first + count - 1), 0);
    }
    return edges;
}

/// The library's archive, which is written when it is closed, or dropped.
class Archive {
public:
    explicit Archive(const QString &path)
        : m_zip(zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, nullptr))
    {}
    ~Archive()
    {
        if (m_zip != nullptr) {
            zip_discard(m_zip);
        }
    }
    Archive(const Archive &) = delete;
    Archive &operator=(const Archive &) = delete;

    [[nodiscard]] bool isOpen() const { return m_zip != nullptr; }
    /// Adds a text, which outlives the archive.
    [[nodiscard]] bool add(const char *name, const QByteArray &text)
    {
        return add(name, zip_source_buffer(m_zip, text.constData(), zip_uint64_t(text.size()), 0), true);
    }
    [[nodiscard]] bool add(const QByteArray &name, Chunk &chunk, bool packs)
    {
        return add(name.constData(), zip_source_function(m_zip, &Chunk::answer, &chunk), packs);
    }
    /// Writes all. @return 0, or the system's error; -1 for one that is not the system's
    [[nodiscard]] int close()
    {
        if (zip_close(m_zip) == 0) {
            m_zip = nullptr;
            return 0;
        }
        zip_error_t *const error = zip_get_error(m_zip);
        return zip_error_system_type(error) == ZIP_ET_SYS ? zip_error_code_system(error) : -1;
    }

private:
    [[nodiscard]] bool add(const char *name, zip_source_t *source, bool packs)
    {
        constexpr zip_uint32_t fastest = 1;
        const zip_int64_t index = source != nullptr ? zip_file_add(m_zip, name, source, ZIP_FL_ENC_UTF_8) : -1;
        if (index < 0) {
            zip_source_free(source);
            return false;
        }
        return zip_set_file_compression(m_zip, zip_uint64_t(index), packs ? ZIP_CM_DEFLATE : ZIP_CM_STORE,
                                        packs ? fastest : 0) == 0;
    }

    zip_t *m_zip;
};

FileResult resultOf(int systemError, const Job &job)
{
    if (systemError == 0) {
        return FileResult::Done;
    }
    if (job.isCancelled) {
        return FileResult::Cancelled;
    }
    const bool isFull = systemError == ENOSPC || systemError == EFBIG;
    return isFull ? FileResult::DiskFull : systemError == EACCES ? FileResult::NoRights : FileResult::Failed;
}

} // namespace

FileResult writeSr(const QString &path, const SmpData &data, const DataSelection &selection, const QStringList &names,
                   const DataPieceHook &afterPiece)
{
    constexpr std::int64_t chunkBytes = std::int64_t(4) << 20; // as other programs write
    constexpr std::int64_t chunksMax = 60'000;                 // fewer than a list of 16 bits counts
    constexpr std::int64_t packsBelow = 4;                     // transitions in so many samples
    Job job{data, afterPiece, {}};
    for (int chn = 0; chn < data.chnCount && selection.chnSelect != nullptr; ++chn) {
        if (selection.chnSelect[chn] != 0 && data.chnRoots()[std::size_t(chn)] != nullptr) {
            job.chosen.push_back(chn);
        }
    }
    const std::int64_t samples = selection.posEnd - selection.posStart + 1;
    if (samples < 1 || job.chosen.empty()) {
        return FileResult::NoCapture;
    }
    job.row = int((job.chosen.size() + 7) / 8);
    const std::int64_t rows = std::max(chunkBytes / job.row, samples / chunksMax + 1);
    const QByteArray version("2");
    const QByteArray metadata = metadataOf(job, names);
    std::vector<Chunk> chunks; // stays where it is: the library has its entries' addresses
    chunks.reserve(std::size_t(samples / rows + 1));
    Archive archive(path);
    bool isGood = archive.isOpen() && archive.add("version", version) && archive.add("metadata", metadata);
    for (std::int64_t first = 0; first < samples && isGood; first += rows) {
        const std::int64_t count = std::min(rows, samples - first);
        const bool packs = edgesIn(job, selection.posStart + first, count) * packsBelow < count;
        chunks.emplace_back(job, selection.posStart + first, count, packs);
        isGood = archive.add("logic-1-" + QByteArray::number(qlonglong(chunks.size())), chunks.back(), packs);
    }
    return isGood ? resultOf(archive.close(), job) : FileResult::Failed;
}
