#include "files/DataExport.h"

#include "files/LevelWalk.h"
#include "files/PieceWriter.h"
#include "settings/Config.h"
#include "store/SmpData.h"

#include <QIODevice>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

/// The two decimal digits of 0 to 99.
constexpr auto digitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = char('0' + i / 10);
        pairs[2 * i + 1] = char('0' + i % 10);
    }
    return pairs;
}();

/// Writes `value`, below 1e9, with nine digits.
void putNineDigits(std::uint32_t value, char *out)
{
    for (int at = 7; at >= 1; at -= 2) {
        std::memcpy(out + at, digitPairs.data() + std::size_t(value % 100) * 2, 2);
        value /= 100;
    }
    out[0] = char('0' + value);
}

/// Writes `value` with as many digits as it has. @return the bytes written
int putNumber(std::uint64_t value, char *out)
{
    if (value < 10) { // captures are short in seconds
        *out = char('0' + value);
        return 1;
    }
    std::array<char, 20> digits;
    int count = 0;
    for (; value != 0; value /= 10) {
        digits[std::size_t(count++)] = char('0' + value % 10);
    }
    std::reverse_copy(digits.begin(), digits.begin() + count, out);
    return count;
}

/// The nearest whole number of nanoseconds, halves up.
std::int64_t nanoseconds(double seconds)
{
    constexpr double limit = 9223372036854774784.0; // the largest double below 2^63
    const double sum = seconds * 1e9 + 0.5;
    if (!(sum >= -limit && sum <= limit)) {
        return std::isnan(sum) ? 0
               : sum < 0       ? -std::numeric_limits<std::int64_t>::max()
                               : std::numeric_limits<std::int64_t>::max();
    }
    const auto towardZero = std::int64_t(sum);
    return towardZero - (double(towardZero) > sum ? 1 : 0);
}

bool isChosen(const std::uint8_t *chnSelect, int chn)
{
    return chnSelect != nullptr && chnSelect[chn] != 0;
}

/// What stands behind the time in a line: ", 0" or ", 1" for each channel. Changes only where a channel does.
class LevelColumns {
public:
    void add(int level) { m_text.append(level != 0 ? ", 1" : ", 0"); }
    void close() { m_text.append('\n'); }
    void flip(int column) { m_text.data()[3 * column + 2] ^= '0' ^ '1'; }
    [[nodiscard]] int size() const { return m_text.size(); }
    int put(char *out) const
    {
        std::memcpy(out, m_text.constData(), std::size_t(m_text.size()));
        return m_text.size();
    }

private:
    QByteArray m_text;
};

/// One row of a binary export, repeated so far that eight bytes can be put at a time.
class RowPattern {
public:
    explicit RowPattern(int width) : m_width(width), m_bytes(std::size_t(8 % width == 0 ? 8 : width)) {}

    void flip(int chn)
    {
        for (std::size_t at = std::size_t(chn / 8); at < m_bytes.size(); at += std::size_t(m_width)) {
            m_bytes[at] = std::uint8_t(m_bytes[at] ^ (1U << (chn % 8)));
        }
    }

    /// Puts `rows` rows. Writes over up to 7 bytes behind them.
    void put(std::int64_t rows, char *out) const
    {
        if (m_bytes.size() == 8) {
            std::array<std::uint8_t, 8> block;
            std::copy_n(m_bytes.begin(), 8, block.begin());
            for (char *const stop = out + rows * m_width; out < stop; out += 8) {
                std::memcpy(out, block.data(), 8);
            }
            return;
        }
        for (; rows > 0; --rows, out += m_width) {
            std::memcpy(out, m_bytes.data(), m_bytes.size());
        }
    }

private:
    const int m_width; ///< bytes
    std::vector<std::uint8_t> m_bytes;
};

/// Writes the rows of a range, as runs between two changes.
class RowWriter {
public:
    static constexpr int slack = 8; ///< RowPattern::put() writes over what follows

    RowWriter(QIODevice &device, int width, const DataPieceHook &afterPiece)
        : m_pieces(device, dataWritePiece, width + slack, afterPiece),
          m_pattern(width),
          m_width(width),
          m_rowsPerPiece((dataWritePiece + width - 1) / width)
    {}

    void flip(int chn) { m_pattern.flip(chn); }

    /// Writes `count` equal rows; `last` when no other follow.
    [[nodiscard]] DataBlocksResult rows(std::int64_t count, bool last)
    {
        bool allEqual = false; // the buffer holds nothing but the present row
        while (count > 0) {
            const std::int64_t used = m_pieces.used() / m_width;
            const std::int64_t run = std::min(count, m_rowsPerPiece - used);
            if (!allEqual) {
                m_pattern.put(run, m_pieces.end());
            }
            allEqual = allEqual || (used == 0 && run == m_rowsPerPiece);
            m_pieces.added(int(run * m_width));
            count -= run;
            m_done += run;
            if (m_pieces.isFull() || (last && count == 0)) {
                const auto result = m_pieces.write(m_done);
                if (result != DataBlocksResult::Done) {
                    return result;
                }
            }
        }
        return DataBlocksResult::Done;
    }

private:
    PieceWriter m_pieces;
    RowPattern m_pattern;
    const int m_width; ///< bytes
    const std::int64_t m_rowsPerPiece;
    std::int64_t m_done = 0; ///< rows
};

} // namespace

int putExportTime(double seconds, char *out)
{
    constexpr std::uint64_t nsPerSecond = 1'000'000'000;
    const std::int64_t ns = nanoseconds(seconds);
    const auto magnitude = std::uint64_t(ns < 0 ? -ns : ns);
    char *at = out;
    if (ns < 0) {
        *at++ = '-';
    }
    at += putNumber(magnitude / nsPerSecond, at);
    *at++ = '.';
    putNineDigits(std::uint32_t(magnitude % nsPerSecond), at);
    return int(at + 9 - out);
}

QByteArray textExportHeader(const std::uint8_t *chnSelect, int chnCount)
{
    QByteArray line;
    QTextStream out(&line, QIODevice::WriteOnly);
    out.setCodec("UTF-8"); // a code page would lose names
    out << "Time[s]";
    for (int chn = 0; chn < chnCount; ++chn) {
        if (isChosen(chnSelect, chn)) {
            out << ", " << chnShowNameGet(chn);
        }
    }
    out << '\n';
    out.flush();
    return line;
}

DataBlocksResult writeTextExport(QIODevice &device, const SmpData &data, const DataSelection &selection,
                                 const QByteArray &header, const DataPieceHook &afterPiece)
{
    if (device.write(header) != header.size()) {
        return DataBlocksResult::DeviceError;
    }
    LevelWalk walk(data);
    LevelColumns columns;
    for (int chn = 0; chn < data.chnCount; ++chn) {
        if (isChosen(selection.chnSelect, chn)) {
            columns.add(walk.add(chn, selection.posStart));
        }
    }
    columns.close();

    const double secondsPerSample = data.smpFrequ() > 0 ? 1.0 / double(data.smpFrequ()) : 0.0;
    PieceWriter pieces(device, textExportPiece, exportTimeMax + columns.size(), afterPiece);
    std::int64_t entries = 0;
    std::int64_t pos = selection.posStart;
    while (pos <= selection.posEnd) {
        pieces.added(putExportTime(double(pos - data.trgPos()) * secondsPerSample, pieces.end()));
        pieces.added(columns.put(pieces.end()));
        // From the end mark on there is nothing, in whatever range; without channels not even that.
        const std::int64_t change = walk.nearest();
        const bool inside = change < data.smpCount();
        if (inside) {
            walk.pass([&](int column) {
                columns.flip(column);
                ++entries;
            });
        }
        pos = inside ? change : LevelWalk::never;
        if (pieces.isFull() || pos > selection.posEnd) {
            const auto result = pieces.write(entries);
            if (result != DataBlocksResult::Done) {
                return result;
            }
        }
    }
    return DataBlocksResult::Done;
}

DataBlocksResult writeBinaryExport(QIODevice &device, const SmpData &data, const DataSelection &selection,
                                   const DataPieceHook &afterPiece)
{
    RowWriter writer(device, std::max((data.chnCount + 7) / 8, 1), afterPiece);
    LevelWalk walk(data);
    std::vector<int> chosen;
    for (int chn = 0; chn < data.chnCount; ++chn) {
        if (isChosen(selection.chnSelect, chn)) {
            chosen.push_back(chn);
            if (walk.add(chn, selection.posStart) != 0) {
                writer.flip(chn);
            }
        }
    }

    const std::int64_t stop = selection.posEnd + 1;
    std::int64_t pos = selection.posStart;
    while (pos < stop) {
        const std::int64_t change = walk.nearest();
        const std::int64_t runEnd = change < data.smpCount() ? std::min(change, stop) : stop;
        const auto result = writer.rows(runEnd - pos, runEnd == stop);
        if (result != DataBlocksResult::Done) {
            return result;
        }
        if (runEnd < stop) {
            walk.pass([&](int number) { writer.flip(chosen[std::size_t(number)]); });
        }
        pos = runEnd;
    }
    return DataBlocksResult::Done;
}
