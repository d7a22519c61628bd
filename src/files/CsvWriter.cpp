#include "files/CsvWriter.h"

#include "files/LevelWalk.h"
#include "files/PieceWriter.h"
#include "store/SmpData.h"

#include <QIODevice>

#include <charconv>
#include <cstring>
#include <string>
#include <vector>

namespace {

__extension__ typedef unsigned __int128 Wide;

std::string quoted(const QString &name)
{
    std::string text = name.toStdString();
    if (text.find_first_of(",\"\r\n") == std::string::npos &&
        (text.empty() || (text[0] != ' ' && text.back() != ' '))) {
        return text;
    }
    std::string out = "\"";
    for (const char c : text) {
        out.append(c == '"' ? 2 : 1, c);
    }
    return out + '"';
}

/// Times of samples as text.
class Times {
public:
    static constexpr std::size_t sizeMax = 40; ///< bytes

    explicit Times(std::int64_t rate)
        : m_rate(std::uint64_t(rate)),
          m_digits(rate > 1'000'000'000 ? 12 : 9),
          m_ticks(rate > 1'000'000'000 ? 1'000'000'000'000 : 1'000'000'000),
          m_perSample(m_ticks % m_rate == 0 ? m_ticks / m_rate : 0)
    {}

    /// @return the end of what was written
    [[nodiscard]] char *put(std::int64_t sample, char *to) const
    {
        const auto count = std::uint64_t(sample < 0 ? -sample : sample);
        std::uint64_t seconds = count / m_rate;
        const std::uint64_t rest = count % m_rate;
        std::uint64_t part =
            m_perSample > 0 ? rest * m_perSample : std::uint64_t((Wide(rest) * m_ticks + m_rate / 2) / m_rate);
        if (part == m_ticks) {
            part = 0;
            ++seconds;
        }
        if (sample < 0 && (seconds | part) != 0) {
            *to++ = '-';
        }
        to = std::to_chars(to, to + 20, seconds).ptr;
        *to = '.';
        for (int digit = m_digits; digit > 0; --digit) {
            to[digit] = char('0' + part % 10);
            part /= 10;
        }
        return to + m_digits + 1;
    }

private:
    const std::uint64_t m_rate; ///< Hz
    const int m_digits;
    const std::uint64_t m_ticks; ///< of a second
    const std::uint64_t m_perSample;
};

std::vector<int> chosenOf(const SmpData &data, const DataSelection &selection)
{
    std::vector<int> chosen;
    for (int chn = 0; chn < data.chnCount && selection.chnSelect != nullptr; ++chn) {
        if (selection.chnSelect[chn] != 0 && data.chnRoots()[std::size_t(chn)] != nullptr) {
            chosen.push_back(chn);
        }
    }
    return chosen;
}

/// The lines, in pieces.
class Lines {
public:
    static constexpr int pieceSize = 1 << 16; ///< bytes

    Lines(QIODevice &device, const DataPieceHook &afterPiece, std::int64_t rate, std::string levels)
        : m_times(rate),
          m_levels(std::move(levels)),
          m_out(device, pieceSize, int(Times::sizeMax + m_levels.size()), afterPiece)
    {}

    void flip(int column) { m_levels[2 * std::size_t(column) + 1] ^= '0' ^ '1'; }
    /// @param done  transitions passed so far
    [[nodiscard]] DataBlocksResult put(std::int64_t time, std::int64_t done)
    {
        char *const to = m_times.put(time, m_out.end());
        std::memcpy(to, m_levels.data(), m_levels.size());
        m_out.added(int(to - m_out.end()) + int(m_levels.size()));
        return m_out.isFull() ? write(done) : DataBlocksResult::Done;
    }
    [[nodiscard]] DataBlocksResult write(std::int64_t done) { return m_out.write(done); }

private:
    const Times m_times;
    std::string m_levels; ///< ",0,1" and a line feed
    PieceWriter m_out;
};

} // namespace

DataBlocksResult writeCsv(QIODevice &device, const SmpData &data, const DataSelection &selection,
                          const QStringList &names, const DataPieceHook &afterPiece)
{
    if (selection.posEnd < selection.posStart || data.smpFrequ() < 1) {
        return DataBlocksResult::DeviceError;
    }
    std::string head = "Time[s]";
    std::string levels;
    LevelWalk walk(data);
    for (const int chn : chosenOf(data, selection)) {
        head += ',' + quoted(names.value(chn));
        levels += walk.add(chn, selection.posStart) != 0 ? ",1" : ",0";
    }
    head += '\n';
    if (device.write(head.data(), qint64(head.size())) != qint64(head.size())) {
        return DataBlocksResult::DeviceError;
    }
    Lines lines(device, afterPiece, data.smpFrequ(), levels + '\n');
    std::int64_t done = 0;
    std::int64_t pos = selection.posStart;
    DataBlocksResult result = lines.put(pos - data.trgPos(), done);
    while (result == DataBlocksResult::Done && walk.nearest() <= selection.posEnd && walk.nearest() < data.smpCount()) {
        pos = walk.nearest();
        walk.pass([&](int column) {
            lines.flip(column);
            ++done;
        });
        result = lines.put(pos - data.trgPos(), done);
    }
    if (result == DataBlocksResult::Done && pos < selection.posEnd) {
        result = lines.put(selection.posEnd - data.trgPos(), done);
    }
    return result == DataBlocksResult::Done ? lines.write(done) : result;
}
