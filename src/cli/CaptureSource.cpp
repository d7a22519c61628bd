#include "cli/CaptureSource.h"

#include "files/DataBlocks.h"
#include "settings/Config.h"

#include <QFile>
#include <QFileInfo>

#include <array>

namespace {

/// The number of channels that the head of the binary part tells. @return -1 for what is no head
int channelCountAt(QFile &file, qint64 headSize)
{
    std::array<std::uint8_t, DataFileHead::size> bytes{};
    DataFileHead head;
    if (!file.seek(headSize) ||
        file.read(reinterpret_cast<char *>(bytes.data()), bytes.size()) != qint64(bytes.size()) ||
        !decodeFileHead(bytes, head)) {
        return -1;
    }
    return head.chnCount;
}

} // namespace

CaptureSource CaptureSource::open(const QString &path)
{
    CaptureSource source;
    QFile file(path);
    QByteArray settings;
    if (!QFileInfo::exists(path)) {
        source.error = QStringLiteral("there is no such file");
    } else if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        source.error = QStringLiteral("it cannot be read");
    } else if (!configHeadOfFile(path, settings) || !configReplace(settings)) {
        source.error = QStringLiteral("it is no data file");
    }
    const int channels = source.error.isEmpty() ? channelCountAt(file, settings.size()) : -1;
    if (source.error.isEmpty() && channels < 0) {
        source.error = QStringLiteral("it holds settings and no capture");
    }
    if (!source.error.isEmpty()) {
        return source;
    }
    source.model = globalGet(QStringLiteral("devModel")).toInt();
    source.data = std::make_unique<SmpData>(channels, 0);
    file.seek(settings.size());
    if (readDataBlocks(file, *source.data) != DataBlocksResult::Done) {
        source.error = QStringLiteral("it is damaged, or there is too little memory for it");
        source.data.reset();
        return source;
    }
    source.data->finish(source.data->smpCount());
    return source;
}
