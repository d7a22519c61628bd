#pragma once

#include "files/DataBlocks.h"
#include "settings/Config.h"
#include "store/SmpData.h"

#include <QByteArray>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

/// The exports sample by sample and channel by channel, as slow and as plain as they can be written. Only for small
/// ranges. Shares nothing with the writers under test but the store's queries.
class NaiveExport {
public:
    NaiveExport(const SmpData &data, const DataSelection &selection) : m_data(data), m_selection(selection)
    {
        for (int chn = 0; chn < data.chnCount; ++chn) {
            Channel channel;
            const int level = data.locate(chn, selection.posStart, channel.cursor);
            channel.hasData = level >= 0;
            channel.level = std::max(level, 0);
            channel.next = level < 0 ? selection.posEnd + 1 : data.entryAt(chn, channel.cursor);
            m_channels.push_back(channel);
        }
    }

    [[nodiscard]] QByteArray text()
    {
        QByteArray bytes;
        QTextStream out(&bytes, QIODevice::WriteOnly);
        out << "Time[s]";
        for (int chn = 0; chn < m_data.chnCount; ++chn) {
            if (isChosen(chn)) {
                out << ", " << chnShowNameGet(chn);
            }
        }
        out << Qt::endl;
        std::int64_t pos = m_selection.posStart;
        while (pos <= m_selection.posEnd) {
            out << time(double(pos - m_data.trgPos()) * (1.0 / double(m_data.smpFrequ())));
            std::int64_t step = m_data.smpCount();
            bool any = false;
            for (int chn = 0; chn < m_data.chnCount; ++chn) {
                if (isChosen(chn)) {
                    const std::int64_t distance = m_channels[std::size_t(chn)].next - pos;
                    step = any ? std::min(step, distance) : distance;
                    any = true;
                }
            }
            const std::int64_t nextPos = pos + step;
            for (int chn = 0; chn < m_data.chnCount; ++chn) {
                if (isChosen(chn)) {
                    out << ", " << (m_channels[std::size_t(chn)].level != 0 ? "1" : "0");
                    passTo(chn, nextPos);
                }
            }
            out << Qt::endl;
            if (step < 1) {
                break; // at the end mark
            }
            pos = nextPos;
        }
        out.flush();
        return bytes;
    }

    [[nodiscard]] QByteArray binary()
    {
        const int width = (m_data.chnCount + 7) / 8;
        const std::int64_t samples = m_selection.posEnd - m_selection.posStart + 1;
        QByteArray bytes(int(samples) * width, '\0');
        char *row = bytes.data();
        for (std::int64_t pos = m_selection.posStart; pos <= m_selection.posEnd; ++pos) {
            for (int chn = 0; chn < m_data.chnCount; ++chn) {
                passTo(chn, pos);
                if (isChosen(chn) && m_channels[std::size_t(chn)].level != 0) {
                    row[chn / 8] = char(row[chn / 8] | 1 << (chn % 8));
                }
            }
            row += width;
        }
        return bytes;
    }

private:
    struct Channel {
        SmpEdgeCursor cursor;
        std::int64_t next = 0;
        int level = 0;
        bool hasData = false;
    };

    [[nodiscard]] bool isChosen(int chn) const
    {
        return m_selection.chnSelect != nullptr && m_selection.chnSelect[chn] != 0;
    }

    void passTo(int chn, std::int64_t pos)
    {
        Channel &channel = m_channels[std::size_t(chn)];
        if (channel.hasData && pos >= channel.next && pos < m_data.smpCount()) {
            const std::int64_t passed = channel.next;
            channel.level = m_data.locate(chn, passed, channel.cursor);
            channel.next = m_data.entryAt(chn, channel.cursor);
        }
    }

    static QString time(double seconds)
    {
        const auto v = qint64(std::floor(seconds * 1e9 + 0.5));
        QString digits = QString::number(std::abs(v)).rightJustified(10, QLatin1Char('0'));
        digits.insert(digits.size() - 9, QLatin1Char('.'));
        return v < 0 ? QLatin1Char('-') + digits : digits;
    }

    const SmpData &m_data;
    DataSelection m_selection;
    std::vector<Channel> m_channels;
};
