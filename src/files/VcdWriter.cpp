#include "files/VcdWriter.h"

#include "files/LevelWalk.h"
#include "files/PieceWriter.h"
#include "store/SmpData.h"

#include <QIODevice>

#include <charconv>
#include <string>
#include <vector>

namespace {

__extension__ typedef unsigned __int128 Wide;

/// The ticks of a dump.
struct Scale {
    std::string text; ///< "10 ns"
    std::int64_t ticksPerSecond = 1;
    std::int64_t perSample = 0; ///< ticks; 0 where samples are rounded to ticks
};

Scale scaleFor(std::int64_t rate)
{
    constexpr std::int64_t finest = 1'000'000'000'000'000;
    constexpr std::int64_t ticksASample = 100; // at least, of rounded times
    std::int64_t ticks = 1;
    while (ticks < finest && (ticks < rate || ticks % rate != 0)) {
        ticks *= 10;
    }
    if (ticks % rate != 0) {
        for (ticks = 1; ticks < finest && ticks / ticksASample < rate;) {
            ticks *= 10;
        }
    }
    static constexpr const char *units[] = {"s", "ms", "us", "ns", "ps", "fs"};
    int power = 0;
    for (std::int64_t left = ticks; left > 1; left /= 10) {
        ++power;
    }
    const int unit = (power + 2) / 3;
    const char *const counts[] = {"1 ", "10 ", "100 "};
    return {std::string(counts[unit * 3 - power]) + units[unit], ticks, ticks % rate == 0 ? ticks / rate : 0};
}

/// Times and levels on their way to the device.
class Changes : public PieceWriter {
public:
    Changes(QIODevice &device, const DataPieceHook &afterPiece) : PieceWriter(device, pieceSize, slack, afterPiece) {}

    /// The change of a channel: its level and code.
    void putLevel(char level, char code)
    {
        char *const to = end();
        to[0] = level;
        to[1] = code;
        to[2] = '\n';
        added(3);
    }
    void putTime(std::uint64_t ticks)
    {
        char *const to = end();
        *to = '#';
        char *const behind = std::to_chars(to + 1, to + 24, ticks).ptr;
        *behind = '\n';
        added(int(behind + 1 - to));
    }

private:
    static constexpr int pieceSize = 1 << 16; ///< bytes
    static constexpr int slack = 1024;        ///< bytes: a time and a change of each channel
};

/// A name as a dump can hold it: without blanks, and not taken for anything else.
std::string nameOf(const QString &name, int chn)
{
    std::string text = name.toStdString();
    for (char &c : text) {
        c = std::uint8_t(c) <= ' ' || c == 0x7F ? '_' : c;
    }
    return text.empty() || text == "$end" ? "channel" + std::to_string(chn) : text;
}

char codeOf(int column)
{
    return char('!' + column);
}

std::string declarations(const SmpData &data, const DataSelection &selection, const QStringList &names,
                         const std::vector<int> &chosen, const Scale &scale)
{
    std::string text =
        "$version CorvanLUX $end\n$comment Sample rate: " + std::to_string(data.smpFrequ()) +
        " Hz; trigger: " + std::to_string(std::max<std::int64_t>(data.trgPos() - selection.posStart, 0)) +
        " $end\n$timescale " + scale.text + " $end\n$scope module corvanlux $end\n";
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        text +=
            std::string("$var wire 1 ") + codeOf(int(i)) + ' ' + nameOf(names.value(chosen[i]), chosen[i]) + " $end\n";
    }
    return text + "$upscope $end\n$enddefinitions $end\n";
}

/// The changes of a range.
class Dump {
public:
    Dump(Changes &out, const SmpData &data, const DataSelection &selection, const Scale &scale)
        : m_out(out), m_selection(selection), m_scale(scale), m_rate(std::uint64_t(data.smpFrequ())), m_walk(data)
    {}

    void add(int chn)
    {
        const int level = m_walk.add(chn, m_selection.posStart);
        m_out.putLevel(char('0' + level), codeOf(int(m_next.size())));
        m_next.push_back(char('1' - level));
    }
    [[nodiscard]] DataBlocksResult write(std::int64_t smpCount)
    {
        std::int64_t done = 0;
        while (m_walk.nearest() <= m_selection.posEnd && m_walk.nearest() < smpCount) {
            m_out.putTime(ticksOf(m_walk.nearest() - m_selection.posStart));
            m_walk.pass([&](int column) {
                char &next = m_next[std::size_t(column)];
                m_out.putLevel(next, codeOf(column));
                next ^= '0' ^ '1';
                ++done;
            });
            if (m_out.isFull()) {
                const auto result = m_out.write(done);
                if (result != DataBlocksResult::Done) {
                    return result;
                }
            }
        }
        m_out.putTime(ticksOf(m_selection.posEnd + 1 - m_selection.posStart));
        return m_out.write(done);
    }

private:
    /// The tick nearest to a sample, halves up.
    [[nodiscard]] std::uint64_t ticksOf(std::int64_t sample) const
    {
        if (m_scale.perSample > 0) {
            return std::uint64_t(sample) * std::uint64_t(m_scale.perSample);
        }
        return std::uint64_t((Wide(sample) * Wide(m_scale.ticksPerSecond) + m_rate / 2) / m_rate);
    }

    Changes &m_out;
    const DataSelection &m_selection;
    const Scale &m_scale;
    const std::uint64_t m_rate; ///< Hz
    LevelWalk m_walk;
    std::vector<char> m_next; ///< the level behind the next change of each column
};

} // namespace

DataBlocksResult writeVcd(QIODevice &device, const SmpData &data, const DataSelection &selection,
                          const QStringList &names, const DataPieceHook &afterPiece)
{
    if (selection.posEnd < selection.posStart || data.smpFrequ() < 1) {
        return DataBlocksResult::DeviceError;
    }
    std::vector<int> chosen;
    for (int chn = 0; chn < data.chnCount && selection.chnSelect != nullptr; ++chn) {
        if (selection.chnSelect[chn] != 0 && data.chnRoots()[std::size_t(chn)] != nullptr) {
            chosen.push_back(chn);
        }
    }
    const Scale scale = scaleFor(data.smpFrequ());
    const std::string head = declarations(data, selection, names, chosen, scale);
    if (device.write(head.data(), qint64(head.size())) != qint64(head.size()) || device.write("#0\n$dumpvars\n") < 0) {
        return DataBlocksResult::DeviceError;
    }
    Changes out(device, afterPiece);
    Dump dump(out, data, selection, scale);
    for (const int chn : chosen) {
        dump.add(chn);
    }
    const auto result = out.write(0);
    if (result != DataBlocksResult::Done || device.write("$end\n") < 0) {
        return result != DataBlocksResult::Done ? result : DataBlocksResult::DeviceError;
    }
    return dump.write(data.smpCount());
}
