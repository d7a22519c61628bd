#pragma once

#include "files/DataExport.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"

#include <QBuffer>

#include <vector>

/// All channels chosen.
inline std::vector<std::uint8_t> allOf(const SmpData &data)
{
    return std::vector<std::uint8_t>(std::size_t(data.chnCount), 1);
}

/// Exports a range of `data` into a new file as a user does, which becomes the result, a text with line feeds at the
/// ends of its lines on every system; "failed" when the job fails. `select` may name the first channels only: the
/// others are not chosen.
inline QByteArray exported(SmpData &data, DataFile::Mode job, std::vector<std::uint8_t> select, double start,
                           double end)
{
    select.resize(std::size_t(data.chnCount));
    const FileFolder folder;
    const QString name = QStringLiteral("a.out");
    DataFile file(&data);
    file.chnSelect = select.data();
    file.setRange(start, end);
    file.file.setFileName(folder.path(name));
    const bool text = job == DataFile::Mode::ExportText;
    const auto mode = QIODevice::WriteOnly | QIODevice::Truncate;
    if (!file.file.open(text ? mode | QIODevice::Text : mode) || !(text ? file.exportText() : file.exportBinary())) {
        return QByteArrayLiteral("failed");
    }
    file.file.close();
    QByteArray bytes = folder.read(name);
#ifdef Q_OS_WIN
    if (text) {
        bytes.replace("\r\n", "\n");
    }
#endif
    return bytes;
}

inline QByteArray textOf(SmpData &data, const std::vector<std::uint8_t> &select, double start, double end)
{
    return exported(data, DataFile::Mode::ExportText, select, start, end);
}

inline QByteArray binaryOf(SmpData &data, const std::vector<std::uint8_t> &select, double start, double end)
{
    return exported(data, DataFile::Mode::ExportBinary, select, start, end);
}

/// The lines behind the header, which ends at the first line feed.
inline QByteArray linesOf(const QByteArray &text)
{
    return text.mid(text.indexOf('\n') + 1);
}

/// Rows given as numbers, little-endian, `width` bytes each.
inline QByteArray rows(int width, const std::vector<std::uint64_t> &values)
{
    QByteArray bytes;
    for (const std::uint64_t value : values) {
        for (int byte = 0; byte < width; ++byte) {
            bytes.append(char(value >> (8 * byte)));
        }
    }
    return bytes;
}

/// Takes bytes and forgets them; `room` bytes go in, then it is full.
class SinkDevice : public QIODevice {
public:
    explicit SinkDevice(qint64 room) : m_room(room) { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }
    qint64 taken = 0;

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 bytes) override
    {
        const qint64 fits = std::min(bytes, m_room - taken);
        taken += fits;
        return fits;
    }

private:
    const qint64 m_room;
};
