#pragma once

#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <cstdint>
#include <memory>
#include <vector>

/// Builds the binary part of a data file byte by byte, without the code under test.
class DataFileBytes {
public:
    explicit DataFileBytes(int chnCount = 16) : m_chnCount(chnCount) {}

    DataFileBytes &samples(std::int64_t count) { return set(m_samples, count); }
    DataFileBytes &frequency(std::int64_t hertz) { return set(m_frequency, hertz); }
    DataFileBytes &trigger(std::int64_t pos) { return set(m_trigger, pos); }
    DataFileBytes &block(int chn, int level, const std::vector<std::int64_t> &entries)
    {
        blockHead(chn, level, std::int64_t(entries.size()));
        for (const std::int64_t entry : entries) {
            put40(m_blocks, entry);
        }
        return *this;
    }
    DataFileBytes &blockHead(int chn, int level, std::int64_t entryCount)
    {
        m_chns.push_back(chn);
        m_blocks.append("##D");
        m_blocks.append('\0').append(char(chn)).append(char(level)).append(2, '\0');
        put40(m_blocks, entryCount);
        m_blocks.append(3, '\0');
        return *this;
    }
    /// The head tells these channels' blocks.
    DataFileBytes &promise(const std::vector<int> &chns)
    {
        m_promise[0] = char(chns.size() + 1);
        for (const int chn : chns) {
            m_promise[1 + chn / 8] = char(m_promise[1 + chn / 8] | 1 << chn % 8);
        }
        return *this;
    }
    /// The head tells the blocks that there are.
    DataFileBytes &told() { return promise(m_chns); }
    DataFileBytes &raw(const QByteArray &bytes)
    {
        m_blocks.append(bytes);
        return *this;
    }

    [[nodiscard]] QByteArray bytes() const
    {
        QByteArray all("cxdat");
        for (const std::int64_t field : {m_samples, m_frequency, m_trigger}) {
            all.append(3, '\0');
            put40(all, field);
        }
        all.append(3, '\0').append(char(m_chnCount)).append(m_promise);
        return all + m_blocks;
    }

private:
    DataFileBytes &set(std::int64_t &field, std::int64_t value)
    {
        field = value;
        return *this;
    }
    static void put40(QByteArray &out, std::int64_t value)
    {
        for (int byte = 0; byte < 5; ++byte) {
            out.append(char(value >> (8 * byte)));
        }
    }

    int m_chnCount;
    std::int64_t m_samples = 1000;
    std::int64_t m_frequency = 1'000'000;
    std::int64_t m_trigger = 0;
    QByteArray m_blocks;
    std::vector<int> m_chns;
    QByteArray m_promise = QByteArray(7, '\0');
};

/// Builds a closed capture.
class CaptureBuilder {
public:
    explicit CaptureBuilder(int chnCount = 16, int aChnCount = 0)
        : m_data(std::make_unique<SmpData>(chnCount, aChnCount)),
          m_edges(std::size_t(chnCount)),
          m_enable(std::size_t(chnCount), 0)
    {}
    CaptureBuilder &samples(std::int64_t count)
    {
        m_samples = count;
        return *this;
    }
    CaptureBuilder &trigger(std::int64_t pos)
    {
        m_trigger = pos;
        return *this;
    }
    CaptureBuilder &channel(int chn, int level, std::vector<std::int64_t> edges = {})
    {
        m_enable[std::size_t(chn)] = 1;
        m_edges[std::size_t(chn)] = std::move(edges);
        m_levels |= chn < 64 ? std::uint64_t(level) << chn : 0;
        return *this;
    }
    [[nodiscard]] std::unique_ptr<SmpData> build()
    {
        m_data->begin(0, 1'000'000, m_enable);
        for (int chn = 0; chn < m_data->chnCount; ++chn) {
            std::int64_t pos = 0;
            std::vector<std::int32_t> widths;
            for (const std::int64_t edge : m_edges[std::size_t(chn)]) {
                widths.push_back(std::int32_t(edge - pos));
                pos = edge;
            }
            pos = 0;
            if (!m_data->addPulses(widths, chn, pos)) {
                return nullptr;
            }
        }
        SmpWriter(*m_data).setStartLevels(m_levels);
        SmpWriter(*m_data).setSmpCount(m_samples);
        SmpWriter(*m_data).setTrgPos(m_trigger);
        m_data->finish(m_samples);
        return std::move(m_data);
    }

private:
    std::unique_ptr<SmpData> m_data;
    std::vector<std::vector<std::int64_t>> m_edges;
    std::vector<std::uint8_t> m_enable;
    std::uint64_t m_levels = 0;
    std::int64_t m_samples = 1000;
    std::int64_t m_trigger = 0;
};

/// `count` positions: `first`, `first` + `step`, and so on.
inline std::vector<std::int64_t> stairs(std::int64_t first, std::int64_t step, int count)
{
    std::vector<std::int64_t> positions;
    for (int i = 0; i < count; ++i) {
        positions.push_back(first + step * i);
    }
    return positions;
}

/// All entries of a channel of a closed capture, the end mark included.
inline std::vector<std::int64_t> entriesOf(const SmpData &data, int chn)
{
    std::vector<std::int64_t> entries;
    const std::int64_t count = data.entryCount(chn);
    for (std::int64_t i = 0; i < count; ++i) {
        entries.push_back(data.entryAt(chn, SmpEdgeCursor{}, i));
    }
    return entries;
}

/// A folder that goes with the test, and files in it.
class FileFolder {
public:
    [[nodiscard]] QString path(const QString &name) const { return m_dir.filePath(name); }
    [[nodiscard]] QString write(const QByteArray &bytes, const QString &name = QStringLiteral("a.cxdat")) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size()) {
            return {};
        }
        return path(name);
    }
    [[nodiscard]] QByteArray read(const QString &name = QStringLiteral("a.cxdat")) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_dir;
};
