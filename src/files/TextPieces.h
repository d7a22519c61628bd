#pragma once

#include <QIODevice>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

/// The bytes of a text file in pieces, for a reader that looks at words of up to `wordMax` bytes where they lie.
///
/// Private to this folder. Behind the bytes that are there stands a line feed, so that a word ends there at the latest.
/// One thread at a time.
class TextPieces {
public:
    static constexpr std::int64_t wordMax = 1 << 16;   ///< bytes
    static constexpr std::int64_t pieceSize = 1 << 20; ///< bytes

    explicit TextPieces(QIODevice &device)
        : m_device(device),
          m_size(device.size() - device.pos()),
          m_bytes(std::size_t(pieceSize + wordMax + 1)),
          m_from(m_bytes.data()),
          m_end(m_from)
    {
        m_bytes[0] = '\n';
    }

    [[nodiscard]] const char *begin() const { return m_from; }
    /// Behind the last byte that is there.
    [[nodiscard]] const char *end() const { return m_end; }
    /// A word that begins before this is whole, or longer than wordMax.
    [[nodiscard]] const char *safeEnd() const
    {
        return m_atEnd ? m_end : std::max<const char *>(m_from, m_end - wordMax);
    }
    /// No further bytes will come.
    [[nodiscard]] bool atEnd() const { return m_atEnd; }
    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }
    /// Bytes that came so far.
    [[nodiscard]] std::int64_t taken() const { return m_taken; }

    /// Drops what stands before `at` and brings what fits behind the rest. @return the place of `at` from now on
    const char *fill(const char *at)
    {
        m_lines += std::count(static_cast<const char *>(m_from), at, '\n');
        const auto kept = m_end - at;
        std::memmove(m_bytes.data(), at, std::size_t(kept));
        char *const into = m_bytes.data() + kept;
        const qint64 got = m_device.read(into, std::min<qint64>(pieceSize, qint64(m_bytes.size()) - kept - 1));
        m_hasFailed = got < 0 || (got == 0 && m_taken < m_size); // or somebody cuts it meanwhile
        m_atEnd = got <= 0;
        m_taken += std::max<qint64>(got, 0);
        m_from = m_bytes.data();
        m_end = into + std::max<qint64>(got, 0);
        *m_end = '\n';
        return m_from;
    }
    /// The number of the line in which `at` stands, from 1. Cost: one step a byte.
    [[nodiscard]] std::int64_t lineOf(const char *at) const
    {
        return m_lines + std::count(static_cast<const char *>(m_from), std::min<const char *>(at, m_end), '\n') + 1;
    }

private:
    QIODevice &m_device;
    const std::int64_t m_size; ///< bytes that were to come
    std::vector<char> m_bytes;
    char *m_from;
    char *m_end;
    std::int64_t m_lines = 0; ///< before m_from
    std::int64_t m_taken = 0;
    bool m_atEnd = false;
    bool m_hasFailed = false;
};
